#include "shaping/RuleSequence.h"

#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "shaping/TimeBudget.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class RuleSequenceTest : public testing::Test {
 protected:
  QString applied(const QString& text) { return rules.apply(text, budget).value_or(u"failed"_s); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TimeBudget budget{clock, std::chrono::milliseconds(1)};
  RuleSequence rules;
};

TEST_F(RuleSequenceTest, APatternThatDoesNotCompileIsSkipped) {
  rules.add({.pattern = u"(foo"_s, .replacement = u"x"_s}, {u"foo"});
  rules.add({.pattern = u"\\bbar"_s, .replacement = u"y"_s}, {u"bar"});
  EXPECT_EQ(applied(u"foo bar"_s), u"foo y"_s);
}

TEST_F(RuleSequenceTest, APatternThatDoesNotCompileFallsBackToItsLiteralInAnyCase) {
  rules.add({.pattern = u"(foo"_s, .replacement = u"$1"_s, .literal = u"foo"_s}, {u"foo"});
  EXPECT_EQ(applied(u"Foo food FOO"_s), u"$1 $1d $1"_s);
}

TEST_F(RuleSequenceTest, AMatchMayBeLeftAsItIs) {
  rules.add({.pattern = u"\\bfoo(\\d)"_s,
             .rewrite =
                 [](const QString& text, const RegexMatch& match) {
                   const QString digit = text.mid(match[1].start, match[1].length);
                   return digit == u"1" ? std::nullopt : std::optional(u"<"_s + digit + u">"_s);
                 }},
            {u"foo"});
  EXPECT_EQ(applied(u"foo1 foo2 foo3"_s), u"foo1 <2> <3>"_s);
}

TEST_F(RuleSequenceTest, MatchesThatTouchAreAllReplaced) {
  rules.add({.pattern = u"\\b\\.a"_s, .replacement = u"b"_s}, {u".a"});
  rules.add({.pattern = u"\\bxbb\\b"_s, .replacement = u"found"_s}, {u"xbb"});
  EXPECT_EQ(applied(u"x.a.a"_s), u"found"_s);
}

TEST_F(RuleSequenceTest, WhatARuleWritesIsSeenWithWhatStandsBesideIt) {
  rules.add({.pattern = u"\\ba\\b"_s, .replacement = u"-"_s}, {u"a"});
  rules.add({.pattern = u"\\bleft - right\\b"_s, .replacement = u"both"_s}, {u"left - right"});
  rules.add({.pattern = u"\\bboth"_s, .replacement = u"done"_s}, {u"both"});
  EXPECT_EQ(applied(u"left a right"_s), u"done"_s);
}

TEST_F(RuleSequenceTest, AWordThatBecomesFreeIsSeen) {
  rules.add({.pattern = u"\\b-x"_s, .replacement = u" "_s}, {u"-x"});
  rules.add({.pattern = u"\\bword\\b"_s, .replacement = u"W"_s}, {u"word"});
  EXPECT_EQ(applied(u"a-xword"_s), u"a W"_s);
}

TEST_F(RuleSequenceTest, OutOfTimeTheTextIsGivenUp) {
  rules.add({.pattern = u"\\bfoo"_s, .replacement = u"x"_s}, {u"foo"});
  clock.advance(std::chrono::milliseconds(1));
  EXPECT_EQ(rules.apply(u"foo"_s, budget), std::unexpected(ShapingFailure::OutOfTime));
  EXPECT_EQ(applied(u"nothing to do"_s), u"nothing to do"_s);
}

TEST_F(RuleSequenceTest, APatternThatWouldTakeForEverIsGivenUp) {
  rules.add({.pattern = u"\\b(a+)+b"_s, .replacement = u"x"_s}, {u"a"});
  EXPECT_EQ(rules.apply(QString(60, u'a'), budget), std::unexpected(ShapingFailure::OutOfTime));
}

TEST_F(RuleSequenceTest, ATextMayGrowSoFarAndNoFarther) {
  rules.add({.pattern = u"\\bfoo\\b"_s, .replacement = QString(maxGrowth + 3, u'x')}, {u"foo"});
  EXPECT_EQ(applied(u"foo"_s).size(), maxGrowth + 3);
  EXPECT_EQ(rules.apply(u"foo foo"_s, budget), std::unexpected(ShapingFailure::TooLong));
}

TEST_F(RuleSequenceTest, GrowthIsCountedOverAllRules) {
  rules.add({.pattern = u"\\bfoo\\b"_s, .replacement = QString(maxGrowth / 2, u'x')}, {u"foo"});
  rules.add({.pattern = u"\\bbar\\b"_s, .replacement = QString(maxGrowth, u'y')}, {u"bar"});
  EXPECT_EQ(rules.apply(u"foo bar"_s, budget), std::unexpected(ShapingFailure::TooLong));
}

}  // namespace
}  // namespace vemo
