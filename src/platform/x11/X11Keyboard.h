// The server's keyboard: what is held on it, and key chords posted to it through XTest.
//
// Main thread only; shared by the X11KeyPoster and its keystrokes. Posted keys come from a keyboard
// of their own, the server's virtual one, and merge with those of the user's keyboards. So for as
// long as a chord is down, and while a modifier is held on the user's behalf afterwards, this class
// listens to what the user's keys really do; it listens to nothing at any other time. Every posted
// key is announced (X11OwnKeys) at the connection's window. When the server goes, the calls do
// nothing.
//
// A whole chord is sent at once, and the server itself sees to the time that its key is down: a
// program that is kept from running meanwhile would let the server repeat the key, and leave
// Control held for what the user types next. What else is sent waits until the chord is up.
//
// Many programs take an Alt or Super that goes down and comes up alone for a wish, and put the
// focus into their menu bar; input methods may take a Shift so. The target sees the held modifiers
// come up and go down again, so they get a meaningless key's company both times.
#pragma once

#include <chrono>
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

  /// Lifts the modifiers that are down and strikes the chord.
  void strikeChord(const KeyChord& chord);
  /// Once the chord is up, presses the modifiers again that the user still holds.
  void giveModifiersBack();

  /// Presses and releases a key that has no symbol; none when every key has one.
  void strikeMeaninglessKey();

 private:
  X11Keyboard(std::unique_ptr<X11Connection> connection, std::unique_ptr<X11Keymap> keymap,
              X11RawInput input);

  X11Keys pressedKeys();
  void post(Strike strike, xcb_keycode_t code, std::chrono::milliseconds delay = {});
  void postMeaninglessKey();
  void lock(X11Keymap::Group group, std::uint8_t affectedModifiers, std::uint8_t modifiers);
  void watchUsersKeys(bool isWatching);
  void handleEvent(const xcb_generic_event_t& event);
  void handleUsersKey(Strike strike, xcb_keycode_t code);
  void stopWatchingWhenIdle();

  std::unique_ptr<X11Connection> m_connection;
  std::unique_ptr<X11Keymap> m_keymap;
  X11RawInput m_input;
  bool m_isStriking = false;
  bool m_isWatching = false;
  X11Keys m_usersKeys;                 ///< what the user holds, kept while watching
  std::uint32_t m_readAt = 0;          ///< sequence of the request that m_usersKeys began with
  std::set<std::uint32_t> m_posted;    ///< sequences of our own key events, kept while watching
  std::set<xcb_keycode_t> m_lifted;    ///< keys that the chord took from the user, or used itself
  std::set<xcb_keycode_t> m_onBehalf;  ///< modifiers that we press because the user holds them
};

}  // namespace vemo
