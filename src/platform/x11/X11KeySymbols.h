// What the keys of each keyboard give when struck alone, by the layout in force.
//
// Main thread only; owned by X11KeyEventSource, which hands it the events. A keyboard's symbols are
// fetched when its first key comes and again after the server told of a change. Each keyboard may
// have a layout of its own; which of a layout's groups is in force is one answer for all of them.
#pragma once

#include <xkbcommon/xkbcommon.h>

#include <array>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

class X11KeySymbols {
 public:
  /// Null when the server has no XKB.
  static std::unique_ptr<X11KeySymbols> create(X11Connection& connection);

  void handleEvent(const xcb_generic_event_t& event);
  /// Keyboards have come, gone or been exchanged.
  void forget() { m_keyboards.clear(); }

  /// NoSymbol when the keyboard gives none, or can't be asked.
  xkb_keysym_t plainSymbol(std::uint16_t deviceId, std::uint32_t keyCode);
  /// Whether some key of the keyboard gives the symbol.
  bool hasSymbol(std::uint16_t deviceId, xkb_keysym_t symbol);

 private:
  /// By key code; a key's symbols by group.
  using Symbols = std::array<std::vector<xkb_keysym_t>, 256>;

  X11KeySymbols(X11Connection& connection, std::uint8_t xkbEvent);

  const Symbols& symbolsOf(std::uint16_t deviceId);
  std::optional<Symbols> fetch(std::uint16_t deviceId);
  xkb_keysym_t inForce(const std::vector<xkb_keysym_t>& groups) const;

  X11Connection& m_connection;
  const std::uint8_t m_xkbEvent;
  std::uint32_t m_group = 0;
  std::map<std::uint16_t, Symbols> m_keyboards;
};

}  // namespace vemo
