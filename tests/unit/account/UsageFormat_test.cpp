#include "account/UsageFormat.h"

#include <gtest/gtest.h>

#include <limits>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(UsageFormatTest, ACountHasTheSeparatorsOfTheLocale) {
  EXPECT_EQ(formatCount(1234567, QLocale(u"en_US"_s)), u"1,234,567"_s);
  EXPECT_EQ(formatCount(1234567, QLocale(u"de_DE"_s)), u"1.234.567"_s);
  EXPECT_EQ(formatCount(1234567, QLocale(u"en_IN"_s)), u"12,34,567"_s);
  EXPECT_EQ(formatCount(0, QLocale::c()), u"0"_s);
  EXPECT_EQ(formatCount(-5, QLocale::c()), u"-5"_s);
}

TEST(UsageFormatTest, MinutesReadWellOnBothSidesOfEachBound) {
  EXPECT_EQ(formatMinutes(0), u"under a min"_s);
  EXPECT_EQ(formatMinutes(0.99), u"under a min"_s);
  EXPECT_EQ(formatMinutes(1), u"1 mins"_s);
  EXPECT_EQ(formatMinutes(59.99), u"59 mins"_s);
  EXPECT_EQ(formatMinutes(60), u"1 hrs"_s);
  EXPECT_EQ(formatMinutes(60.99), u"1 hrs"_s);
  EXPECT_EQ(formatMinutes(61), u"1h 1m"_s);
  EXPECT_EQ(formatMinutes(200.5), u"3h 20m"_s);
}

TEST(UsageFormatTest, NumbersThatAreNoTimeAreHarmless) {
  EXPECT_EQ(formatMinutes(-5), u"under a min"_s);
  EXPECT_EQ(formatMinutes(std::numeric_limits<double>::quiet_NaN()), u"under a min"_s);
  EXPECT_FALSE(formatMinutes(std::numeric_limits<double>::infinity()).isEmpty());
}

}  // namespace
}  // namespace vemo
