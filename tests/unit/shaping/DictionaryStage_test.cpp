#include "shaping/DictionaryStage.h"

#include "ShapingFixture.h"

namespace vemo {
namespace {

class DictionaryStageTest : public ShapingFixture {
 protected:
  DictionaryStageTest() { switchIntegrationsOff(); }
};

TEST_F(DictionaryStageTest, APhraseThatEndsInNoWordCharacterNeverMatchesBeforeABlank) {
  setDictionary({{u"c++"_s, u"cpp"_s}});
  EXPECT_EQ(shaped(u"in c++ now"_s), u"in c++ now"_s);
  EXPECT_EQ(shaped(u"c++"_s), u"c++"_s);
  EXPECT_EQ(shaped(u"c++x"_s), u"cppx"_s);
}

TEST_F(DictionaryStageTest, APhraseOfTwoWordsMatchesOverAnyWhiteSpaceInAnyCase) {
  setDictionary({{u"new york"_s, u"NYC"_s}});
  EXPECT_EQ(shaped(u"in New  York"_s), u"in NYC"_s);
  EXPECT_EQ(shaped(u"NEW\nYORK"_s), u"NYC"_s);
  EXPECT_EQ(shaped(u"new\u2003\tyork,"_s), u"NYC,"_s);
  EXPECT_EQ(shaped(u"newyork new-york anew york new yorker"_s),
            u"newyork new-york anew york new yorker"_s);
}

TEST_F(DictionaryStageTest, ManyBlanksInAStoredPhraseAreOneGap) {
  setDictionary({{u"  new   york \n"_s, u" NYC\t"_s}});
  EXPECT_EQ(shaped(u"new york!"_s), u"NYC!"_s);
}

TEST_F(DictionaryStageTest, AReplacementIsWrittenAsItIs) {
  setDictionary({{u"foo"_s, u"$1 \\n \\\\ ${x} $"_s}});
  EXPECT_EQ(shaped(u"a foo"_s), u"a $1 \\n \\\\ ${x} $"_s);
}

TEST_F(DictionaryStageTest, APhraseIsNoPattern) {
  setDictionary({{u"a.c"_s, u"dot"_s},
                 {u"x*y"_s, u"star"_s},
                 {u"(p|q)r"_s, u"group"_s},
                 {u"m[n]o"_s, u"set"_s},
                 {u"s\\d"_s, u"slash"_s},
                 {u"t{2}u"_s, u"braces"_s}});
  EXPECT_EQ(shaped(u"abc a.c xxy x*y m[n]o mno s\\d s1 t{2}u ttu"_s),
            u"abc dot xxy star set mno slash s1 braces ttu"_s);
  EXPECT_EQ(shaped(u"1(p|q)r pr"_s), u"1group pr"_s);
}

TEST_F(DictionaryStageTest, AnEntryFeedsTheEntriesAfterIt) {
  setDictionary({{u"foo"_s, u"bar"_s}, {u"bar"_s, u"baz"_s}});
  EXPECT_EQ(shaped(u"foo"_s), u"baz"_s);
  EXPECT_EQ(shaped(u"bar foo"_s), u"baz baz"_s);
}

TEST_F(DictionaryStageTest, AnEntryFeedsNoEntryBeforeIt) {
  setDictionary({{u"bar"_s, u"baz"_s}, {u"foo"_s, u"bar"_s}});
  EXPECT_EQ(shaped(u"foo bar"_s), u"bar baz"_s);
}

TEST_F(DictionaryStageTest, WhatOneEntryWritesBesideOtherWordsIsSeenByTheNext) {
  setDictionary({{u"knew"_s, u"new"_s}, {u"yolk"_s, u"york"_s}, {u"in new york city"_s, u"NYC"_s}});
  EXPECT_EQ(shaped(u"in knew   yolk city, in knew york city"_s), u"NYC, NYC"_s);
}

TEST_F(DictionaryStageTest, EntriesWithoutPhraseOrReplacementAreSkipped) {
  setDictionary({{u""_s, u"x"_s}, {u" \n"_s, u"x"_s}, {u"foo"_s, u" "_s}, {u"bar"_s, u"baz"_s}});
  EXPECT_EQ(shaped(u"foo bar"_s), u"foo baz"_s);
}

TEST_F(DictionaryStageTest, OfTwoEntriesForOnePhraseTheFirstDecides) {
  setDictionary({{u"foo"_s, u"first"_s}, {u"Foo"_s, u"second"_s}});
  EXPECT_EQ(shaped(u"foo"_s), u"first"_s);
}

TEST_F(DictionaryStageTest, WordsOfEveryScriptAreReplacedByFullCaseFolding) {
  setDictionary({{u"straße"_s, u"road"_s},
                 {u"ПРИВЕТ"_s, u"hello"_s},
                 {u"हिन्दी"_s, u"Hindi"_s},
                 {u"\U00010400x"_s, u"deseret"_s},
                 {u"fine"_s, u"good"_s}});
  EXPECT_EQ(shaped(u"STRASSE Straße привет हिन्दी \U00010428X"_s),
            u"road road hello Hindi deseret"_s);
  EXPECT_EQ(shaped(u"\uFB01ne"_s), u"good"_s);  // a ligature of "f" and "i"
}

TEST_F(DictionaryStageTest, TheProductNameIsFixedBeforeTheDictionaryIsRead) {
  setDictionary({{u"vemo"_s, u"VEMO!"_s}});
  EXPECT_EQ(shaped(u"a memo"_s), u"a VEMO!"_s);
}

}  // namespace
}  // namespace vemo
