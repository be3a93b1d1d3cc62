#include "ui/PillLayout.h"

#include <gtest/gtest.h>

#include <cmath>

#include "FixedTextMetrics.h"
#include "ui/PillColors.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using Kind = HUDModel::State::Kind;

PillLayout layoutOf(Kind kind, const QString& message = {}, const QString& liveText = {}) {
  return pillLayout({kind, message}, liveText, FixedTextMetrics());
}

TEST(PillLayoutTest, TheWaveformStandsWithin16And10PointsOfPadding) {
  for (const Kind kind : {Kind::Recording, Kind::Transcribing}) {
    const auto layout = layoutOf(kind);
    EXPECT_EQ(layout.size, (PillSize{104, 38}));
    EXPECT_EQ(layout.waveform, (ScreenRect{16, 10, 72, 18}));
    EXPECT_EQ(layout.liveText, ScreenRect{});
  }
}

TEST(PillLayoutTest, LiveTextStandsCentred6PointsBelowTheWaveform) {
  const auto wide = layoutOf(Kind::Recording, {}, QString(40, u'x'));
  EXPECT_EQ(wide.size, (PillSize{220 + 32, 18 + 6 + 13 + 20}));
  EXPECT_EQ(wide.waveform, (ScreenRect{16 + 110 - 36, 10, 72, 18}));
  EXPECT_EQ(wide.liveText, (ScreenRect{16, 34, 220, 13}));
  const auto narrow = layoutOf(Kind::Transcribing, {}, QString(2, u'x'));
  EXPECT_EQ(narrow.size.width, 104);
  EXPECT_EQ(narrow.liveText, (ScreenRect{16 + 36 - 5.5, 34, 11, 13}));
}

TEST(PillLayoutTest, AnErrorIsASymbolAndAMessage8PointsApartVerticallyCentred) {
  const auto layout = layoutOf(Kind::Error, u"0123456789"_s);
  EXPECT_EQ(layout.size, (PillSize{16 + 15 + 8 + 60 + 16 + 1, 34}));
  EXPECT_EQ(layout.symbol, (ScreenRect{16, 10.5, 15, 13}));
  EXPECT_EQ(layout.message, (ScreenRect{39, 10, 60, 14}));
}

TEST(PillLayoutTest, ThePillIsAnEvenNumberOfPointsWide) {
  for (const int length : {1, 2, 17, 33, 50, 80})
    for (const auto& layout : {layoutOf(Kind::Error, QString(length, u'x')),
                               layoutOf(Kind::Recording, {}, QString(length, u'x'))})
      EXPECT_EQ(std::fmod(layout.size.width, 2), 0);
}

TEST(PillLayoutTest, IdleNothingStandsInThePill) {
  const auto layout = layoutOf(Kind::Idle);
  for (const auto& place : {layout.waveform, layout.liveText, layout.symbol, layout.message})
    EXPECT_EQ(place, ScreenRect{});
}

TEST(PillLayoutTest, ThePillClearsTheStripBy10OrTheNotchBy4) {
  EXPECT_EQ(pillTopPadding(24, false), 34);
  EXPECT_EQ(pillTopPadding(0, false), 10);
  EXPECT_EQ(pillTopPadding(-2, false), 8);
  EXPECT_EQ(pillTopPadding(-3, false), 8);
  EXPECT_EQ(pillTopPadding(32, true), 36);
  EXPECT_EQ(pillTopPadding(-1, true), 4);
}

TEST(PillLayoutTest, ThePillIsACapsuleUntilTextAppears) {
  EXPECT_EQ(pillCornerRadius({}), 100);
  EXPECT_EQ(pillCornerRadius(u"so far"_s), 16);
}

TEST(PillLayoutTest, OutOfANotchThePillComesFromFurtherAway) {
  EXPECT_EQ(pillTransition(true).scale, 0.75);
  EXPECT_EQ(pillTransition(true).offset, -40);
  EXPECT_EQ(pillTransition(false).scale, 0.88);
  EXPECT_EQ(pillTransition(false).offset, -12);
}

TEST(PillLayoutTest, EachThemeHasItsColoursAndAnUnknownValueIsDark) {
  const auto& dark = pillTheme(u"dark"_s).pill;
  EXPECT_EQ(dark.fill, (Color{0.0549020, 0.0549020, 0.0627451, 0.94}));
  EXPECT_EQ(dark.stroke, (Color{1, 1, 1, 0.14}));
  EXPECT_EQ(dark.text, white);
  const auto& teal = pillTheme(u"teal"_s).pill;
  EXPECT_EQ(teal.fill, (Color{0.5215686, 0.3921569, 0.9058824, 0.96}));
  EXPECT_EQ(teal.stroke, (Color{0.7882353, 0.7215686, 0.9686275, 0.40}));
  EXPECT_EQ(teal.text, white);
  const auto& light = pillTheme(u"light"_s).pill;
  EXPECT_EQ(light.fill, (Color{0.9803922, 0.9882353, 1.0, 0.98}));
  EXPECT_EQ(light.stroke, (Color{0, 0, 0, 0.12}));
  EXPECT_EQ(light.text, (Color{0.0666667, 0.0941176, 0.1529412}));
  for (const char16_t* unknown : {u"", u"Light", u"blue"})
    EXPECT_EQ(pillTheme(QString::fromUtf16(unknown)).pill, dark);
}

}  // namespace
}  // namespace vemo
