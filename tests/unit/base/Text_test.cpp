#include "base/Text.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

const QString family = u"\U0001F468‍\U0001F469‍\U0001F467"_s;

TEST(TextTest, CharactersAreGraphemeClusters) {
  EXPECT_EQ(characterCount(u""), 0);
  EXPECT_EQ(characterCount(u"abc"), 3);
  EXPECT_EQ(characterCount(u"é"), 1);
  EXPECT_EQ(characterCount(family), 1);
  EXPECT_EQ(characterCount(u"\U0001F1E9\U0001F1EA\U0001F1EB\U0001F1F7"), 2);
  EXPECT_EQ(characterCount(u"\r\n"), 1);
  EXPECT_EQ(characterCount(u"नि"), 1);
}

TEST(TextTest, AnUnpairedSurrogateIsACharacter) {
  const QString text = u"a"_s + QChar(0xDC00) + u"b"_s;
  EXPECT_EQ(characterCount(text), 3);
  EXPECT_EQ(firstCharacters(text, 2), text.left(2));
}

TEST(TextTest, FirstCharactersNeverCutsOne) {
  const QString text = family + u"ab"_s;
  EXPECT_EQ(firstCharacters(text, 0), u""_s);
  EXPECT_EQ(firstCharacters(text, 1), family);
  EXPECT_EQ(firstCharacters(text, 2), family + u"a"_s);
  EXPECT_EQ(firstCharacters(text, 3), text);
  EXPECT_EQ(firstCharacters(text, 99), text);
}

TEST(TextTest, TrimmingTakesUnicodeWhiteSpaceAndLineEnds) {
  EXPECT_EQ(trimmed(u" \t\r\n\u0085   　a b "_s), u"a b"_s);
  EXPECT_EQ(trimmed(u" \n "_s), u""_s);
  EXPECT_EQ(trimmed(u""_s), u""_s);
  EXPECT_EQ(trimmed(u"\u200Ba\u200B"_s), u"\u200Ba\u200B"_s) << "a zero-width space is no blank";
  const QString withNul = u"\0 a"_s;
  EXPECT_EQ(trimmed(withNul), withNul);
}

TEST(TextTest, WordsAreRunsOfInk) {
  EXPECT_EQ(wordCount(u""), 0);
  EXPECT_EQ(wordCount(u"  "), 0);
  EXPECT_EQ(wordCount(u" one two\nthree　four "), 4);
}

TEST(TextTest, LowerCasingIsUnicodesAndNoLocales) {
  EXPECT_EQ(lowerCased(u"ÀB"_s), u"àb"_s);
  EXPECT_EQ(lowerCased(u"I"_s), u"i"_s);
  EXPECT_EQ(lowerCased(u"İ"_s), u"i̇"_s);
  EXPECT_EQ(lowerCased(u"ΟΔΟΣ"_s), u"οδος"_s) << "a final sigma";
}

}  // namespace
}  // namespace vemo
