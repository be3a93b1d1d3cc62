// The keyboard's layout as the server has it: which key gives which symbol in which group, and
// which keys are modifiers.
//
// Main thread only; owned by X11Keyboard. The keymap is fetched when it's first asked for and again
// after the server told of a change; handleEvent() only takes note, so a change costs nothing else.
#pragma once

#include <xkbcommon/xkbcommon.h>

#include <memory>
#include <optional>

#include "platform/x11/X11Connection.h"
#include "ports/KeyPoster.h"

namespace vemo {

class X11Keymap {
 public:
  /// Null when the server has no XKB.
  static std::unique_ptr<X11Keymap> create(X11Connection& connection);
  /// Takes the symbol off the key that was lent one.
  ~X11Keymap();
  X11Keymap(const X11Keymap&) = delete;
  X11Keymap& operator=(const X11Keymap&) = delete;

  void handleEvent(const xcb_generic_event_t& event);

  using Group = std::uint32_t;
  struct Key {
    xcb_keycode_t code;
    Group group;  ///< in which the key gives the symbol
  };

  /// The key that gives the symbol without a modifier: in that group, else in another.
  std::optional<Key> findKey(xkb_keysym_t symbol, Group group);
  /// Gives a key that has no meaning the symbol, in each group, for as long as this object lives: a
  /// target may look the symbol up long after the key has gone up. Absent when no key is free.
  std::optional<Key> lendKey(xkb_keysym_t symbol, xkb_keysym_t shiftedSymbol, Group group);

  /// A key that has no symbol, whatever else is held. Absent when every key has one.
  std::optional<xcb_keycode_t> meaninglessKey();

  Group groupCount();
  /// Whether the key acts while it's held, and only then: Shift, Control, Alt, AltGr, not Caps
  /// Lock.
  bool isHeldModifier(xcb_keycode_t code);
  /// The flag that the key stands for; none for AltGr and keys that are no modifiers.
  ModifierFlags modifierFlag(xcb_keycode_t code);

 private:
  X11Keymap(X11Connection& connection, std::uint8_t xkbEvent, std::int32_t deviceId);

  xkb_keymap* current();
  xkb_keysym_t symbolOf(xcb_keycode_t code, Group group);

  struct FreeKeymap {
    void operator()(xkb_keymap* keymap) const { xkb_keymap_unref(keymap); }
  };
  struct FreeContext {
    void operator()(xkb_context* context) const { xkb_context_unref(context); }
  };

  X11Connection& m_connection;
  const std::uint8_t m_xkbEvent;
  const std::int32_t m_deviceId;
  std::unique_ptr<xkb_context, FreeContext> m_context;
  std::unique_ptr<xkb_keymap, FreeKeymap> m_keymap;
  std::optional<xcb_keycode_t> m_lentKey;
  xkb_keysym_t m_lentSymbol = XKB_KEY_NoSymbol;
};

}  // namespace vemo
