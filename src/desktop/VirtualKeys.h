// Virtual key codes that mean something to the hotkeys, and the modifier keys with their flags.
#pragma once

#include <algorithm>
#include <array>
#include <cstdint>

#include "ports/KeyEventSource.h"

namespace vemo {

inline constexpr std::int64_t kReturn = 36;
inline constexpr std::int64_t kTab = 48;
inline constexpr std::int64_t kSpace = 49;
inline constexpr std::int64_t kEscape = 53;
inline constexpr std::int64_t kRightCommand = 54;
inline constexpr std::int64_t kLeftCommand = 55;
inline constexpr std::int64_t kLeftShift = 56;
inline constexpr std::int64_t kLeftOption = 58;
inline constexpr std::int64_t kLeftControl = 59;
inline constexpr std::int64_t kRightShift = 60;
inline constexpr std::int64_t kRightOption = 61;
inline constexpr std::int64_t kRightControl = 62;
inline constexpr std::int64_t kFnKey = 63;
inline constexpr std::int64_t kKeypadEnter = 76;

struct ModifierKey {
  std::int64_t keyCode;
  ModifierFlag flag;
};

/// Caps Lock is a lock rather than a modifier, and Fn stands apart from the four flags.
inline constexpr std::array<ModifierKey, 8> modifierKeys{{
    {kRightCommand, CommandFlag},
    {kLeftCommand, CommandFlag},
    {kLeftShift, ShiftFlag},
    {kRightShift, ShiftFlag},
    {kLeftOption, OptionFlag},
    {kRightOption, OptionFlag},
    {kLeftControl, ControlFlag},
    {kRightControl, ControlFlag},
}};

/// The flag that the key itself sets; 0 for a key that is none of the eight.
constexpr ModifierFlags ownFlag(std::int64_t keyCode) {
  const auto* const row = std::ranges::find(modifierKeys, keyCode, &ModifierKey::keyCode);
  return row == modifierKeys.end() ? 0 : row->flag;
}

}  // namespace vemo
