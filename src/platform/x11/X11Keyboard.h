// The server's keyboard: what is held on it, and key chords posted to it through XTest.
//
// Main thread only; shared by the X11KeyPoster and its keystrokes. Posted keys come from a keyboard
// of their own, the server's virtual one, and merge with those of the user's keyboards. So for as
// long as a chord is down, and while a modifier is held on the user's behalf afterwards, this class
// listens to what the user's keys really do; it listens to nothing at any other time. Every posted
// key is announced (X11OwnKeys) at the connection's window. When the server goes, the calls do
// nothing.
#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <vector>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Keymap.h"
#include "platform/x11/X11RawInput.h"

namespace vemo {

/// Modifier keys, and the key that is struck while they are down.
struct KeyChord {
  std::vector<xcb_keycode_t> modifiers;
  std::uint8_t modifierMask = 0;  ///< the real modifiers that they stand for
  X11Keymap::Key key;
};

class X11Keyboard {
 public:
  /// Null without a server, or with one that lacks XTest, XInput 2.2 or XKB.
  static std::shared_ptr<X11Keyboard> create(const QByteArray& displayName);
  ~X11Keyboard();
  X11Keyboard(const X11Keyboard&) = delete;
  X11Keyboard& operator=(const X11Keyboard&) = delete;

  X11Connection& connection() { return *m_connection; }
  X11Keymap& keymap() { return *m_keymap; }

  ModifierFlags heldModifiers();
  /// What stays in force without a key being held.
  struct Locks {
    X11Keymap::Group group = 0;
    std::uint8_t modifiers = 0;
  };
  Locks locks();

  /// Lifts the modifiers that are down and presses the chord.
  void pressChord(const KeyChord& chord);
  /// Lifts the chord, and presses the modifiers again that the user still holds.
  void releaseChord(const KeyChord& chord);

  /// Presses and releases a key that has no symbol; none when every key has one.
  void strikeMeaninglessKey();

 private:
  X11Keyboard(std::unique_ptr<X11Connection> connection, std::unique_ptr<X11Keymap> keymap,
              X11RawInput input);

  X11Keys pressedKeys();
  void post(Strike strike, xcb_keycode_t code);
  void lock(X11Keymap::Group group, std::uint8_t affectedModifiers, std::uint8_t modifiers);
  void watchUsersKeys(bool isWatching);
  void handleEvent(const xcb_generic_event_t& event);
  void handleUsersKey(Strike strike, xcb_keycode_t code);
  void stopWatchingWhenIdle();

  std::unique_ptr<X11Connection> m_connection;
  std::unique_ptr<X11Keymap> m_keymap;
  X11RawInput m_input;
  bool m_isChordDown = false;
  bool m_isWatching = false;
  X11Keys m_usersKeys;                 ///< what the user holds, kept while watching
  std::uint32_t m_readAt = 0;          ///< sequence of the request that m_usersKeys began with
  std::set<std::uint32_t> m_posted;    ///< sequences of our own key events, kept while watching
  std::set<xcb_keycode_t> m_lifted;    ///< keys that the chord took from the user, or used itself
  std::set<xcb_keycode_t> m_onBehalf;  ///< modifiers that we press because the user holds them
};

}  // namespace vemo
