// Somebody at the keyboard, by way of XTest, and what the server then thinks of its keys.
#pragma once

#include <xkbcommon/xkbcommon.h>

#include <QByteArray>
#include <QString>
#include <memory>
#include <set>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Keymap.h"

namespace vemo {

class VirtualUser {
 public:
  VirtualUser();
  /// Lets go of what is still held and gives the keyboard its usual layout, locks, speed and
  /// repeats again.
  ~VirtualUser();

  /// Runs setxkbmap; the first of several layouts is then in force.
  void chooseLayout(const QString& layout, const QString& variant = {},
                    const QString& options = {});
  void chooseGroup(unsigned int group);
  unsigned int group();

  void press(xkb_keysym_t key);
  void release(xkb_keysym_t key);
  xcb_keycode_t codeOf(xkb_keysym_t key);
  /// The key with that code, whatever it gives.
  void pressPlace(xcb_keycode_t code);
  void releasePlace(xcb_keycode_t code);
  /// Until the next chooseLayout().
  void giveSymbol(xcb_keycode_t code, xkb_keysym_t symbol);

  /// With slow keys the server doesn't count a key as down before it has been held for long.
  void useSlowKeys(bool isOn);

  /// Held keys repeat after a while unless this has been called.
  void stopRepeats();

  /// The codes of the keys that are down, by the server's word.
  std::set<xcb_keycode_t> keysDown();
  /// The real modifiers in force: held, latched and locked.
  unsigned int modifiersInForce();
  unsigned int lockedModifiers();
  void setLockedModifiers(unsigned int mask, unsigned int values);

 private:
  void setRepeats(std::uint32_t mode);

  std::unique_ptr<X11Connection> m_connection;
  std::unique_ptr<X11Keymap> m_keymap;
  std::set<xcb_keycode_t> m_held;
  bool m_hasSlowKeys = false;
  bool m_hasRepeats = true;
};

}  // namespace vemo
