#include "audio/WavFile.h"

#include <QtEndian>
#include <bit>
#include <cstdint>
#include <cstring>
#include <span>

#include "audio/SpeechFormat.h"

namespace vemo {

// Samples are stored as the machine holds them.
static_assert(std::endian::native == std::endian::little);

namespace {

constexpr std::uint32_t formatBlockSize = 16;
constexpr std::uint16_t pcmEncoding = 1;

class HeaderWriter {
 public:
  explicit HeaderWriter(char* target) : m_target(target) {}

  void tag(const char (&text)[5]) {
    std::memcpy(m_target, text, 4);
    m_target += 4;
  }
  template <typename Number>
  void number(Number value) {
    qToLittleEndian(value, m_target);
    m_target += sizeof value;
  }

 private:
  char* m_target;
};

void writeHeader(char* target, std::uint32_t dataLength) {
  constexpr std::uint16_t blockAlign = speechFormat::channels * sizeof(speechFormat::Sample);
  constexpr std::uint16_t bitsPerSample = 8 * sizeof(speechFormat::Sample);

  HeaderWriter header(target);
  header.tag("RIFF");
  header.number(static_cast<std::uint32_t>(dataLength + wavHeaderSize - 8));
  header.tag("WAVE");
  header.tag("fmt ");
  header.number(formatBlockSize);
  header.number(pcmEncoding);
  header.number(static_cast<std::uint16_t>(speechFormat::channels));
  header.number(static_cast<std::uint32_t>(speechFormat::sampleRate));
  header.number(static_cast<std::uint32_t>(speechFormat::bytesPerSecond));
  header.number(blockAlign);
  header.number(bitsPerSample);
  header.tag("data");
  header.number(dataLength);
}

}  // namespace

QByteArray wavFile(const PcmBuffer& pcm, std::size_t offset, std::size_t length) {
  QByteArray wav(static_cast<qsizetype>(wavHeaderSize + length), Qt::Uninitialized);
  writeHeader(wav.data(), static_cast<std::uint32_t>(length));
  pcm.copyTo(std::as_writable_bytes(std::span(wav.data() + wavHeaderSize, length)), offset);
  return wav;
}

}  // namespace vemo
