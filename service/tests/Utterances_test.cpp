#include "speech/Utterances.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "speech/Recording.h"

namespace vemo::service {
namespace {

constexpr std::size_t twentySeconds = 20 * sampleRate;

TEST(UtterancesTest, TwentySecondsAreOneUtterance) {
  const std::vector<std::int16_t> samples(twentySeconds, 1000);
  EXPECT_EQ(utteranceLength(samples), twentySeconds);
  EXPECT_EQ(utteranceLength(std::span(samples).first(1)), 1U);
  EXPECT_EQ(utteranceLength({}), 0U);
}

TEST(UtterancesTest, OneSampleMoreIsCutAtTheQuietestMoment) {
  std::vector<std::int16_t> samples(twentySeconds + 1, -32'768);
  const std::size_t quiet = 15 * sampleRate;
  std::fill_n(samples.begin() + quiet, sampleRate / 5, std::int16_t{0});
  const auto length = utteranceLength(samples);
  EXPECT_GE(length, quiet);
  EXPECT_LT(length, quiet + sampleRate / 5);
}

TEST(UtterancesTest, APauseBeforeTenSecondsIsNoPlaceToCut) {
  std::vector<std::int16_t> samples(30 * sampleRate, 500);
  std::fill_n(samples.begin() + 5 * sampleRate, sampleRate, std::int16_t{0});
  EXPECT_GE(utteranceLength(samples), 10U * sampleRate);
}

}  // namespace
}  // namespace vemo::service
