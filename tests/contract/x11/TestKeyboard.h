// One keyboard among several: the server's built-in one, or one that the test plugs in.
//
// The VirtualUser types on a third, the server's virtual one.
#pragma once

#include <xcb/xcb.h>

#include <QByteArray>
#include <memory>
#include <set>

#include "platform/x11/X11Connection.h"

namespace vemo {

class TestKeyboard {
 public:
  static std::unique_ptr<TestKeyboard> builtIn();
  /// Null when the server won't have it.
  static std::unique_ptr<TestKeyboard> plugIn();
  /// Lets go of what is held, switches it on and attaches it again; unplugs what was plugged in.
  ~TestKeyboard();

  void press(xcb_keycode_t code);
  void release(xcb_keycode_t code);
  void switchOn(bool isOn);
  /// Detached, it goes on by itself: its keys reach no window, and nobody who listens to all.
  void attach(bool isAttached);
  /// Keys may be held meanwhile. Nothing can be typed on it afterwards.
  void unplug();

 private:
  explicit TestKeyboard(std::unique_ptr<X11Connection> connection);

  void strike(std::uint8_t eventOffset, xcb_keycode_t code);

  std::unique_ptr<X11Connection> m_connection;
  std::uint8_t m_firstEvent;
  std::uint16_t m_id = 0;
  std::uint16_t m_master = 0;  ///< that it was plugged in with
  bool m_isDetached = false;
  std::set<xcb_keycode_t> m_held;
};

}  // namespace vemo
