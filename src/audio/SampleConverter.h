// Turns frames of any format into samples of the speech format.
//
// Channels are averaged, then libsoxr converts the rate; frames that already have the speech format
// pass through untouched. No dither is added, so silence stays silence. The filter is linear in
// phase and holds back less than 10 ms at the rates that devices run at (22 to 192 kHz); that much
// of a recording's end stays inside it.
//
// One thread at a time. Samples that are no number, or far beyond full scale, count as silence.
#pragma once

#include <chrono>
#include <cstddef>
#include <memory>
#include <span>
#include <vector>

#include "audio/SpeechFormat.h"
#include "ports/AudioInput.h"

struct soxr;

namespace vemo {

class SampleConverter {
 public:
  using Samples = std::span<const speechFormat::Sample>;

  /// Null for a format that can't be converted.
  static std::unique_ptr<SampleConverter> create(const AudioFormat& format);

  ~SampleConverter();
  SampleConverter(const SampleConverter&) = delete;
  SampleConverter& operator=(const SampleConverter&) = delete;

  /// What comes out for these frames; valid until the next call. Nothing when the filter has not
  /// filled yet or the conversion failed.
  Samples convert(std::span<const std::byte> frames);

 private:
  struct ResamplerDeleter {
    void operator()(soxr* resampler) const;
  };
  using Resampler = std::unique_ptr<soxr, ResamplerDeleter>;

  SampleConverter(const AudioFormat& format, Resampler resampler);

  void mixToMono(std::span<const std::byte> frames);
  Samples resample();

  const AudioFormat m_format;
  const Resampler m_resampler;  ///< null when frames pass through
  std::vector<float> m_mono;
  std::vector<speechFormat::Sample> m_output;
};

}  // namespace vemo
