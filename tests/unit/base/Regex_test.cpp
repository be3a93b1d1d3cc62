#include "base/Regex.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(RegexTest, APatternThatDoesNotCompileIsAValue) {
  const auto regex = Regex::compile(u"(unclosed");
  ASSERT_FALSE(regex);
  EXPECT_EQ(regex.error(), RegexError::InvalidPattern);
}

TEST(RegexTest, MatchesCarryTheirGroupsInUtf16Positions) {
  const auto regex = Regex::compile(u"(\\w)(x)?-");
  const auto matches = regex->matches(u"\U0001F600a-bx-"_s);
  ASSERT_TRUE(matches);
  ASSERT_EQ(matches->size(), 2u);
  EXPECT_EQ((*matches)[0][0], (TextRange{2, 2}));
  EXPECT_EQ((*matches)[0][1], (TextRange{2, 1}));
  EXPECT_FALSE((*matches)[0][2].isPresent());
  EXPECT_EQ((*matches)[1][2], (TextRange{5, 1}));
}

TEST(RegexTest, AMatchThatWouldTakeForEverRunsOutOfTime) {
  const auto regex = Regex::compile(u"(a+)+b");
  const auto matches = regex->matches(QString(60, u'a'));
  ASSERT_FALSE(matches);
  EXPECT_EQ(matches.error(), RegexError::TimedOut);
  EXPECT_EQ(regex->replaced(QString(60, u'a'), u"x"_s).error(), RegexError::TimedOut);
}

TEST(RegexTest, TheTemplateTakesGroupsAndEscapes) {
  const auto regex = Regex::compile(u"(\\w+) (\\w+)");
  EXPECT_EQ(*regex->replaced(u"one two"_s, u"$2 \\$1 $1"_s), u"two $1 one"_s);
  EXPECT_EQ(regex->replaced(u"one two"_s, u"$7"_s).error(), RegexError::Failed);
}

TEST(RegexTest, CaseIsFoldedOnlyWhenAsked) {
  EXPECT_TRUE(Regex::compile(u"maria")->matches(u"MARIA"_s)->empty());
  EXPECT_EQ(Regex::compile(u"maria", CaseMatching::Insensitive)->matches(u"MARIA"_s)->size(), 1u);
}

TEST(RegexTest, EscapedTextMatchesAndInsertsItself) {
  const QString text = u"a.b*c[d]{e}(f)^$|\\/-#&~?+ $1 \U0001F600"_s;
  const auto regex = Regex::compile(Regex::escapedPattern(text));
  ASSERT_TRUE(regex);
  EXPECT_EQ(regex->matches(text)->size(), 1u);
  EXPECT_EQ(*regex->replaced(text, Regex::escapedTemplate(text)), text);
}

TEST(RegexTest, UnpairedSurrogatesPassThrough) {
  const QString text = u"a"_s + QChar(0xD800) + u"b"_s;
  EXPECT_EQ(*Regex::compile(u"b")->replaced(text, u"c"_s), u"a"_s + QChar(0xD800) + u"c"_s);
}

}  // namespace
}  // namespace vemo
