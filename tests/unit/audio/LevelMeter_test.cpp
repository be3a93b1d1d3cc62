#include "audio/LevelMeter.h"

#include <gmock/gmock.h>

#include <cmath>
#include <numbers>
#include <vector>

namespace vemo {
namespace {

using Samples = std::vector<speechFormat::Sample>;

/// A square wave, whose RMS level is its amplitude.
Samples squareAt(double decibels) {
  const auto amplitude =
      static_cast<speechFormat::Sample>(std::lround(32767 * std::pow(10, decibels / 20)));
  Samples samples(1000);
  for (std::size_t i = 0; i < samples.size(); ++i)
    samples[i] = static_cast<speechFormat::Sample>(i % 2 ? amplitude : -amplitude);
  return samples;
}

TEST(LevelMeterTest, AFullScaleSignalReadsOne) {
  EXPECT_EQ(meterLevel(Samples(100, 32767)), 1.0F);
  EXPECT_EQ(meterLevel(Samples(100, -32768)), 1.0F);
}

TEST(LevelMeterTest, DigitalSilenceReadsZero) {
  EXPECT_EQ(meterLevel(Samples(100, 0)), 0.0F);
}

TEST(LevelMeterTest, AroundMinus53DecibelsTheScaleBegins) {
  EXPECT_EQ(meterLevel(squareAt(-53.1)), 0.0F);
  EXPECT_GT(meterLevel(squareAt(-52.9)), 0.0F);
  EXPECT_LT(meterLevel(squareAt(-52.9)), 0.02F);
}

TEST(LevelMeterTest, AroundMinus40DecibelsTheScaleEnds) {
  EXPECT_EQ(meterLevel(squareAt(-39.9)), 1.0F);
  EXPECT_LT(meterLevel(squareAt(-40.1)), 1.0F);
  EXPECT_GT(meterLevel(squareAt(-40.1)), 0.98F);
}

TEST(LevelMeterTest, TheScaleIsLinearInDecibels) {
  EXPECT_NEAR(meterLevel(squareAt(-46.5)), 0.5F, 0.005F);
}

TEST(LevelMeterTest, ASineReadsItsRmsLevel) {
  // The RMS of a sine lies 3.01 dB under its amplitude.
  Samples samples(16000);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = 2 * std::numbers::pi * 440 * static_cast<double>(i) / 16000;
    samples[i] = static_cast<speechFormat::Sample>(std::lround(327.67 * std::sin(phase)));
  }
  EXPECT_NEAR(meterLevel(samples), (-43.01 + 53) / 13, 0.002);
}

TEST(LevelMeterTest, OneSampleIsEnough) {
  EXPECT_EQ(meterLevel(Samples{32767}), 1.0F);
}

}  // namespace
}  // namespace vemo
