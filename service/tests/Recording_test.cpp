#include "speech/Recording.h"

#include <gmock/gmock.h>

#include "support/WavFile.h"

namespace vemo::service {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

std::string errorFor(const WavFile& file) {
  const auto recording = Recording::fromWav(file.bytes());
  return recording ? "" : std::string(recording.error());
}

TEST(RecordingTest, TheFixedFormatGivesItsSamples) {
  const auto recording =
      Recording::fromWav(wavOf(std::vector<std::int16_t>{1, -2, 32'767, -32'768}));
  ASSERT_TRUE(recording);
  EXPECT_THAT(recording->samples(), ElementsAre(1, -2, 32'767, -32'768));
}

TEST(RecordingTest, TheUploadIsKeptByteForByteAndNotCopied) {
  auto bytes = wavOf(std::vector<std::int16_t>(1000, 7));
  const auto copy = bytes;
  const char* storage = bytes.data();
  const auto recording = Recording::fromWav(std::move(bytes));
  ASSERT_TRUE(recording);
  EXPECT_EQ(recording->wav(), copy);
  EXPECT_EQ(recording->wav().data(), storage);
}

TEST(RecordingTest, AnEmptyRecordingIsARecording) {
  const auto recording = Recording::fromWav(wavOf({}));
  ASSERT_TRUE(recording);
  EXPECT_EQ(recording->sampleCount(), 0U);
}

TEST(RecordingTest, ChunksThatNobodyKnowsAreSkipped) {
  const WavFile file{.before = WavFile::chunk("LIST", "odd") + WavFile::chunk("fact", "1234"),
                     .after = WavFile::chunk("id3 ", "x")};
  const auto recording = Recording::fromWav(file.bytes());
  ASSERT_TRUE(recording);
  EXPECT_THAT(recording->samples(), ElementsAre(1, 2));
}

TEST(RecordingTest, EachWrongHeaderFieldIsRefused) {
  EXPECT_THAT(errorFor({.riff = "RIFX"}), HasSubstr("not a WAV file"));
  EXPECT_THAT(errorFor({.wave = "WAVX"}), HasSubstr("not a WAV file"));
  EXPECT_THAT(errorFor({.tag = 3}), HasSubstr("plain PCM"));
  EXPECT_THAT(errorFor({.tag = 0xFFFE}), HasSubstr("plain PCM"));
  EXPECT_THAT(errorFor({.channels = 2}), HasSubstr("one channel"));
  EXPECT_THAT(errorFor({.channels = 0}), HasSubstr("one channel"));
  EXPECT_THAT(errorFor({.rate = 44'100}), HasSubstr("16000"));
  EXPECT_THAT(errorFor({.byteRate = 16'000}), HasSubstr("contradicts"));
  EXPECT_THAT(errorFor({.blockAlign = 4}), HasSubstr("contradicts"));
  EXPECT_THAT(errorFor({.bits = 8}), HasSubstr("16 bits"));
}

TEST(RecordingTest, ALengthThatLiesIsRefusedOnBothSides) {
  EXPECT_EQ(errorFor({}), "");
  EXPECT_NE(errorFor({.riffLengthError = 1}), "");
  EXPECT_NE(errorFor({.riffLengthError = -1}), "");
  EXPECT_THAT(errorFor({.dataLengthError = 2}), HasSubstr("ends before"));
  EXPECT_THAT(errorFor({.dataLengthError = 0x7FFFFFFF}), HasSubstr("ends before"));
  EXPECT_THAT(errorFor({.dataLengthError = 0xFFFFFFFF - 4}), HasSubstr("ends before"));
}

TEST(RecordingTest, AnOddNumberOfBytesIsRefused) {
  EXPECT_THAT(errorFor({.after = std::string(1, '\0'), .pcm = "abc"}),
              HasSubstr("middle of a sample"));
}

TEST(RecordingTest, AudioBeforeItsFormatIsRefused) {
  const auto chunks = "WAVE" + WavFile::chunk("data", "ab");
  const auto bytes = "RIFF" + littleEndian(static_cast<std::uint32_t>(chunks.size()), 4) + chunks;
  ASSERT_FALSE(Recording::fromWav(bytes));
}

TEST(RecordingTest, AFormatChunkThatIsTooShortIsRefused) {
  const auto chunks = "WAVE" + WavFile::chunk("fmt ", std::string(14, '\1'));
  const auto bytes = "RIFF" + littleEndian(static_cast<std::uint32_t>(chunks.size()), 4) + chunks;
  const auto recording = Recording::fromWav(bytes);
  ASSERT_FALSE(recording);
  EXPECT_THAT(std::string(recording.error()), HasSubstr("too short"));
}

TEST(RecordingTest, EveryTruncationIsRefused) {
  const auto whole = WavFile{}.bytes();
  for (std::size_t length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(Recording::fromWav(whole.substr(0, length))) << length;
    auto consistent = whole.substr(0, length);
    if (length >= 12)
      consistent.replace(4, 4, littleEndian(static_cast<std::uint32_t>(length) - 8, 4));
    EXPECT_FALSE(Recording::fromWav(consistent)) << length;
  }
}

}  // namespace
}  // namespace vemo::service
