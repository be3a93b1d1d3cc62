// The part of XInput 2 that listening to keyboards takes: raw key events, which come whoever has
// the focus or a grab and are held back from nobody, and what each keyboard holds.
//
// Main thread only. A value that goes with its connection, which outlives it.
#pragma once

#include <xcb/xinput.h>

#include <bitset>
#include <optional>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

enum class Strike { Press, Release };
using X11Keys = std::bitset<256>;

class X11RawInput {
 public:
  /// Absent when the server lacks XInput 2.2, before which a grab held raw events back.
  static std::optional<X11RawInput> create(X11Connection& connection);

  /// Raw key events of all keyboards, those plugged in later among them. Returns the sequence of
  /// the request: events from before it carry an earlier one.
  std::uint32_t selectKeys(bool isListening);
  /// News of keyboards that come, go, or are switched on and off.
  void selectHierarchy(bool isListening);

  struct KeyEvent {
    Strike strike;
    std::uint32_t keyCode;
    std::uint16_t keyboard;      ///< the device that the key sits on
    std::uint32_t fullSequence;  ///< of the last request that the server carried out before
  };
  std::optional<KeyEvent> keyEvent(const xcb_generic_event_t& event) const;
  bool isHierarchyEvent(const xcb_generic_event_t& event) const;

  struct Keyboard {
    std::uint16_t id;
    bool isVirtual;  ///< the one that keys posted by programs come from
  };
  /// The keyboards that type into windows; absent when the server doesn't answer.
  std::optional<std::vector<Keyboard>> keyboards();

  struct HeldKeys {
    X11Keys keys;
    std::uint32_t
        fullSequence;  ///< the answer's: raw events that carry it or a later one aren't in
  };
  /// Absent when there's no such keyboard.
  std::optional<HeldKeys> heldKeys(std::uint16_t keyboard);

 private:
  X11RawInput(X11Connection& connection, std::uint8_t opcode)
      : m_connection(&connection), m_opcode(opcode) {}

  bool isInputEvent(const xcb_generic_event_t& event) const;
  std::uint32_t select(std::uint16_t devices, std::uint32_t mask);

  X11Connection* m_connection;
  std::uint8_t m_opcode;
};

}  // namespace vemo
