// What converting and metering cost against libsoxr alone on the same samples.
//
// libsoxr alone is one mono float stream with the converter's own quality, into 16 bits. Both sides
// take turns, and the best of many rounds counts, so that a busy machine harms neither.
#include <soxr.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstdio>
#include <vector>

#include "audio/LevelMeter.h"
#include "audio/SampleConverter.h"

using namespace vemo;

namespace {

constexpr int rounds = 60;
constexpr double seconds = 20;

std::vector<float> speechLike(double rate, int channels) {
  std::vector<float> frames;
  for (std::size_t i = 0; i < static_cast<std::size_t>(rate * seconds); ++i) {
    const double time = static_cast<double>(i) / rate;
    const double value = 0.3 * std::sin(1400 * time) + 0.1 * std::sin(9000 * time + std::sin(time));
    for (int channel = 0; channel < channels; ++channel)
      frames.push_back(static_cast<float>(value));
  }
  return frames;
}

template <typename Work>
double secondsFor(Work work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

/// Blocks of 20 ms; a level every 50 ms, as the recorder takes them.
void convertAndMeter(const AudioFormat& format, std::span<const float> frames, double& sum) {
  const auto converter = SampleConverter::create(format);
  const auto bytes = std::as_bytes(frames);
  const auto blockSize = static_cast<std::size_t>(format.sampleRate / 50) * bytesPerFrame(format);
  int block = 0;
  for (std::size_t at = 0; at + blockSize <= bytes.size(); at += blockSize) {
    const auto samples = converter->convert(bytes.subspan(at, blockSize));
    if (++block % 3 == 0 && !samples.empty()) sum += meterLevel(samples);
  }
}

void soxrAlone(const AudioFormat& format, std::span<const float> frames, int channels,
               double& sum) {
  soxr_quality_spec_t quality = soxr_quality_spec(SOXR_16_BITQ, 0);
  quality.passband_end = 0.85;
  soxr_io_spec_t samples = soxr_io_spec(SOXR_FLOAT32_I, SOXR_INT16_I);
  samples.flags = SOXR_NO_DITHER;
  soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  runtime.log2_min_dft_size = 8;
  runtime.log2_large_dft_size = 8;
  const soxr_t resampler = soxr_create(format.sampleRate, 16000, static_cast<unsigned>(channels),
                                       nullptr, &samples, &quality, &runtime);
  const auto block = static_cast<std::size_t>(format.sampleRate / 50);
  std::vector<std::int16_t> output(4096 * static_cast<std::size_t>(channels));
  const auto step = block * static_cast<std::size_t>(channels);
  for (std::size_t at = 0; at + step <= frames.size(); at += step) {
    std::size_t taken = 0;
    std::size_t given = 0;
    soxr_process(resampler, frames.data() + at, block, &taken, output.data(), 4096, &given);
    sum += output[0];
  }
  soxr_delete(resampler);
}

}  // namespace

int main() {
  bool isWithin = true;
  double sum = 0;
  for (const double rate : {44100.0, 48000.0, 96000.0}) {
    for (const int channels : {1, 2}) {
      const AudioFormat format{rate, channels, SampleType::Float32};
      const std::vector<float> frames = speechLike(rate, channels);
      double own = 1e9;
      double alone = 1e9;
      for (int round = 0; round < rounds; ++round) {
        own = std::min(own, secondsFor([&] { convertAndMeter(format, frames, sum); }));
        alone = std::min(alone, secondsFor([&] { soxrAlone(format, frames, channels, sum); }));
      }
      std::printf("%6.0f Hz, %d channels: %.2f ms a minute of audio, %.2f times libsoxr alone\n",
                  rate, channels, own * 1000 * 60 / seconds, own / alone);
      isWithin &= own <= 1.2 * alone;
    }
  }
  std::printf("limit 1.2; checksum %.3g\n", sum);
  return isWithin ? 0 : 1;
}
