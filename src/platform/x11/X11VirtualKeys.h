// Keys of an X keyboard as the virtual key codes that shortcuts are stored in.
//
// A virtual key code is a place on the keyboard, whatever stands on the key. Only the modifiers go
// by what the layout makes of a key: a right Alt that types the third level is no Option key, and a
// Caps Lock key that acts as Control is one.
#pragma once

#include <xkbcommon/xkbcommon.h>

#include <cstdint>

#include "ports/KeyEventSource.h"

namespace vemo {

struct X11VirtualKey {
  std::int64_t code = 0;
  bool isModifier = false;
  ModifierFlags flag = 0;  ///< what a modifier holds; none for Caps Lock

  friend bool operator==(const X11VirtualKey&, const X11VirtualKey&) = default;
};

/// Keyboards that report no Fn key have it stood for by Scroll Lock and Pause.
enum class FnKey { Reported, StoodFor };

/// The key with that X key code, which gives that symbol when struck alone.
X11VirtualKey x11VirtualKey(std::uint32_t keyCode, xkb_keysym_t plainSymbol, FnKey fnKey);

}  // namespace vemo
