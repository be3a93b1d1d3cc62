#include "ui/models/RelativeTime.h"

#include <gtest/gtest.h>

#include <chrono>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

TEST(RelativeTimeTest, BelowAMinuteItIsJustNow) {
  EXPECT_EQ(relativeTime(0s), u"Just now"_s);
  EXPECT_EQ(relativeTime(59s), u"Just now"_s);
  EXPECT_EQ(relativeTime(59999ms), u"Just now"_s);
}

TEST(RelativeTimeTest, BelowAnHourItIsWholeMinutes) {
  EXPECT_EQ(relativeTime(60s), u"1m ago"_s);
  EXPECT_EQ(relativeTime(119s), u"1m ago"_s);
  EXPECT_EQ(relativeTime(120s), u"2m ago"_s);
  EXPECT_EQ(relativeTime(3599s), u"59m ago"_s);
}

TEST(RelativeTimeTest, BelowADayItIsWholeHours) {
  EXPECT_EQ(relativeTime(3600s), u"1h ago"_s);
  EXPECT_EQ(relativeTime(7199s), u"1h ago"_s);
  EXPECT_EQ(relativeTime(86399s), u"23h ago"_s);
}

TEST(RelativeTimeTest, FromADayOnItIsWholeDays) {
  EXPECT_EQ(relativeTime(86400s), u"1d ago"_s);
  EXPECT_EQ(relativeTime(2 * 86400s - 1s), u"1d ago"_s);
  EXPECT_EQ(relativeTime(400 * 86400s), u"400d ago"_s);
}

TEST(RelativeTimeTest, WhatLiesInTheFutureIsJustNow) {
  EXPECT_EQ(relativeTime(-1s), u"Just now"_s);
  EXPECT_EQ(relativeTime(-86400s), u"Just now"_s);
}

TEST(RelativeTimeTest, ItReadsTheSameUntilTheTimeThatIsNamed) {
  for (const Clock::Duration age :
       {Clock::Duration(-5s), Clock::Duration(0s), Clock::Duration(59500ms), Clock::Duration(60s),
        Clock::Duration(3599s), Clock::Duration(3600s), Clock::Duration(86399s),
        Clock::Duration(86400s)}) {
    const auto until = untilRelativeTimeChanges(age);
    EXPECT_GT(until, 0s);
    EXPECT_EQ(relativeTime(age + until - 1ns), relativeTime(age));
    EXPECT_NE(relativeTime(age + until), relativeTime(age));
  }
}

}  // namespace
}  // namespace vemo
