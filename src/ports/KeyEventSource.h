// Every key event of the login session, heard and never held back: the application in front sees
// each of them. A held key that repeats is told once; keys that Vemo posts itself aren't told.
//
// Main thread only; the callbacks run on it. The owner sets them once, before start().
#pragma once

#include <cstdint>
#include <functional>

#include "ports/KeyPoster.h"

namespace vemo {

/// The Fn (Globe) key is held. Beside the bits of ModifierFlag in the flags of a key event.
inline constexpr ModifierFlags FnFlag = 0x800000;

struct KeyEvent {
  /// FlagsChanged is the going down or up of a modifier key, the others are for all other keys.
  enum class Type { KeyDown, KeyUp, FlagsChanged };

  Type type = Type::KeyDown;
  std::int64_t keyCode = 0;  ///< virtual key code: the key's position, whatever the layout
  ModifierFlags flags = 0;   ///< what is held once this event has happened

  friend bool operator==(const KeyEvent&, const KeyEvent&) = default;
};

class KeyEventSource {
 public:
  virtual ~KeyEventSource() = default;

  std::function<void(const KeyEvent&)> onEvent;

  /// Events, key-ups among them, may have been missed. The source listens on, or again.
  std::function<void()> onInterrupted;

  /// Begins to listen. False when this desktop lets nobody listen; nothing is heard then.
  virtual bool start() = 0;

  /// Ends it: no callback runs any more, from this call on. Harmless when nothing was started.
  virtual void stop() = 0;

  /// What is held at this moment, on any keyboard. Nothing while the source isn't started.
  virtual ModifierFlags modifierFlags() const = 0;
};

}  // namespace vemo
