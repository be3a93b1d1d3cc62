#include "audio/SampleConverter.h"

#include <gmock/gmock.h>

#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <vector>

namespace vemo {
namespace {

using testing::Each;
using testing::ElementsAre;
using testing::IsEmpty;
using Samples = std::vector<std::int16_t>;

/// The filter's lag at any usual rate stays under this.
constexpr double greatestLatency = 0.010;

std::vector<float> sine(const AudioFormat& format, double frequency, double amplitude,
                        double seconds) {
  std::vector<float> frames;
  const auto count = static_cast<std::size_t>(format.sampleRate * seconds);
  for (std::size_t i = 0; i < count; ++i) {
    const double phase =
        2 * std::numbers::pi * frequency * static_cast<double>(i) / format.sampleRate;
    for (int channel = 0; channel < format.channels; ++channel)
      frames.push_back(static_cast<float>(amplitude * std::sin(phase)));
  }
  return frames;
}

template <typename T>
Samples convertInBlocks(const AudioFormat& format, const std::vector<T>& frames,
                        std::size_t framesPerBlock) {
  const auto converter = SampleConverter::create(format);
  Samples output;
  auto bytes = std::as_bytes(std::span(frames));
  const std::size_t blockSize = framesPerBlock * bytesPerFrame(format);
  while (!bytes.empty()) {
    const auto block = bytes.first(std::min(blockSize, bytes.size()));
    const auto samples = converter->convert(block);
    output.insert(output.end(), samples.begin(), samples.end());
    bytes = bytes.subspan(block.size());
  }
  return output;
}

/// The amplitude of one frequency in the samples, by correlation with it, as a share of full scale.
double amplitudeAt(std::span<const std::int16_t> samples, double frequency) {
  double inPhase = 0;
  double quadrature = 0;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double phase = 2 * std::numbers::pi * frequency * static_cast<double>(i) / 16000;
    inPhase += samples[i] * std::sin(phase);
    quadrature += samples[i] * std::cos(phase);
  }
  return 2 * std::hypot(inPhase, quadrature) / static_cast<double>(samples.size()) / 32768;
}

TEST(SampleConverterTest, SpeechFormatPassesThroughUntouched) {
  const Samples samples{0, 1, -1, 32767, -32768, 12345};
  EXPECT_EQ(convertInBlocks(speechFormat::audioFormat, samples, 4), samples);
}

TEST(SampleConverterTest, AnOddByteAtTheEndOfABlockIsLeftOut) {
  const auto converter = SampleConverter::create(speechFormat::audioFormat);
  const Samples samples{7, 8};
  EXPECT_THAT(converter->convert(std::as_bytes(std::span(samples)).first(3)), ElementsAre(7));
  EXPECT_THAT(converter->convert(std::as_bytes(std::span(samples)).first(1)), IsEmpty());
  EXPECT_THAT(converter->convert({}), IsEmpty());
}

TEST(SampleConverterTest, FormatsThatAreNoneAreRefused) {
  for (const AudioFormat& format :
       {AudioFormat{0, 1}, AudioFormat{-48000, 1}, AudioFormat{48000, 0}, AudioFormat{48000, -2},
        AudioFormat{999, 1}, AudioFormat{768'001, 1},
        AudioFormat{std::numeric_limits<double>::quiet_NaN(), 1},
        AudioFormat{std::numeric_limits<double>::infinity(), 1}})
    EXPECT_EQ(SampleConverter::create(format), nullptr)
        << format.sampleRate << " Hz, " << format.channels << " channels";
}

TEST(SampleConverterTest, TheOutermostRatesAreAccepted) {
  EXPECT_NE(SampleConverter::create({1000, 1}), nullptr);
  EXPECT_NE(SampleConverter::create({768'000, 1}), nullptr);
}

TEST(SampleConverterTest, ChannelsAreAveraged) {
  const AudioFormat stereo{16000, 2, SampleType::Float32};
  std::vector<float> frames;
  for (int i = 0; i < 1600; ++i) frames.insert(frames.end(), {0.5F, -0.25F});
  const Samples samples = convertInBlocks(stereo, frames, 400);
  ASSERT_GT(samples.size(), 1000U);
  EXPECT_THAT(samples, Each(testing::AllOf(testing::Ge(4095), testing::Le(4097))));
}

TEST(SampleConverterTest, OppositeChannelsCancel) {
  const AudioFormat stereo{48000, 2, SampleType::Int16};
  Samples frames;
  for (int i = 0; i < 4800; ++i) {
    const auto sample = static_cast<std::int16_t>(i * 7 % 20000);
    frames.insert(frames.end(), {sample, static_cast<std::int16_t>(-sample)});
  }
  EXPECT_THAT(convertInBlocks(stereo, frames, 960), Each(0));
}

TEST(SampleConverterTest, SilenceStaysSilence) {
  for (const SampleType type : {SampleType::Int16, SampleType::Float32}) {
    const AudioFormat format{44100, 2, type};
    const std::vector<std::byte> silence(bytesPerFrame(format) * 44100);
    const Samples samples = convertInBlocks(format, silence, bytesPerFrame(format) * 882);
    ASSERT_GT(samples.size(), 15000U);
    EXPECT_THAT(samples, Each(0));
  }
}

TEST(SampleConverterTest, SamplesThatAreNoNumberOrFarBeyondFullScaleCountAsSilence) {
  const AudioFormat format{48000, 1, SampleType::Float32};
  std::vector<float> frames(4800, 0.0F);
  frames[10] = std::numeric_limits<float>::quiet_NaN();
  frames[20] = std::numeric_limits<float>::infinity();
  frames[30] = -std::numeric_limits<float>::infinity();
  frames[40] = 1e30F;
  EXPECT_THAT(convertInBlocks(format, frames, 480), Each(0));
}

TEST(SampleConverterTest, SamplesBeyondFullScaleAreClipped) {
  const AudioFormat format{16000, 1, SampleType::Float32};
  const Samples samples = convertInBlocks(format, std::vector<float>(1600, 1.5F), 400);
  ASSERT_GT(samples.size(), 1000U);
  EXPECT_THAT(samples, Each(32767));
}

class RateTest : public testing::TestWithParam<double> {};

TEST_P(RateTest, ASineKeepsItsFrequencyAndLevel) {
  for (const int channels : {1, 2, 6}) {
    const AudioFormat format{GetParam(), channels, SampleType::Float32};
    const Samples samples = convertInBlocks(format, sine(format, 1000, 0.5, 2), 512);
    const std::span steady = std::span(samples).subspan(3200, 16000);
    EXPECT_NEAR(amplitudeAt(steady, 1000), 0.5, 0.005);
    EXPECT_LT(amplitudeAt(steady, 1100), 0.001);
    EXPECT_LT(amplitudeAt(steady, 2000), 0.001);
  }
}

TEST_P(RateTest, TheFirstSampleIsNotDisplaced) {
  const AudioFormat format{GetParam(), 1, SampleType::Float32};
  const Samples samples = convertInBlocks(format, sine(format, 500, 0.5, 1), 512);
  for (std::size_t i = 1600; i < 8000; ++i) {
    const double expected =
        16384 * std::sin(2 * std::numbers::pi * 500 * static_cast<double>(i) / 16000);
    ASSERT_NEAR(samples[i], expected, 100) << "sample " << i;
  }
}

TEST_P(RateTest, TheLengthIsKeptWithinTheLatency) {
  const AudioFormat format{GetParam(), 1, SampleType::Float32};
  const auto converter = SampleConverter::create(format);
  const std::vector<float> block(static_cast<std::size_t>(format.sampleRate / 100), 0.1F);
  double heard = 0;
  double written = 0;
  for (int i = 0; i < 1000; ++i) {
    written += static_cast<double>(converter->convert(std::as_bytes(std::span(block))).size());
    heard += static_cast<double>(block.size());
    const double lag = heard / format.sampleRate - written / 16000;
    ASSERT_LT(lag, greatestLatency) << "after block " << i;
    ASSERT_GT(lag, -0.001) << "after block " << i;
  }
}

TEST_P(RateTest, TheBlocksBordersDontMatter) {
  const AudioFormat format{GetParam(), 2, SampleType::Float32};
  const auto frames = sine(format, 300, 0.8, 1);
  const Samples inOnePiece = convertInBlocks(format, frames, frames.size());
  for (const std::size_t framesPerBlock : {1, 7, 511, 4096}) {
    const Samples samples = convertInBlocks(format, frames, framesPerBlock);
    const std::size_t common = std::min(samples.size(), inOnePiece.size());
    ASSERT_GT(common, 15800U);
    for (std::size_t i = 0; i < common; ++i)
      ASSERT_NEAR(samples[i], inOnePiece[i], 1) << framesPerBlock << " a block, sample " << i;
  }
}

TEST_P(RateTest, WhatLiesBeyondTheSpeechBandIsGone) {
  const AudioFormat format{GetParam(), 1, SampleType::Float32};
  if (format.sampleRate <= 2 * 9500) return;  // can't hold such a tone
  const Samples samples = convertInBlocks(format, sine(format, 9500, 0.5, 2), 512);
  // Folded back it would stand at 6500 Hz.
  EXPECT_LT(amplitudeAt(std::span(samples).subspan(3200, 16000), 6500), 0.0001);
}

INSTANTIATE_TEST_SUITE_P(Rates, RateTest,
                         testing::Values(22050, 44100, 48000, 88200, 96000, 192000));

TEST(SampleConverterTest, RandomBytesOfEveryFormatAreSurvived) {
  std::mt19937 random(7);
  for (const double rate : {8000.0, 11025.0, 16000.0, 44100.5, 96000.0}) {
    for (const int channels : {1, 2, 3, 32}) {
      for (const SampleType type : {SampleType::Int16, SampleType::Float32}) {
        const AudioFormat format{rate, channels, type};
        const auto converter = SampleConverter::create(format);
        ASSERT_NE(converter, nullptr);
        for (int block = 0; block < 20; ++block) {
          std::vector<std::byte> bytes(random() % 20000);
          for (std::byte& byte : bytes) byte = static_cast<std::byte>(random());
          const double frames = static_cast<double>(bytes.size() / bytesPerFrame(format));
          EXPECT_LE(static_cast<double>(converter->convert(bytes).size()),
                    frames * 16000 / rate + 2048);
        }
      }
    }
  }
}

}  // namespace
}  // namespace vemo
