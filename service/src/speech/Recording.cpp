#include "speech/Recording.h"

#include <bit>
#include <optional>
#include <utility>

namespace vemo::service {

namespace {

static_assert(std::endian::native == std::endian::little, "samples are read in place");

constexpr std::size_t riffHeaderLength = 12;
constexpr std::size_t chunkHeaderLength = 8;
constexpr std::size_t formatLength = 16;
constexpr std::uint16_t pcmTag = 1;

std::uint32_t readNumber(std::string_view bytes, std::size_t offset, std::size_t length) {
  std::uint32_t value = 0;
  for (std::size_t index = length; index-- > 0;)
    value = value << 8 | static_cast<unsigned char>(bytes[offset + index]);
  return value;
}

std::uint16_t read16(std::string_view bytes, std::size_t offset) {
  return static_cast<std::uint16_t>(readNumber(bytes, offset, 2));
}

std::uint32_t read32(std::string_view bytes, std::size_t offset) {
  return readNumber(bytes, offset, 4);
}

std::optional<std::string_view> formatError(std::string_view format) {
  if (format.size() < formatLength) return "The WAV file's format chunk is too short.";
  if (read16(format, 0) != pcmTag) return "The WAV file must hold plain PCM.";
  if (read16(format, 2) != 1) return "The WAV file must have one channel.";
  if (read32(format, 4) != sampleRate) return "The WAV file must have 16000 samples a second.";
  if (read16(format, 14) != 16) return "The WAV file must have 16 bits a sample.";
  if (read32(format, 8) != sampleRate * 2 || read16(format, 12) != 2)
    return "The WAV file's format chunk contradicts itself.";
  return std::nullopt;
}

}  // namespace

Recording::Recording(std::string bytes, std::size_t dataOffset, std::size_t dataLength)
    : m_bytes(std::move(bytes)), m_dataOffset(dataOffset), m_dataLength(dataLength) {}

std::expected<Recording, std::string_view> Recording::fromWav(std::string bytes) {
  const std::string_view file = bytes;
  if (file.size() < riffHeaderLength || !file.starts_with("RIFF") || file.substr(8, 4) != "WAVE")
    return std::unexpected("The body is not a WAV file.");
  if (read32(file, 4) != file.size() - chunkHeaderLength)
    return std::unexpected("The WAV file's length does not match its header.");

  bool formatSeen = false;
  std::size_t offset = riffHeaderLength;
  while (file.size() - offset >= chunkHeaderLength) {
    const std::string_view name = file.substr(offset, 4);
    const std::size_t length = read32(file, offset + 4);
    const std::size_t start = offset + chunkHeaderLength;
    if (length > file.size() - start)
      return std::unexpected("The WAV file ends before its audio does.");
    if (name == "fmt ") {
      if (const auto error = formatError(file.substr(start, length)))
        return std::unexpected(*error);
      formatSeen = true;
    } else if (name == "data") {
      if (!formatSeen) return std::unexpected("The WAV file has no format before its audio.");
      if (length % sizeof(std::int16_t) != 0)
        return std::unexpected("The WAV file ends in the middle of a sample.");
      return Recording(std::move(bytes), start, length);
    }
    const std::size_t padding = length % 2;
    if (padding > file.size() - start - length) break;
    offset = start + length + padding;
  }
  return std::unexpected("The WAV file holds no audio.");
}

std::span<const std::int16_t> Recording::samples() const {
  // Chunks start at even offsets, and a string's storage is aligned for more than two bytes.
  return {reinterpret_cast<const std::int16_t*>(m_bytes.data() + m_dataOffset), sampleCount()};
}

}  // namespace vemo::service
