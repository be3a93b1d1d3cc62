// WAV files made by hand, right and wrong, for the tests of the service.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

namespace vemo::service {

inline std::string littleEndian(std::uint32_t value, int bytes) {
  std::string text;
  for (int index = 0; index < bytes; ++index) text += static_cast<char>(value >> (8 * index));
  return text;
}

/// Every header field can be set wrong on its own; lengths that are absent are the right ones.
struct WavFile {
  std::string riff = "RIFF";
  std::string wave = "WAVE";
  std::uint16_t tag = 1;
  std::uint16_t channels = 1;
  std::uint32_t rate = 16'000;
  std::uint32_t byteRate = 32'000;
  std::uint16_t blockAlign = 2;
  std::uint16_t bits = 16;
  std::string before = {};  ///< whole chunks between "fmt " and "data"
  std::string after = {};   ///< whole chunks behind "data"
  std::string pcm = std::string("\x01\x00\x02\x00", 4);
  std::int64_t riffLengthError = 0;
  std::int64_t dataLengthError = 0;

  static std::string chunk(const std::string& name, const std::string& content) {
    return name + littleEndian(static_cast<std::uint32_t>(content.size()), 4) + content +
           std::string(content.size() % 2, '\0');
  }

  std::string bytes() const {
    const auto format = littleEndian(tag, 2) + littleEndian(channels, 2) + littleEndian(rate, 4) +
                        littleEndian(byteRate, 4) + littleEndian(blockAlign, 2) +
                        littleEndian(bits, 2);
    const auto dataLength = static_cast<std::int64_t>(pcm.size()) + dataLengthError;
    const auto chunks = wave + chunk("fmt ", format) + before + "data" +
                        littleEndian(static_cast<std::uint32_t>(dataLength), 4) + pcm + after;
    const auto length = static_cast<std::int64_t>(chunks.size()) + riffLengthError;
    return riff + littleEndian(static_cast<std::uint32_t>(length), 4) + chunks;
  }
};

inline std::string wavOf(std::span<const std::int16_t> samples) {
  return WavFile{
      .pcm = std::string(reinterpret_cast<const char*>(samples.data()), samples.size_bytes())}
      .bytes();
}

}  // namespace vemo::service
