// Sees the keys of this program's own windows where Qt takes them from the X server, before Qt
// does.
//
// Main thread only; made after the QGuiApplication, on the xcb platform. It has a connection of its
// own while it is started, for what the keyboard's layout makes of a key. A key that was swallowed
// stays so until it is up, also after stop(). A key that repeats comes up by the server's word
// before it goes down again, though it is held all the time: such a release isn't told. When the
// focus leaves, all keys count as up.
#pragma once

#include <xcb/xcb.h>

#include <QAbstractNativeEventFilter>
#include <map>
#include <memory>
#include <optional>
#include <set>

#include "platform/x11/X11VirtualKeys.h"
#include "ports/LocalKeyMonitor.h"

namespace vemo {

class X11LocalKeyMonitor : public LocalKeyMonitor, public QAbstractNativeEventFilter {
 public:
  X11LocalKeyMonitor();
  ~X11LocalKeyMonitor() override;

  void start(Handler handler) override;
  void stop() override;

  bool nativeEventFilter(const QByteArray& eventType, void* message, qintptr* result) override;

 private:
  class Layout;
  struct KeyUp {
    xcb_keycode_t code;
    xcb_timestamp_t time;
    bool wasSwallowed;
  };

  bool keyWentDown(const xcb_key_press_event_t& event);
  bool keyWentUp(const xcb_key_release_event_t& event);
  void letGo(xcb_keycode_t code, std::uint16_t state);
  void letGoOfAll();
  ModifierFlags heldFlags() const;
  Handling tell(const KeyEvent& event);

  Handler m_handler;
  std::unique_ptr<Layout> m_layout;  ///< while it is started, or a key isn't up yet
  bool m_isInstalled = false;
  std::map<xcb_keycode_t, X11VirtualKey> m_held;
  std::set<xcb_keycode_t> m_swallowed;
  std::optional<KeyUp> m_lastUp;  ///< until another key goes down
};

}  // namespace vemo
