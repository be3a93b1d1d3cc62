// Turns key events into the three triggers of a dictation.
//
// The manager decides nothing about dictation; it calls back, always from a turn of the main queue
// of its own. Main thread only.
//
// It has no source of key events, so installTap() returns false; dictation is triggered from
// outside, through RemoteControl.
#pragma once

#include <functional>

namespace vemo {

class HotkeyManager {
 public:
  std::function<void()> onPushToTalkDown;
  std::function<void()> onPushToTalkUp;
  std::function<void()> onToggleTrigger;

  /// Starts listening; true when key events come in afterwards.
  bool installTap();

  /// Stops listening. Fires no callback, whatever is held.
  void removeTap();

  /// Whether key events come in.
  bool isTapEnabled() const { return m_isTapEnabled; }

 private:
  bool m_isTapEnabled = false;
};

}  // namespace vemo
