#include "storage/CustomKeyShortcut.h"

#include <gtest/gtest.h>

#include <QSet>
#include <limits>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(CustomKeyShortcutTest, ARecordSurvivesEncodingAndDecoding) {
  const CustomKeyShortcut records[] = {
      {},
      {.keyCode = 0},
      {.keyCode = 61, .modifierFlagsRaw = 0x80000, .isModifierOnly = true, .presetId = u"x"_s},
      {.keyCode = std::numeric_limits<std::int64_t>::max(), .presetId = u""_s},
      {.keyCode = -1, .modifierFlagsRaw = std::numeric_limits<std::int64_t>::max()},
  };
  for (const auto& record : records) EXPECT_EQ(decodeShortcut(encodeShortcut(record)), record);
}

TEST(CustomKeyShortcutTest, TheRecordHasExactlyTheKeysThatApply) {
  EXPECT_EQ(encodeShortcut({.keyCode = 49, .modifierFlagsRaw = 262144}),
            R"({"isModifierOnly":false,"keyCode":49,"modifierFlagsRaw":262144})");
  EXPECT_EQ(encodeShortcut({.isModifierOnly = true, .presetId = u"fnGlobe"_s}),
            R"({"isModifierOnly":true,"modifierFlagsRaw":0,"presetId":"fnGlobe"})");
}

TEST(CustomKeyShortcutTest, NullForAnOptionalFieldIsAbsence) {
  const auto record = decodeShortcut(
      R"({"keyCode":null,"modifierFlagsRaw":0,"isModifierOnly":false,"presetId":null})");
  EXPECT_EQ(record, CustomKeyShortcut{});
}

TEST(CustomKeyShortcutTest, BytesThatAreNoRecordOfTheseTypesDecodeToNothing) {
  const char* const records[] = {
      "",
      "null",
      "[]",
      "{}",
      R"({"isModifierOnly":false})",
      R"({"modifierFlagsRaw":0})",
      R"({"modifierFlagsRaw":-1,"isModifierOnly":false})",
      R"({"modifierFlagsRaw":1.5,"isModifierOnly":false})",
      R"({"modifierFlagsRaw":1e300,"isModifierOnly":false})",
      R"({"modifierFlagsRaw":"0","isModifierOnly":false})",
      R"({"modifierFlagsRaw":0,"isModifierOnly":0})",
      R"({"keyCode":"49","modifierFlagsRaw":0,"isModifierOnly":false})",
      R"({"keyCode":0.5,"modifierFlagsRaw":0,"isModifierOnly":false})",
      R"({"presetId":7,"modifierFlagsRaw":0,"isModifierOnly":false})",
      R"({"modifierFlagsRaw":0,"isModifierOnly":false)",
  };
  for (const char* record : records) EXPECT_EQ(decodeShortcut(record), std::nullopt) << record;
}

TEST(CustomKeyShortcutTest, ShortcutsCompareAndHashOverAllFields) {
  const CustomKeyShortcut original{.keyCode = 1, .modifierFlagsRaw = 2, .presetId = u"a"_s};
  QSet<CustomKeyShortcut> seen{original};
  CustomKeyShortcut changed = original;
  changed.keyCode.reset();
  seen.insert(changed);
  changed = original;
  changed.modifierFlagsRaw = 3;
  seen.insert(changed);
  changed = original;
  changed.isModifierOnly = true;
  seen.insert(changed);
  changed = original;
  changed.presetId.reset();
  seen.insert(changed);
  EXPECT_EQ(seen.size(), 5);
  EXPECT_TRUE(seen.contains(original));
}

}  // namespace
}  // namespace vemo
