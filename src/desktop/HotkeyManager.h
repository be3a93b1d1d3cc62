// Turns the key events of the login session into the three triggers of a dictation.
//
// The manager decides nothing about dictation and consumes no event; it calls back, always from a
// turn of the main queue of its own. The two shortcuts are read from the settings at every event,
// so a change applies from the next key on.
//
// A chosen key may be a bare modifier, hence the logic on FlagsChanged beside KeyDown and KeyUp.
// The two sides of Option differ on purpose: the right one acts at once, while the left one, which
// is used in combinations all day, must be held alone for leftOptionHoldThreshold. A bare Option or
// Command that triggers something is given company at once, so that it opens no menu when it comes
// up.
//
// Main thread only. Destroying it ends its pending hold and drops callbacks not yet delivered.
#pragma once

#include <chrono>
#include <functional>
#include <optional>

#include "base/Clock.h"
#include "base/TaskScope.h"
#include "ports/KeyEventSource.h"
#include "storage/CustomKeyShortcut.h"

namespace vemo {

class DebugLog;
class LoneModifier;
class Settings;

inline constexpr std::chrono::milliseconds toggleDebounceThreshold{350};
inline constexpr std::chrono::milliseconds leftOptionHoldThreshold{200};

class HotkeyManager {
 public:
  /// The source is this manager's alone from now on.
  HotkeyManager(KeyEventSource& source, LoneModifier& loneModifier, Clock& clock,
                MainThread& mainThread, const Settings& settings, DebugLog& debugLog);
  ~HotkeyManager();
  HotkeyManager(const HotkeyManager&) = delete;
  HotkeyManager& operator=(const HotkeyManager&) = delete;

  using Callback = std::function<void()>;
  Callback onPushToTalkDown;
  Callback onPushToTalkUp;
  Callback onToggleTrigger;

  /// Starts listening; true when key events come in afterwards.
  bool installTap();

  /// Stops listening. Fires no callback, whatever is held.
  void removeTap();

  /// Whether key events come in. A source that was interrupted goes on by itself.
  bool isTapEnabled() const { return m_isTapInstalled; }

  /// While silent, no key triggers anything: a shortcut is being recorded. Becoming silent ends a
  /// push-to-talk hold, with its callback.
  void setSilent(bool isSilent);
  bool isSilent() const { return m_isSilent; }

  /// Whether push-to-talk counts as held.
  bool isPushToTalkKeyDown() const { return m_isPushToTalkKeyDown; }

 private:
  void processEvent(const KeyEvent& event);
  void recoverFromInterruption();

  // Whether this event is the going down of the toggle shortcut: true once a press.
  bool matchesToggle(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  bool matchesEitherOptionToggle(const KeyEvent& event);
  bool matchesModifierToggle(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  bool matchesChordToggle(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  bool toggleEdge(bool isHeld);
  void triggerToggle(const CustomKeyShortcut& shortcut);

  void processPushToTalk(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  void processEitherOption(const KeyEvent& event);
  void processLeftOption(const KeyEvent& event);
  void processModifier(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  void processChord(const CustomKeyShortcut& shortcut, const KeyEvent& event);
  Task<> pressAfterHold(std::stop_token stop);
  void press(std::int64_t keyCode);
  void release();

  void accompany(std::int64_t keyCode);
  void deliver(Callback HotkeyManager::* callback);
  Task<> call(Callback HotkeyManager::* callback);

  KeyEventSource& m_source;
  LoneModifier& m_loneModifier;
  Clock& m_clock;
  const Settings& m_settings;
  DebugLog& m_debugLog;

  bool m_isTapInstalled = false;
  bool m_isSilent = false;
  bool m_isPushToTalkKeyDown = false;
  bool m_isToggleKeyDown = false;
  std::optional<Clock::MonotonicTime> m_lastToggleTriggerTime;
  StartedTask m_leftOptionPendingTask;
  TaskScope m_tasks;
};

}  // namespace vemo
