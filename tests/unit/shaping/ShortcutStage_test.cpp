#include "shaping/ShortcutStage.h"

#include "ShapingFixture.h"

namespace vemo {
namespace {

class ShortcutStageTest : public ShapingFixture {
 protected:
  ShortcutStageTest() { switchIntegrationsOff(); }
};

TEST_F(ShortcutStageTest, AWholeUtteranceBecomesTheSnippetAndItsPointGoes) {
  setShortcuts({{u"here's my calendar"_s, u"https://cal.example/me"_s}});
  EXPECT_EQ(shaped(u"Here's my calendar."_s), u"https://cal.example/me"_s);
  EXPECT_EQ(shaped(u" \n\u00BFHERE'S my calendar?!\u2026 \t"_s), u"https://cal.example/me"_s);
}

TEST_F(ShortcutStageTest, ATriggerWithinATextIsReplacedAlone) {
  setShortcuts({{u"here's my calendar"_s, u"https://cal.example/me"_s}});
  EXPECT_EQ(shaped(u"call me here's my calendar now"_s), u"call me https://cal.example/me now"_s);
  EXPECT_EQ(shaped(u"call me HERE'S  my\ncalendar."_s), u"call me https://cal.example/me."_s);
}

TEST_F(ShortcutStageTest, LeadingBlanksOfASnippetStayOnAWholeMatchAlone) {
  setShortcuts({{u"sig"_s, u"  Yours\n"_s}});
  switchIntegrationsOff();
  EXPECT_EQ(shaped(u"sig"_s), u" Yours\n"_s);  // the last stage makes one blank of two
  EXPECT_EQ(shaped(u"my sig here"_s), u"my Yours here"_s);
}

TEST_F(ShortcutStageTest, TheLongerOfTwoTriggersExpands) {
  setShortcuts({{u"sig"_s, u"short"_s}, {u"sig long"_s, u"Yours sincerely"_s}});
  EXPECT_EQ(shaped(u"sig long please"_s), u"Yours sincerely please"_s);
  EXPECT_EQ(shaped(u"sig longer please"_s), u"short longer please"_s);
}

TEST_F(ShortcutStageTest, TriggersOfEqualLengthRunInStoredOrder) {
  setShortcuts({{u"aaa"_s, u"bbb"_s}, {u"bbb"_s, u"ccc"_s}, {u"ddd"_s, u"aaa"_s}});
  EXPECT_EQ(shaped(u"x aaa ddd"_s), u"x ccc aaa"_s);
}

TEST_F(ShortcutStageTest, ALengthIsCountedInCharacters) {
  // Four characters of three units each, against five letters.
  const QString emoji = u"a\u0301\u0301b\u0301\u0301c\u0301\u0301d\u0301\u0301"_s;
  setShortcuts({{emoji, u"one"_s}, {u"eeeee"_s, emoji}});
  EXPECT_EQ(shaped(u"x eeeee"_s), u"x one"_s);
}

TEST_F(ShortcutStageTest, OfTwoTriggersThatSoundAlikeTheFirstIsExpanded) {
  setShortcuts({{u"Sig."_s, u"first"_s}, {u"sig"_s, u"second"_s}});
  EXPECT_EQ(shaped(u"sig!"_s), u"first"_s);
}

TEST_F(ShortcutStageTest, ASnippetIsWrittenAsItIs) {
  setShortcuts({{u"sig"_s, u"$1\\ line\nnext"_s}});
  EXPECT_EQ(shaped(u"my sig"_s), u"my $1\\ line\nnext"_s);
}

TEST_F(ShortcutStageTest, OnlyAWholeMatchTakesAnEmptySnippet) {
  setShortcuts({{u"nothing"_s, u""_s}, {u" "_s, u"x"_s}});
  EXPECT_EQ(shaped(u"nothing"_s), u""_s);
  EXPECT_EQ(shaped(u"or nothing"_s), u"or nothing"_s);
}

TEST_F(ShortcutStageTest, ASnippetIsSubjectToTheStagesAfterIt) {
  inDeveloperTool();
  setShortcuts({{u"ask"_s, u"an api"_s}});
  EXPECT_EQ(shaped(u"ask"_s), u"an API"_s);
}

TEST_F(ShortcutStageTest, ASpokenFormHasNoBlanksAndThenNoPunctuationAtItsEnds) {
  EXPECT_EQ(spokenForm(u"\t My Address. "_s), u"my address"_s);
  EXPECT_EQ(spokenForm(u"hello !"_s), u"hello "_s);
  EXPECT_EQ(spokenForm(u"\u201EA\u201C, (b)"_s), u"a\u201C, (b"_s);
  EXPECT_EQ(spokenForm(u"5$+"_s), u"5$+"_s);
  EXPECT_EQ(spokenForm(u"..."_s), u""_s);
  EXPECT_EQ(spokenForm(u"\U00010100a\U00010101"_s), u"a"_s);  // two marks beyond the basic plane
  EXPECT_EQ(spokenForm(u""_s), u""_s);
}

TEST_F(ShortcutStageTest, ASpokenFormKeepsUnpairedSurrogates) {
  const QString lone = QChar(0xD800);
  EXPECT_EQ(spokenForm(u"."_s + lone + u"."_s), lone);
  EXPECT_EQ(spokenForm(QString(QChar(0xDD00)) + u"."_s), QString(QChar(0xDD00)));
}

}  // namespace
}  // namespace vemo
