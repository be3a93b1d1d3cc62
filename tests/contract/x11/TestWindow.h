// A window with the keyboard focus that notes every key event as a program would read it.
#pragma once

#include <xkbcommon/xkbcommon.h>

#include <QByteArray>
#include <memory>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

class TestWindow {
 public:
  /// Maps the window and takes the focus. The event loop must run for it to have an effect.
  explicit TestWindow(const QByteArray& className = "Editor",
                      const QByteArray& instanceName = "editor");

  struct KeyEvent {
    bool isPress;
    xcb_keycode_t code;
    uint16_t modifiers;   ///< the real modifiers in force before the event
    xkb_keysym_t symbol;  ///< in the group and the keymap in force at the event's time, unshifted
    xcb_timestamp_t time;
  };
  const std::vector<KeyEvent>& keyEvents() const { return m_keyEvents; }
  bool hasFocus() const { return m_hasFocus; }

  X11Connection& connection() { return *m_connection; }
  xcb_window_t window() const { return m_window; }

  void setProperty(const QByteArray& name, const QByteArray& type, int format,
                   const QByteArray& data);

 private:
  void handleEvent(const xcb_generic_event_t& event);
  xkb_keysym_t symbolOf(const xcb_key_press_event_t& event);

  std::unique_ptr<X11Connection> m_connection;
  xcb_window_t m_window;
  bool m_hasFocus = false;
  std::vector<KeyEvent> m_keyEvents;
};

}  // namespace vemo
