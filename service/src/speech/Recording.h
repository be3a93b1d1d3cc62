// A recording as it came over the wire, with the place of its samples found.
//
// Owns the uploaded bytes and only points into them: the samples are never copied. A plain value,
// movable, used by one thread at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <span>
#include <string>
#include <string_view>

namespace vemo::service {

/// The one format that is served: signed 16-bit little-endian PCM, mono.
inline constexpr std::uint32_t sampleRate = 16'000;

class Recording {
 public:
  /// Takes a whole WAV file. The check is strict: RIFF and chunk lengths must agree with the bytes
  /// that are there, since a length that lies means speech that got lost on the way. Chunks other
  /// than "fmt " and "data" are skipped. The error is a sentence for the sender.
  static std::expected<Recording, std::string_view> fromWav(std::string bytes);

  /// The file as it was uploaded.
  std::string_view wav() const { return m_bytes; }
  std::span<const std::int16_t> samples() const;
  std::chrono::milliseconds duration() const {
    return std::chrono::milliseconds(sampleCount() * 1000 / sampleRate);
  }
  std::size_t sampleCount() const { return m_dataLength / sizeof(std::int16_t); }

 private:
  Recording(std::string bytes, std::size_t dataOffset, std::size_t dataLength);

  std::string m_bytes;
  std::size_t m_dataOffset;
  std::size_t m_dataLength;
};

}  // namespace vemo::service
