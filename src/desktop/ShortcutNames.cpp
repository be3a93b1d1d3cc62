#include "desktop/ShortcutNames.h"

#include <QCoreApplication>
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
  const char* name;
};

struct NamedModifierKey {
  std::int64_t keyCode;
  const char* full;
  const char* brief;
};

struct NamedFlag {
  ModifierFlags flag;
  const char* full;
  const char* brief;
};

// clang-format off
constexpr NamedKey keyNames[] = {
    {0, "A"}, {1, "S"}, {2, "D"}, {3, "F"}, {4, "H"}, {5, "G"}, {6, "Z"}, {7, "X"}, {8, "C"},
    {9, "V"}, {11, "B"}, {12, "Q"}, {13, "W"}, {14, "E"}, {15, "R"}, {16, "Y"}, {17, "T"},
    {18, "1"}, {19, "2"}, {20, "3"}, {21, "4"}, {22, "6"}, {23, "5"}, {24, "="}, {25, "9"},
    {26, "7"}, {27, "-"}, {28, "8"}, {29, "0"}, {30, "]"}, {31, "O"}, {32, "U"}, {33, "["},
    {34, "I"}, {35, "P"}, {36, QT_TRANSLATE_NOOP("Keys", "Return")}, {37, "L"}, {38, "J"},
    {39, "'"}, {40, "K"}, {41, ";"}, {42, "\\"}, {43, ","}, {44, "/"}, {45, "N"}, {46, "M"},
    {47, "."}, {48, QT_TRANSLATE_NOOP("Keys", "Tab")}, {kSpace, QT_TRANSLATE_NOOP("Keys", "Space")},
    {50, "`"}, {51, QT_TRANSLATE_NOOP("Keys", "Delete")},
    {kEscape, QT_TRANSLATE_NOOP("Keys", "Esc")}, {96, "F5"}, {97, "F6"}, {98, "F7"}, {99, "F3"},
    {100, "F8"}, {101, "F9"}, {103, "F11"}, {109, "F10"}, {111, "F12"},
    {115, QT_TRANSLATE_NOOP("Keys", "Home")}, {116, QT_TRANSLATE_NOOP("Keys", "Page Up")},
    {118, "F4"}, {119, QT_TRANSLATE_NOOP("Keys", "End")}, {120, "F2"},
    {121, QT_TRANSLATE_NOOP("Keys", "Page Down")}, {122, "F1"},
    {123, QT_TRANSLATE_NOOP("Keys", "Left Arrow")}, {124, QT_TRANSLATE_NOOP("Keys", "Right Arrow")},
    {125, QT_TRANSLATE_NOOP("Keys", "Down Arrow")}, {126, QT_TRANSLATE_NOOP("Keys", "Up Arrow")},
};

constexpr NamedKey keySymbols[] = {
    {36, "↩"}, {48, "⇥"}, {kSpace, "␣"}, {51, "⌫"}, {kEscape, "⎋"},
    {123, "←"}, {124, "→"}, {125, "↓"}, {126, "↑"},
};

constexpr NamedModifierKey modifierKeyNames[] = {
    {kRightCommand, QT_TRANSLATE_NOOP("Keys", "Right Command (⌘)"), QT_TRANSLATE_NOOP("Keys", "Right ⌘")},
    {kLeftCommand, QT_TRANSLATE_NOOP("Keys", "Left Command (⌘)"), QT_TRANSLATE_NOOP("Keys", "Left ⌘")},
    {kLeftShift, QT_TRANSLATE_NOOP("Keys", "Left Shift (⇧)"), QT_TRANSLATE_NOOP("Keys", "Left ⇧")},
    {kLeftOption, QT_TRANSLATE_NOOP("Keys", "Left Option (⌥)"), QT_TRANSLATE_NOOP("Keys", "Left ⌥")},
    {kLeftControl, QT_TRANSLATE_NOOP("Keys", "Left Control (⌃)"), QT_TRANSLATE_NOOP("Keys", "Left ⌃")},
    {kRightShift, QT_TRANSLATE_NOOP("Keys", "Right Shift (⇧)"), QT_TRANSLATE_NOOP("Keys", "Right ⇧")},
    {kRightOption, QT_TRANSLATE_NOOP("Keys", "Right Option (⌥)"), QT_TRANSLATE_NOOP("Keys", "Right ⌥")},
    {kRightControl, QT_TRANSLATE_NOOP("Keys", "Right Control (⌃)"), QT_TRANSLATE_NOOP("Keys", "Right ⌃")},
    {kFnKey, QT_TRANSLATE_NOOP("Keys", "Fn / Globe"), QT_TRANSLATE_NOOP("Keys", "fn")},
};

/// In the order in which they are told.
constexpr NamedFlag flagNames[] = {
    {ControlFlag, QT_TRANSLATE_NOOP("Keys", "Control"), "⌃"},
    {OptionFlag, QT_TRANSLATE_NOOP("Keys", "Option"), "⌥"},
    {ShiftFlag, QT_TRANSLATE_NOOP("Keys", "Shift"), "⇧"},
    {CommandFlag, QT_TRANSLATE_NOOP("Keys", "Command"), "⌘"},
};
// clang-format on

QString words(const char* source) {
  return QCoreApplication::translate("Keys", source);
}

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
  if (const auto* preset = presetOf(shortcut)) return words(preset->fullLabel);
  if (const auto* key = modifierKeyOf(shortcut)) return words(key->full);
  if (shortcut.isModifierOnly && shortcut.keyCode) return keyName(*shortcut.keyCode);

  QStringList parts;
  for (const auto& row : flagNames) {
    if (shortcut.modifierFlagsRaw & row.flag) parts.append(words(row.full));
  }
  if (shortcut.keyCode) parts.append(keyName(*shortcut.keyCode));
  return parts.isEmpty() ? words(QT_TRANSLATE_NOOP("Keys", "None")) : parts.join(u" + ");
}

QString shortDisplayName(const CustomKeyShortcut& shortcut) {
  if (const auto* preset = presetOf(shortcut)) return words(preset->shortLabel);
  if (const auto* key = modifierKeyOf(shortcut)) return words(key->brief);
  if (shortcut.isModifierOnly && shortcut.keyCode) return keySymbol(*shortcut.keyCode);

  QString name;
  for (const auto& row : flagNames) {
    if (shortcut.modifierFlagsRaw & row.flag) name += words(row.brief);
  }
  if (shortcut.keyCode) name += keySymbol(*shortcut.keyCode);
  return name.isEmpty() ? u"—"_s : name;
}

QString keyName(std::int64_t keyCode) {
  const auto* row = rowOf(keyCode, keyNames);
  return row ? words(row->name) : words(QT_TRANSLATE_NOOP("Keys", "Key(%1)")).arg(keyCode);
}

QString keySymbol(std::int64_t keyCode) {
  const auto* row = rowOf(keyCode, keySymbols);
  return row ? words(row->name) : keyName(keyCode);
}

}  // namespace vemo
