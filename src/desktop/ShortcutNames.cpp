#include "desktop/ShortcutNames.h"

#include <QStringList>
#include <algorithm>
#include <cstddef>
#include <iterator>

#include "desktop/HotkeyChoices.h"
#include "desktop/VirtualKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

struct NamedKey {
  std::int64_t keyCode;
  const char16_t* name;
};

struct NamedModifierKey {
  std::int64_t keyCode;
  const char16_t* full;
  const char16_t* brief;
};

struct NamedFlag {
  ModifierFlags flag;
  const char16_t* full;
  const char16_t* brief;
};

// clang-format off
constexpr NamedKey keyNames[] = {
    {0, u"A"}, {1, u"S"}, {2, u"D"}, {3, u"F"}, {4, u"H"}, {5, u"G"}, {6, u"Z"}, {7, u"X"},
    {8, u"C"}, {9, u"V"}, {11, u"B"}, {12, u"Q"}, {13, u"W"}, {14, u"E"}, {15, u"R"}, {16, u"Y"},
    {17, u"T"}, {18, u"1"}, {19, u"2"}, {20, u"3"}, {21, u"4"}, {22, u"6"}, {23, u"5"}, {24, u"="},
    {25, u"9"}, {26, u"7"}, {27, u"-"}, {28, u"8"}, {29, u"0"}, {30, u"]"}, {31, u"O"}, {32, u"U"},
    {33, u"["}, {34, u"I"}, {35, u"P"}, {36, u"Return"}, {37, u"L"}, {38, u"J"}, {39, u"'"},
    {40, u"K"}, {41, u";"}, {42, u"\\"}, {43, u","}, {44, u"/"}, {45, u"N"}, {46, u"M"}, {47, u"."},
    {48, u"Tab"}, {kSpace, u"Space"}, {50, u"`"}, {51, u"Delete"}, {kEscape, u"Esc"},
    {96, u"F5"}, {97, u"F6"}, {98, u"F7"}, {99, u"F3"}, {100, u"F8"}, {101, u"F9"}, {103, u"F11"},
    {109, u"F10"}, {111, u"F12"}, {115, u"Home"}, {116, u"Page Up"}, {118, u"F4"}, {119, u"End"},
    {120, u"F2"}, {121, u"Page Down"}, {122, u"F1"}, {123, u"Left Arrow"}, {124, u"Right Arrow"},
    {125, u"Down Arrow"}, {126, u"Up Arrow"},
};

constexpr NamedKey keySymbols[] = {
    {36, u"↩"}, {48, u"⇥"}, {kSpace, u"␣"}, {51, u"⌫"}, {kEscape, u"⎋"},
    {123, u"←"}, {124, u"→"}, {125, u"↓"}, {126, u"↑"},
};

constexpr NamedModifierKey modifierKeyNames[] = {
    {kRightCommand, u"Right Command (⌘)", u"Right ⌘"},
    {kLeftCommand, u"Left Command (⌘)", u"Left ⌘"},
    {kLeftShift, u"Left Shift (⇧)", u"Left ⇧"},
    {kLeftOption, u"Left Option (⌥)", u"Left ⌥"},
    {kLeftControl, u"Left Control (⌃)", u"Left ⌃"},
    {kRightShift, u"Right Shift (⇧)", u"Right ⇧"},
    {kRightOption, u"Right Option (⌥)", u"Right ⌥"},
    {kRightControl, u"Right Control (⌃)", u"Right ⌃"},
    {kFnKey, u"Fn / Globe", u"fn"},
};

/// In the order in which they are told.
constexpr NamedFlag flagNames[] = {
    {ControlFlag, u"Control", u"⌃"},
    {OptionFlag, u"Option", u"⌥"},
    {ShiftFlag, u"Shift", u"⇧"},
    {CommandFlag, u"Command", u"⌘"},
};
// clang-format on

template <typename Row, std::size_t size>
const Row* rowOf(std::int64_t keyCode, const Row (&table)[size]) {
  const auto* const row = std::ranges::find(table, keyCode, &Row::keyCode);
  return row == std::end(table) ? nullptr : row;
}

const ShortcutPreset* presetOf(const CustomKeyShortcut& shortcut) {
  return shortcut.presetId ? shortcutPreset(*shortcut.presetId) : nullptr;
}

const NamedModifierKey* modifierKeyOf(const CustomKeyShortcut& shortcut) {
  if (!shortcut.isModifierOnly || !shortcut.keyCode) return nullptr;
  return rowOf(*shortcut.keyCode, modifierKeyNames);
}

}  // namespace

QString displayName(const CustomKeyShortcut& shortcut) {
  if (const auto* preset = presetOf(shortcut)) return preset->fullLabel;
  if (const auto* key = modifierKeyOf(shortcut)) return QString::fromUtf16(key->full);
  if (shortcut.isModifierOnly && shortcut.keyCode) return keyName(*shortcut.keyCode);

  QStringList parts;
  for (const auto& row : flagNames) {
    if (shortcut.modifierFlagsRaw & row.flag) parts.append(QString::fromUtf16(row.full));
  }
  if (shortcut.keyCode) parts.append(keyName(*shortcut.keyCode));
  return parts.isEmpty() ? u"None"_s : parts.join(u" + ");
}

QString shortDisplayName(const CustomKeyShortcut& shortcut) {
  if (const auto* preset = presetOf(shortcut)) return preset->shortLabel;
  if (const auto* key = modifierKeyOf(shortcut)) return QString::fromUtf16(key->brief);
  if (shortcut.isModifierOnly && shortcut.keyCode) return keySymbol(*shortcut.keyCode);

  QString name;
  for (const auto& row : flagNames) {
    if (shortcut.modifierFlagsRaw & row.flag) name += QString::fromUtf16(row.brief);
  }
  if (shortcut.keyCode) name += keySymbol(*shortcut.keyCode);
  return name.isEmpty() ? u"—"_s : name;
}

QString keyName(std::int64_t keyCode) {
  const auto* row = rowOf(keyCode, keyNames);
  return row ? QString::fromUtf16(row->name) : u"Key(%1)"_s.arg(keyCode);
}

QString keySymbol(std::int64_t keyCode) {
  const auto* row = rowOf(keyCode, keySymbols);
  return row ? QString::fromUtf16(row->name) : keyName(keyCode);
}

}  // namespace vemo
