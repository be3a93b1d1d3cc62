#include "desktop/HotkeyManager.h"

#include <utility>

#include "desktop/HotkeyChoices.h"
#include "desktop/ShortcutNames.h"
#include "desktop/VirtualKeys.h"
#include "ports/LoneModifier.h"
#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Type = KeyEvent::Type;

ModifierFlags modifiersOf(const KeyEvent& event) {
  return event.flags & allModifierFlags;
}

ModifierFlags modifiersOf(const CustomKeyShortcut& shortcut) {
  return shortcut.modifierFlagsRaw & allModifierFlags;
}

/// A modifier key that is down with no other modifier; false for a key that is none.
bool isHeldAlone(std::int64_t modifierKey, ModifierFlags flags) {
  const ModifierFlags flag = ownFlag(modifierKey);
  return flag && (flags & allModifierFlags) == flag;
}

/// Another key's event tells that the shortcut's modifier is up: its key came up earlier, while the
/// other side's still held the flag.
bool isGone(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  if (!shortcut.isModifierOnly || !shortcut.keyCode || event.type != Type::FlagsChanged)
    return false;
  const ModifierFlags flag = ownFlag(*shortcut.keyCode);
  return event.keyCode != shortcut.keyCode && flag && !(event.flags & flag);
}

}  // namespace

HotkeyManager::HotkeyManager(KeyEventSource& source, LoneModifier& loneModifier, Clock& clock,
                             MainThread& mainThread, const Settings& settings, DebugLog& debugLog)
    : m_source(source),
      m_loneModifier(loneModifier),
      m_clock(clock),
      m_settings(settings),
      m_debugLog(debugLog),
      m_tasks(mainThread) {
  m_source.onEvent = [this](const KeyEvent& event) { processEvent(event); };
  m_source.onInterrupted = [this] { recoverFromInterruption(); };
}

HotkeyManager::~HotkeyManager() {
  removeTap();
  m_source.onEvent = nullptr;
  m_source.onInterrupted = nullptr;
}

bool HotkeyManager::installTap() {
  if (m_isTapInstalled) return true;
  m_isTapInstalled = m_source.start();
  m_debugLog(m_isTapInstalled ? u"HotkeyManager: event tap installed"_s
                              : u"HotkeyManager: tapCreate FAILED — Accessibility not granted for "
                                "this app binary"_s);
  return m_isTapInstalled;
}

void HotkeyManager::removeTap() {
  std::exchange(m_leftOptionPendingTask, {}).cancel();
  m_source.stop();
  m_isTapInstalled = false;
  m_isPushToTalkKeyDown = false;
  m_isToggleKeyDown = false;
}

void HotkeyManager::setSilent(bool isSilent) {
  if (std::exchange(m_isSilent, isSilent) == isSilent) return;
  std::exchange(m_leftOptionPendingTask, {}).cancel();
  m_isToggleKeyDown = false;
  if (isSilent) release();
}

void HotkeyManager::recoverFromInterruption() {
  if (!m_isTapInstalled) return;
  if (m_isPushToTalkKeyDown) {
    m_debugLog(u"HotkeyManager: tap re-enabled with lost key-up — forcing PTT release"_s);
    release();
  }
  m_isToggleKeyDown = false;
}

void HotkeyManager::processEvent(const KeyEvent& event) {
  if (m_isSilent) return;
  if (const auto toggle = toggleChoice(m_settings); matchesToggle(toggle, event)) {
    accompany(event.keyCode);
    triggerToggle(toggle);
  } else {
    processPushToTalk(pushToTalkChoice(m_settings), event);
  }
}

// The toggle

bool HotkeyManager::matchesToggle(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  if (shortcut.presetId == u"eitherOption") return matchesEitherOptionToggle(event);
  return shortcut.isModifierOnly ? matchesModifierToggle(shortcut, event)
                                 : matchesChordToggle(shortcut, event);
}

bool HotkeyManager::matchesEitherOptionToggle(const KeyEvent& event) {
  const bool isOption = event.keyCode == kLeftOption || event.keyCode == kRightOption;
  return event.type == Type::FlagsChanged && isOption &&
         toggleEdge(modifiersOf(event) == OptionFlag);
}

bool HotkeyManager::matchesModifierToggle(const CustomKeyShortcut& shortcut,
                                          const KeyEvent& event) {
  if (event.type != Type::FlagsChanged) return false;
  const bool isFnHeld = event.flags & FnFlag;
  if (event.keyCode != shortcut.keyCode)
    return shortcut.keyCode == kFnKey && !isFnHeld && toggleEdge(false);
  if (event.keyCode == kFnKey) return toggleEdge(isFnHeld);
  return toggleEdge(isHeldAlone(event.keyCode, event.flags) || !ownFlag(event.keyCode));
}

bool HotkeyManager::matchesChordToggle(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  if (event.type == Type::KeyUp) return toggleEdge(false);
  return event.keyCode == shortcut.keyCode && event.type == Type::KeyDown &&
         modifiersOf(event) == modifiersOf(shortcut) && toggleEdge(true);
}

bool HotkeyManager::toggleEdge(bool isHeld) {
  return !std::exchange(m_isToggleKeyDown, isHeld) && isHeld;
}

void HotkeyManager::triggerToggle(const CustomKeyShortcut& shortcut) {
  const auto now = m_clock.monotonicTime();
  if (m_lastToggleTriggerTime && now - *m_lastToggleTriggerTime <= toggleDebounceThreshold) return;
  m_lastToggleTriggerTime = now;
  m_debugLog(u"HotkeyManager: Toggle Triggered (%1)"_s.arg(displayName(shortcut)));
  deliver(&HotkeyManager::onToggleTrigger);
}

// Push-to-talk

void HotkeyManager::processPushToTalk(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  if (isGone(shortcut, event)) return release();
  if (shortcut.presetId == u"eitherOption") {
    processEitherOption(event);
  } else if (shortcut.presetId == u"leftOption") {
    processLeftOption(event);
  } else if (shortcut.isModifierOnly) {
    processModifier(shortcut, event);
  } else {
    processChord(shortcut, event);
  }
}

void HotkeyManager::processEitherOption(const KeyEvent& event) {
  if (event.keyCode != kRightOption) return processLeftOption(event);
  isHeldAlone(kRightOption, event.flags) ? press(kRightOption) : release();
}

void HotkeyManager::processLeftOption(const KeyEvent& event) {
  if (event.keyCode != kLeftOption) return;
  if (isHeldAlone(kLeftOption, event.flags)) {
    if (m_isPushToTalkKeyDown) return;
    m_leftOptionPendingTask.cancel();
    m_leftOptionPendingTask =
        m_tasks.start([this](std::stop_token stop) { return pressAfterHold(std::move(stop)); });
  } else if (m_isPushToTalkKeyDown) {
    m_debugLog(u"HotkeyManager: Left Option PTT UP"_s);
    release();
  } else {
    std::exchange(m_leftOptionPendingTask, {}).cancel();
  }
}

Task<> HotkeyManager::pressAfterHold(std::stop_token stop) {
  if (co_await m_clock.sleep(leftOptionHoldThreshold, stop) == SleepEnd::Cancelled) co_return;
  if (stop.stop_requested() || m_isPushToTalkKeyDown) co_return;
  // Another modifier that went down meanwhile makes it a combination. And Option may be up by now
  // without an event that ended the hold: when the right side came up last.
  if (!isHeldAlone(kLeftOption, m_source.modifierFlags())) co_return;
  m_debugLog(u"HotkeyManager: Left Option PTT DOWN (held)"_s);
  press(kLeftOption);
}

void HotkeyManager::processModifier(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  if (event.type != Type::FlagsChanged) return;
  if (shortcut.keyCode == kFnKey) {
    // Any later event that tells of Fn corrects a state that has gone astray.
    const bool isHeld = event.flags & FnFlag;
    isHeld ? press(kFnKey) : release();
  } else if (event.keyCode == shortcut.keyCode && ownFlag(event.keyCode)) {
    isHeldAlone(event.keyCode, event.flags) ? press(event.keyCode) : release();
  }
}

void HotkeyManager::processChord(const CustomKeyShortcut& shortcut, const KeyEvent& event) {
  const ModifierFlags modifiers = modifiersOf(shortcut);
  const bool hasItsModifiers = modifiersOf(event) == modifiers;
  if (event.keyCode != shortcut.keyCode) {
    // Letting go of a modifier ends the hold, even with the key still down.
    if (event.type == Type::FlagsChanged && modifiers && !hasItsModifiers) release();
  } else if (event.type == Type::KeyUp) {
    release();
  } else if (event.type == Type::KeyDown && hasItsModifiers) {
    press(event.keyCode);
  }
}

void HotkeyManager::press(std::int64_t keyCode) {
  if (std::exchange(m_isPushToTalkKeyDown, true)) return;
  accompany(keyCode);
  deliver(&HotkeyManager::onPushToTalkDown);
}

void HotkeyManager::release() {
  if (std::exchange(m_isPushToTalkKeyDown, false)) deliver(&HotkeyManager::onPushToTalkUp);
}

// What follows

/// At once, since the key may come up before the main queue's next turn.
void HotkeyManager::accompany(std::int64_t keyCode) {
  if (ownFlag(keyCode) & (OptionFlag | CommandFlag)) m_loneModifier.accompany();
}

void HotkeyManager::deliver(Callback HotkeyManager::* callback) {
  m_tasks.start([this, callback](std::stop_token) { return call(callback); });
}

Task<> HotkeyManager::call(Callback HotkeyManager::* callback) {
  if (this->*callback) (this->*callback)();
  co_return;
}

}  // namespace vemo
