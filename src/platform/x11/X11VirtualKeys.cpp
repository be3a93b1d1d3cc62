#include "platform/x11/X11VirtualKeys.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <algorithm>

namespace vemo {

namespace {

/// X counts the kernel's key codes from eight on.
constexpr std::uint32_t firstKeyCode = 8;
/// Keys that the table of virtual key codes doesn't know, by the kernel's code behind its end.
constexpr std::int64_t firstUnlistedCode = 256;
constexpr std::uint32_t kernelFnKey = 464;

struct Modifier {
  xkb_keysym_t symbol;
  X11VirtualKey key;
};

constexpr Modifier modifiers[] = {
    {XKB_KEY_Super_R, {54, true, CommandFlag}}, {XKB_KEY_Hyper_R, {54, true, CommandFlag}},
    {XKB_KEY_Super_L, {55, true, CommandFlag}}, {XKB_KEY_Hyper_L, {55, true, CommandFlag}},
    {XKB_KEY_Shift_L, {56, true, ShiftFlag}},   {XKB_KEY_Caps_Lock, {57, true, 0}},
    {XKB_KEY_Shift_Lock, {57, true, 0}},        {XKB_KEY_Alt_L, {58, true, OptionFlag}},
    {XKB_KEY_Meta_L, {58, true, OptionFlag}},   {XKB_KEY_Control_L, {59, true, ControlFlag}},
    {XKB_KEY_Shift_R, {60, true, ShiftFlag}},   {XKB_KEY_Alt_R, {61, true, OptionFlag}},
    {XKB_KEY_Meta_R, {61, true, OptionFlag}},   {XKB_KEY_Control_R, {62, true, ControlFlag}},
    {XKB_KEY_XF86Fn, {63, true, FnFlag}},
};
constexpr X11VirtualKey fn{63, true, FnFlag};

struct Place {
  std::uint32_t kernelCode;
  std::int64_t code;
};

/// Keys that aren't modifiers, in the order of the kernel's codes.
constexpr Place places[] = {
    {1, 53},                                                    // Esc
    {2, 18},    {3, 19},    {4, 20},    {5, 21},    {6, 23},    // 1 to 5
    {7, 22},    {8, 26},    {9, 28},    {10, 25},   {11, 29},   // 6 to 0
    {12, 27},   {13, 24},   {14, 51},   {15, 48},               // - = Delete Tab
    {16, 12},   {17, 13},   {18, 14},   {19, 15},   {20, 17},   // Q W E R T
    {21, 16},   {22, 32},   {23, 34},   {24, 31},   {25, 35},   // Y U I O P
    {26, 33},   {27, 30},   {28, 36},                           // [ ] Return
    {30, 0},    {31, 1},    {32, 2},    {33, 3},    {34, 5},    // A S D F G
    {35, 4},    {36, 38},   {37, 40},   {38, 37},   {39, 41},   // H J K L ;
    {40, 39},   {41, 50},   {43, 42},                           // ' ` \ .
    {44, 6},    {45, 7},    {46, 8},    {47, 9},    {48, 11},   // Z X C V B
    {49, 45},   {50, 46},   {51, 43},   {52, 47},   {53, 44},   // N M , . /
    {55, 67},   {57, 49},                                       // keypad *, Space
    {59, 122},  {60, 120},  {61, 99},   {62, 118},              // F1 to F4
    {63, 96},   {64, 97},   {65, 98},   {66, 100},              // F5 to F8
    {67, 101},  {68, 109},  {87, 103},  {88, 111},              // F9 to F12
    {69, 71},                                                   // Num Lock
    {71, 89},   {72, 91},   {73, 92},   {74, 78},               // keypad 7 8 9 -
    {75, 86},   {76, 87},   {77, 88},   {78, 69},               // keypad 4 5 6 +
    {79, 83},   {80, 84},   {81, 85},   {82, 82},   {83, 65},   // keypad 1 2 3 0 .
    {86, 10},                                                   // beside the left Shift (ISO)
    {89, 94},   {93, 104},  {94, 102},  {95, 95},   {124, 93},  // _ kana eisu , yen (JIS)
    {96, 76},   {98, 75},   {117, 81},                          // keypad Enter / =
    {102, 115}, {103, 126}, {104, 116},                         // Home, Up, Page Up
    {105, 123}, {106, 124}, {107, 119},                         // Left, Right, End
    {108, 125}, {109, 121}, {110, 114}, {111, 117},             // Down, Page Down, Insert, Del
    {113, 74},  {114, 73},  {115, 72},                          // mute, volume down and up
    {127, 110},                                                 // Menu
    {183, 105}, {184, 107}, {185, 113}, {186, 106},             // F13 to F16
    {187, 64},  {188, 79},  {189, 80},  {190, 90},              // F17 to F20
};

}  // namespace

X11VirtualKey x11VirtualKey(std::uint32_t keyCode, xkb_keysym_t plainSymbol, FnKey fnKey) {
  const std::uint32_t kernelCode = keyCode - firstKeyCode;
  const bool isStandIn = plainSymbol == XKB_KEY_Scroll_Lock || plainSymbol == XKB_KEY_Pause;
  if (kernelCode == kernelFnKey || (isStandIn && fnKey == FnKey::StoodFor)) return fn;
  if (const auto* row = std::ranges::find(modifiers, plainSymbol, &Modifier::symbol);
      row != std::end(modifiers))
    return row->key;
  if (const auto* row = std::ranges::find(places, kernelCode, &Place::kernelCode);
      row != std::end(places))
    return {.code = row->code};
  return {.code = firstUnlistedCode + kernelCode};
}

}  // namespace vemo
