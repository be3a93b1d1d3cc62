// Recording of a shortcut from the keyboard: which key events make which shortcut.
//
// It has no window. Whoever shows one feeds it the events that come while it is open, keeps from
// the window what is to be swallowed, and saves what confirm() returns. Each recognised event
// overwrites the one before, and the flags event of a modifier that goes up counts like the one of
// its going down: after Control+Space with Space let go first, Left Control alone is pending. A
// chord of modifiers without a key can't be captured.
//
// Main thread only. After its end, by confirm(), cancel() or Esc, it lets every event pass.
#pragma once

#include <optional>

#include "ports/LocalKeyMonitor.h"
#include "storage/CustomKeyShortcut.h"

namespace vemo {

class ShortcutCapture {
 public:
  using Handling = LocalKeyMonitor::Handling;

  Handling handle(const KeyEvent& event);

  /// What a confirmation would take now.
  const std::optional<CustomKeyShortcut>& pending() const { return m_pending; }

  /// Ends the capture with what is pending.
  std::optional<CustomKeyShortcut> confirm();

  /// Ends the capture without a result.
  void cancel();

  bool isActive() const { return m_isActive; }

 private:
  Handling handleFlagsChanged(const KeyEvent& event);
  Handling handleKeyDown(const KeyEvent& event);

  std::optional<CustomKeyShortcut> m_pending;
  bool m_isActive = true;
};

}  // namespace vemo
