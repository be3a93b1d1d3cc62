// Tells the keys that this program posts from those of its user.
//
// Posted keys come from the server's virtual keyboard, as do those of on-screen keyboards, remote
// desktops and other people's scripts, which count as the user's. So whoever posts a key announces
// it: a message by way of the server, before the key and after it, that reaches listeners in the
// order of the events themselves. Between the two, the first such key of the virtual keyboard is
// ours; a key that the server refused leaves nothing behind.
//
// Main thread only.
#pragma once

#include <optional>
#include <utility>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11RawInput.h"

namespace vemo {

class X11OwnKeys {
 public:
  // For who posts, to those who listen at this connection's window.
  static void announce(X11Connection& connection, Strike strike, xcb_keycode_t code);
  static void conclude(X11Connection& connection);

  // For who listens.
  X11OwnKeys(X11Connection& connection, xcb_window_t announcer);

  void handleEvent(const xcb_generic_event_t& event);
  /// Whether this key of the virtual keyboard is the announced one; it no longer is afterwards.
  bool take(Strike strike, std::uint32_t code);

 private:
  xcb_atom_t m_messageType;
  std::optional<std::pair<Strike, std::uint32_t>> m_announced;
};

}  // namespace vemo
