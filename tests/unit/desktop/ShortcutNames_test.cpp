#include "desktop/ShortcutNames.h"

#include <gtest/gtest.h>

#include <QStringList>

#include "desktop/VirtualKeys.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

struct Names {
  CustomKeyShortcut shortcut;
  QString full;
  QString brief;
};

void expectNames(const Names& row) {
  EXPECT_EQ(displayName(row.shortcut), row.full);
  EXPECT_EQ(shortDisplayName(row.shortcut), row.brief);
}

CustomKeyShortcut preset(const QString& id) {
  return {.presetId = id};
}

CustomKeyShortcut modifier(std::int64_t keyCode) {
  return {.keyCode = keyCode, .isModifierOnly = true};
}

TEST(ShortcutNamesTest, PresetsHaveLabelsOfTheirOwn) {
  const Names rows[] = {
      {preset(u"eitherOption"_s), u"Either Option (⌥)"_s, u"⌥"_s},
      {preset(u"rightOption"_s), u"Right Option (⌥)"_s, u"Right ⌥"_s},
      {preset(u"leftOption"_s), u"Left Option (⌥)"_s, u"Left ⌥"_s},
      {preset(u"rightCommand"_s), u"Right Command (⌘)"_s, u"Right ⌘"_s},
      {preset(u"fnGlobe"_s), u"Fn / Globe"_s, u"fn"_s},
      {preset(u"controlSpace"_s), u"Control + Space (⌃␣)"_s, u"⌃␣"_s},
      {preset(u"optionSpace"_s), u"Option + Space (⌥␣)"_s, u"⌥␣"_s},
  };
  for (const auto& row : rows) expectNames(row);
}

TEST(ShortcutNamesTest, APresetThatNobodyKnowsReadsAsItsKeys) {
  expectNames({{.keyCode = 96, .modifierFlagsRaw = ShiftFlag, .presetId = u"later"_s},
               u"Shift + F5"_s,
               u"⇧F5"_s});
}

TEST(ShortcutNamesTest, ModifierKeysAreNamedBySide) {
  const Names rows[] = {
      {modifier(54), u"Right Command (⌘)"_s, u"Right ⌘"_s},
      {modifier(55), u"Left Command (⌘)"_s, u"Left ⌘"_s},
      {modifier(56), u"Left Shift (⇧)"_s, u"Left ⇧"_s},
      {modifier(58), u"Left Option (⌥)"_s, u"Left ⌥"_s},
      {modifier(59), u"Left Control (⌃)"_s, u"Left ⌃"_s},
      {modifier(60), u"Right Shift (⇧)"_s, u"Right ⇧"_s},
      {modifier(61), u"Right Option (⌥)"_s, u"Right ⌥"_s},
      {modifier(62), u"Right Control (⌃)"_s, u"Right ⌃"_s},
      {modifier(63), u"Fn / Globe"_s, u"fn"_s},
      {modifier(57), u"Key(57)"_s, u"Key(57)"_s},
      {modifier(36), u"Return"_s, u"↩"_s},
  };
  for (const auto& row : rows) expectNames(row);
}

TEST(ShortcutNamesTest, ChordsTellTheirModifiersInAFixedOrder) {
  expectNames({{.keyCode = kSpace, .modifierFlagsRaw = allModifierFlags},
               u"Control + Option + Shift + Command + Space"_s,
               u"⌃⌥⇧⌘␣"_s});
  expectNames({{.keyCode = 0}, u"A"_s, u"A"_s});
  expectNames({{.modifierFlagsRaw = ControlFlag | CommandFlag}, u"Control + Command"_s, u"⌃⌘"_s});
  expectNames({{.modifierFlagsRaw = OptionFlag, .isModifierOnly = true}, u"Option"_s, u"⌥"_s});
}

TEST(ShortcutNamesTest, NoKeyAndNoFlagsReadNoneAndADash) {
  expectNames({{}, u"None"_s, u"—"_s});
}

TEST(ShortcutNamesTest, KeysAreNamedAsOnAUSKeyboard) {
  const QString rows[] = {
      u"0 A,1 S,2 D,3 F,4 H,5 G,6 Z,7 X,8 C,9 V,11 B,12 Q,13 W,14 E,15 R,16 Y,17 T"_s,
      u"18 1,19 2,20 3,21 4,22 6,23 5,24 =,25 9,26 7,27 -,28 8,29 0,30 ],31 O,32 U,33 [,34 I"_s,
      u"35 P,36 Return,37 L,38 J,39 ',40 K,41 ;,42 \\,44 /,45 N,46 M,47 .,48 Tab,49 Space,50 `"_s,
      u"51 Delete,53 Esc,96 F5,97 F6,98 F7,99 F3,100 F8,101 F9,103 F11,109 F10,111 F12,115 Home"_s,
      u"116 Page Up,118 F4,119 End,120 F2,121 Page Down,122 F1,123 Left Arrow"_s,
      u"124 Right Arrow,125 Down Arrow,126 Up Arrow"_s,
  };
  int count = 0;
  for (const auto& row : rows) {
    for (const QString& key : row.split(u',')) {
      EXPECT_EQ(keyName(key.section(u' ', 0, 0).toInt()), key.section(u' ', 1));
      ++count;
    }
  }
  EXPECT_EQ(keyName(43), u","_s);
  EXPECT_EQ(count + 1, 72);
}

TEST(ShortcutNamesTest, ACodeWithoutANameIsTold) {
  for (const std::int64_t code : {10, 52, 57, 63, 102, 127, -1})
    EXPECT_EQ(keyName(code), u"Key(%1)"_s.arg(code));
  EXPECT_EQ(keySymbol(127), u"Key(127)"_s);
}

TEST(ShortcutNamesTest, NineKeysHaveASymbolAndTheOthersTheirName) {
  const std::pair<std::int64_t, QString> rows[] = {
      {36, u"↩"_s},  {48, u"⇥"_s},  {49, u"␣"_s},  {51, u"⌫"_s},  {53, u"⎋"_s},
      {123, u"←"_s}, {124, u"→"_s}, {125, u"↓"_s}, {126, u"↑"_s},
  };
  int differing = 0;
  for (std::int64_t code = 0; code < 200; ++code) differing += keySymbol(code) != keyName(code);
  EXPECT_EQ(differing, 9);
  for (const auto& [code, symbol] : rows) EXPECT_EQ(keySymbol(code), symbol);
}

}  // namespace
}  // namespace vemo
