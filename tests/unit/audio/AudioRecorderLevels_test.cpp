// The level meter, the live feed, and the end of the recorder.

#include "audio/AudioRecorderFixture.h"

namespace vemo {
namespace {

class AudioRecorderLevelsTest : public AudioRecorderFixture {};

TEST_F(AudioRecorderLevelsTest, AFullScaleSignalReadsOne) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 32767));
  clock.advance(50ms);
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
  EXPECT_THAT(levels, ElementsAre(1.0F));
}

TEST_F(AudioRecorderLevelsTest, DigitalSilenceReadsZero) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 0));
  clock.advance(50ms);
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
  EXPECT_THAT(levels, ElementsAre(0.0F));
}

TEST_F(AudioRecorderLevelsTest, LevelsComeTwentyTimesASecondAndOnlyWhileRecording) {
  clock.advance(1s);
  EXPECT_THAT(levels, IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0U);
  ASSERT_TRUE(recorder->start());
  clock.advance(49ms);
  EXPECT_THAT(levels, IsEmpty());
  clock.advance(1ms);
  EXPECT_THAT(levels, SizeIs(1));
  clock.advance(950ms);
  EXPECT_THAT(levels, SizeIs(20));
  recorder->stop();
  clock.advance(1s);
  EXPECT_THAT(levels, SizeIs(20));
  EXPECT_EQ(clock.sleeperCount(), 0U);
}

TEST_F(AudioRecorderLevelsTest, TheMeterIsReadAtMostEvery50Milliseconds) {
  ASSERT_TRUE(recorder->start());
  mainThread.drain();
  input.deliver(Samples(100, 0));
  clock.advance(49ms);
  input.deliver(Samples(100, 32767));
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
  clock.advance(1ms);
  input.deliver(Samples(100, 32767));
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
}

TEST_F(AudioRecorderLevelsTest, ThePeakIsTheHighestLevelAndStaysAfterTheStop) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(100, 200));
  const float loud = recorder->peakLevel();
  EXPECT_GT(loud, 0.0F);
  clock.advance(50ms);
  input.deliver(Samples(100, 0));
  clock.advance(50ms);
  EXPECT_THAT(levels, ElementsAre(loud, 0.0F));
  recorder->stop();
  EXPECT_EQ(recorder->peakLevel(), loud);
}

TEST_F(AudioRecorderLevelsTest, TheRecordingMayBeStoppedFromALevelOrAChunk) {
  recorder->onLevel = [this](float) { recorder->stop(); };
  ASSERT_TRUE(recorder->start());
  clock.advance(1s);
  EXPECT_FALSE(recorder->isRecording());

  recorder->onAudioChunk = [this](QByteArray, int) { recorder->stop(); };
  ASSERT_TRUE(recorder->start());
  input.deliver(nextSamples(samplesPerChunk));
  mainThread.drain();
  EXPECT_FALSE(recorder->isRecording());
}

// The live feed, and the end of the recorder

TEST_F(AudioRecorderLevelsTest, TheSinkHearsEveryConvertedByteWhileItIsSet) {
  QByteArray heard;
  recorder->setPcmSink([&heard](std::span<const std::byte> bytes) {
    heard.append(reinterpret_cast<const char*>(bytes.data()), static_cast<qsizetype>(bytes.size()));
  });
  ASSERT_TRUE(recorder->start());
  record(5000);
  recorder->setPcmSink(nullptr);
  record(5000);
  EXPECT_EQ(heard, deliveredBytes(0, 5000));
  EXPECT_EQ(recorder->stop().value().wavData->size(), 44 + 20'000);
}

TEST_F(AudioRecorderLevelsTest, ARecorderThatGoesEndsTheCaptureAndWhatItPosted) {
  ASSERT_TRUE(recorder->start());
  input.deliver(nextSamples(samplesPerChunk));
  recorder.reset();
  EXPECT_FALSE(input.isCapturing());
  clock.advance(1s);
  EXPECT_THAT(chunks, IsEmpty());
  EXPECT_THAT(levels, IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0U);
}

}  // namespace
}  // namespace vemo
