#include "audio/WavFile.h"

#include <gmock/gmock.h>

#include <span>

namespace vemo {
namespace {

PcmBuffer bufferOf(const QByteArray& bytes) {
  PcmBuffer buffer;
  EXPECT_TRUE(buffer.append(std::as_bytes(std::span(bytes.constData(), bytes.size()))));
  return buffer;
}

TEST(WavFileTest, TheHeaderIsThatOf16KilohertzMono16Bit) {
  const QByteArray pcm = QByteArray::fromHex("0102030405060708");
  EXPECT_EQ(wavFile(bufferOf(pcm), 0, 8).toHex(' '),
            "52 49 46 46 "  // RIFF
            "2c 00 00 00 "  // 8 + 36
            "57 41 56 45 "  // WAVE
            "66 6d 74 20 "  // fmt
            "10 00 00 00 "
            "01 00 "
            "01 00 "
            "80 3e 00 00 "  // 16000
            "00 7d 00 00 "  // 32000
            "02 00 "
            "10 00 "
            "64 61 74 61 "  // data
            "08 00 00 00 "
            "01 02 03 04 05 06 07 08");
}

TEST(WavFileTest, LengthsOfMoreThanAByteAreLittleEndian) {
  const QByteArray wav = wavFile(bufferOf(QByteArray(480'000, 'x')), 0, 480'000);
  EXPECT_EQ(wav.size(), 480'044);
  EXPECT_EQ(wav.mid(4, 4).toHex(), "24530700");
  EXPECT_EQ(wav.mid(40, 4).toHex(), "00530700");
}

TEST(WavFileTest, AStretchIsTakenFromItsOffset) {
  EXPECT_EQ(wavFile(bufferOf("abcdefgh"), 2, 4).mid(wavHeaderSize), "cdef");
}

TEST(WavFileTest, AnEmptyStretchIsAHeaderAlone) {
  const QByteArray wav = wavFile(bufferOf("ab"), 2, 0);
  EXPECT_EQ(wav.size(), 44);
  EXPECT_EQ(wav.mid(4, 4).toHex(), "24000000");
}

}  // namespace
}  // namespace vemo
