#include "ui/models/Statistics.h"

#include <gtest/gtest.h>

#include <limits>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

int speed(std::int64_t words, double minutes) {
  return dictationSpeed({.words = words, .minutes = minutes});
}

Measure audio(double minutes) {
  return voiceAudio(minutes, QLocale::c());
}

TEST(StatisticsTest, WhatTheAccountDoesNotTellCountsAsZero) {
  const auto nothing = UsageTotals::of(std::nullopt);
  EXPECT_EQ(nothing.words, 0);
  EXPECT_EQ(nothing.minutes, 0);
  EXPECT_EQ(nothing.utterances, 0);
  UserConsumption consumption;
  consumption.totalUtterances = 7;
  const auto some = UsageTotals::of(consumption);
  EXPECT_EQ(some.words, 0);
  EXPECT_EQ(some.utterances, 7);
}

TEST(StatisticsTest, BelowAFifthOfAMinuteThereIsNoSpeed) {
  EXPECT_EQ(speed(100, 0), 0);
  EXPECT_EQ(speed(30, 0.1999), 0);
  EXPECT_EQ(speed(30, 0.2), 150);
}

TEST(StatisticsTest, TheSpeedIsRoundedToTheNearestWord) {
  EXPECT_EQ(speed(149, 10), 15);
  EXPECT_EQ(speed(144, 10), 14);
  EXPECT_EQ(speed(145, 10), 15);
}

TEST(StatisticsTest, ASpeedAboveThreeHundredIsNone) {
  EXPECT_EQ(speed(3000, 10), 300);
  EXPECT_EQ(speed(3004, 10), 300) << "it is the rounded value that counts";
  EXPECT_EQ(speed(3005, 10), 0);
  EXPECT_EQ(speed(3100, 10), 0);
}

TEST(StatisticsTest, FiguresThatMakeNoSenseGiveNone) {
  EXPECT_EQ(speed(-100, 10), 0);
  EXPECT_EQ(speed(100, -10), 0);
  EXPECT_EQ(speed(std::numeric_limits<std::int64_t>::max(), 0.2), 0);
  EXPECT_EQ(speed(100, std::numeric_limits<double>::infinity()), 0);
  EXPECT_EQ(speed(100, std::numeric_limits<double>::quiet_NaN()), 0);
  EXPECT_EQ(minutesSaved({.words = -100, .minutes = 10}), 0);
  EXPECT_EQ(audio(-3), (Measure{u"0"_s, u"secs"_s}));
}

TEST(StatisticsTest, TheComparisonIsWithFortyWordsAMinute) {
  EXPECT_EQ(speedComparison(0), QString());
  EXPECT_EQ(speedComparison(1), u"1x Faster"_s);
  EXPECT_EQ(speedComparison(39), u"1x Faster"_s);
  EXPECT_EQ(speedComparison(40), u"1x Faster"_s);
  EXPECT_EQ(speedComparison(79), u"1x Faster"_s);
  EXPECT_EQ(speedComparison(80), u"2x Faster"_s);
  EXPECT_EQ(speedComparison(119), u"2x Faster"_s);
  EXPECT_EQ(speedComparison(120), u"3x Faster"_s);
  EXPECT_EQ(speedComparison(150), u"3x Faster"_s);
}

TEST(StatisticsTest, TheSpeedLineTellsTheSpeedOrHowToComeByOne) {
  EXPECT_EQ(speedLine(0),
            u"Dictate for at least 15 seconds to calculate your live Words Per Minute"_s);
  EXPECT_EQ(speedLine(150),
            u"You dictate at 150 words per minute, significantly faster than the 40 WPM average "
            u"typing speed."_s);
}

TEST(StatisticsTest, TimeSavedIsWhatTypingWouldHaveTakenLonger) {
  EXPECT_EQ(minutesSaved({.words = 400, .minutes = 4}), 6);
  EXPECT_EQ(minutesSaved({.words = 400, .minutes = 10}), 0);
  EXPECT_EQ(minutesSaved({.words = 400, .minutes = 20}), 0) << "never less than nothing";
}

TEST(StatisticsTest, AudioBelowAMinuteIsInWholeSeconds) {
  EXPECT_EQ(audio(0), (Measure{u"0"_s, u"secs"_s}));
  EXPECT_EQ(audio(0.5), (Measure{u"30"_s, u"secs"_s}));
  EXPECT_EQ(audio(0.999), (Measure{u"59"_s, u"secs"_s}));
}

TEST(StatisticsTest, AudioFromAMinuteOnIsInMinutesWithOneDecimal) {
  EXPECT_EQ(audio(1), (Measure{u"1.0"_s, u"mins"_s}));
  EXPECT_EQ(audio(12.34), (Measure{u"12.3"_s, u"mins"_s}));
}

}  // namespace
}  // namespace vemo
