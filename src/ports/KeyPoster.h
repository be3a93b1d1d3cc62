// Posting the paste shortcut to the window that has the keyboard focus.
//
// Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <memory>

namespace vemo {

/// Bits of a modifier state, with the values that settings and shortcuts store.
enum ModifierFlag : std::uint32_t {
  ShiftFlag = 0x20000,
  ControlFlag = 0x40000,
  OptionFlag = 0x80000,
  CommandFlag = 0x100000,
};
using ModifierFlags = std::uint32_t;

inline constexpr ModifierFlags allModifierFlags =
    ShiftFlag | ControlFlag | OptionFlag | CommandFlag;

/// How long the paste's key stays down.
inline constexpr std::chrono::milliseconds pasteKeyGap{20};

/// One paste keystroke, ready to go. The target sees the paste chord and no other modifier,
/// whatever the user holds meanwhile; after release() (or destruction, which releases) the
/// keyboard's logical state is the physical one again. release() is due pasteKeyGap after press():
/// a program that comes earlier waits, and however late it comes, the key has gone down once.
class PasteKeystroke {
 public:
  virtual ~PasteKeystroke() = default;

  virtual void press() = 0;
  virtual void release() = 0;
};

class KeyPoster {
 public:
  virtual ~KeyPoster() = default;

  /// The modifiers that are down now, on any keyboard. Locks (Caps Lock, Num Lock) don't count, and
  /// neither does an AltGr key.
  virtual ModifierFlags heldModifiers() const = 0;

  /// Prepares the paste shortcut for the window in front, by the keyboard layout in force. Null
  /// when it can't be posted: no connection, no way to post keys, no key to be had for it.
  virtual std::unique_ptr<PasteKeystroke> makePaste() = 0;

  /// Whether this process may post keys at all.
  virtual bool canPost() const = 0;
};

}  // namespace vemo
