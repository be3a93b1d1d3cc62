#include "audio/SampleConverter.h"

#include <soxr.h>

#include <cmath>
#include <cstring>
#include <utility>

namespace vemo {

namespace {

/// What capture devices run at, with room on both sides. Filters for rates beyond grow without
/// bound.
constexpr double leastSampleRate = 1000;
constexpr double greatestSampleRate = 768'000;

/// 24 dB over full scale: no microphone delivers more, only a broken block does.
constexpr float greatestMagnitude = 16;

/// Room for what the filter hands out at once beyond the input's own share.
constexpr std::size_t spareOutput = 16;

template <typename T>
T loadSample(const std::byte* bytes) {
  T sample;
  std::memcpy(&sample, bytes, sizeof sample);
  return sample;
}

float normalized(std::int16_t sample) {
  return static_cast<float>(sample) / 32768.0F;
}

float normalized(float sample) {
  return std::abs(sample) <= greatestMagnitude ? sample : 0.0F;  // false for a NaN
}

template <typename T>
void averageChannels(const std::byte* frames, std::size_t channels, std::span<float> mono) {
  if (channels == 1) {
    for (std::size_t i = 0; i < mono.size(); ++i)
      mono[i] = normalized(loadSample<T>(frames + i * sizeof(T)));
    return;
  }
  const float share = 1.0F / static_cast<float>(channels);
  for (float& mixed : mono) {
    float sum = 0;
    for (std::size_t channel = 0; channel < channels; ++channel, frames += sizeof(T))
      sum += normalized(loadSample<T>(frames));
    mixed = sum * share;
  }
}

/// 16-bit precision with a pass band up to 6.8 kHz, in small transforms: a filter that keeps what
/// recognisers listen to and lags a third of what the library's default does.
soxr_t createResampler(double sampleRate) {
  soxr_quality_spec_t quality = soxr_quality_spec(SOXR_16_BITQ, 0);
  quality.passband_end = 0.85;
  soxr_io_spec_t samples = soxr_io_spec(SOXR_FLOAT32_I, SOXR_INT16_I);
  samples.flags = SOXR_NO_DITHER;
  soxr_runtime_spec_t runtime = soxr_runtime_spec(1);
  runtime.log2_min_dft_size = 8;
  runtime.log2_large_dft_size = 8;

  soxr_error_t error = nullptr;
  const soxr_t resampler = soxr_create(sampleRate, speechFormat::sampleRate, speechFormat::channels,
                                       &error, &samples, &quality, &runtime);
  return error ? nullptr : resampler;
}

}  // namespace

void SampleConverter::ResamplerDeleter::operator()(soxr* resampler) const {
  soxr_delete(resampler);
}

std::unique_ptr<SampleConverter> SampleConverter::create(const AudioFormat& format) {
  if (format == speechFormat::audioFormat)
    return std::unique_ptr<SampleConverter>(new SampleConverter(format, nullptr));
  if (format.channels <= 0) return nullptr;
  if (!(format.sampleRate >= leastSampleRate && format.sampleRate <= greatestSampleRate))
    return nullptr;
  Resampler resampler(createResampler(format.sampleRate));
  if (!resampler) return nullptr;
  return std::unique_ptr<SampleConverter>(new SampleConverter(format, std::move(resampler)));
}

SampleConverter::SampleConverter(const AudioFormat& format, Resampler resampler)
    : m_format(format), m_resampler(std::move(resampler)) {}

SampleConverter::~SampleConverter() = default;

SampleConverter::Samples SampleConverter::convert(std::span<const std::byte> frames) {
  const std::size_t frameCount = frames.size() / bytesPerFrame(m_format);
  if (frameCount == 0) return {};
  if (!m_resampler) {
    m_output.resize(frameCount);
    std::memcpy(m_output.data(), frames.data(), frameCount * sizeof(speechFormat::Sample));
    return m_output;
  }
  m_mono.resize(frameCount);
  mixToMono(frames);
  return resample();
}

void SampleConverter::mixToMono(std::span<const std::byte> frames) {
  const auto channels = static_cast<std::size_t>(m_format.channels);
  if (m_format.sampleType == SampleType::Int16)
    averageChannels<std::int16_t>(frames.data(), channels, m_mono);
  else
    averageChannels<float>(frames.data(), channels, m_mono);
}

SampleConverter::Samples SampleConverter::resample() {
  const double share = speechFormat::sampleRate / m_format.sampleRate;
  const auto ownOutput =
      static_cast<std::size_t>(std::ceil(share * static_cast<double>(m_mono.size())));
  m_output.resize(ownOutput + spareOutput);

  std::size_t consumed = 0;
  std::size_t produced = 0;
  while (true) {
    std::size_t taken = 0;
    std::size_t given = 0;
    const std::span room = std::span(m_output).subspan(produced);
    const soxr_error_t error =
        soxr_process(m_resampler.get(), m_mono.data() + consumed, m_mono.size() - consumed, &taken,
                     room.data(), room.size(), &given);
    if (error) return {};
    consumed += taken;
    produced += given;
    if (given < room.size()) break;  // all that the filter can give for now
    m_output.resize(m_output.size() + ownOutput + spareOutput);
  }
  return Samples(m_output).first(produced);
}

}  // namespace vemo
