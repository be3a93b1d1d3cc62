// What a recording holds: chunks, tail, blocks.

#include "audio/AudioRecorderFixture.h"

namespace vemo {
namespace {

class AudioRecorderTest : public AudioRecorderFixture {};

TEST_F(AudioRecorderTest, AStopWithoutAStartReturnsNothing) {
  EXPECT_FALSE(recorder->stop());
  EXPECT_EQ(input.stopCount, 0);
}

TEST_F(AudioRecorderTest, AStopWithinTheFirstBufferReturnsNothing) {
  ASSERT_TRUE(recorder->start());
  EXPECT_TRUE(recorder->isRecording());
  EXPECT_FALSE(recorder->stop());
  EXPECT_FALSE(recorder->isRecording());
  EXPECT_FALSE(input.isCapturing());
}

TEST_F(AudioRecorderTest, OneSampleIsARecording) {
  ASSERT_TRUE(recorder->start());
  record(1);
  const auto result = recorder->stop();
  ASSERT_TRUE(result);
  EXPECT_EQ(pcmOf(*result->wavData), deliveredBytes(0, 1));
  EXPECT_EQ(result->totalDuration, 2 / 32000.0);
}

TEST_F(AudioRecorderTest, OneSampleBelow15SecondsMakesNoChunk) {
  ASSERT_TRUE(recorder->start());
  record(samplesPerChunk - 1);
  const auto result = recorder->stop();
  mainThread.drain();
  ASSERT_TRUE(result);
  EXPECT_THAT(chunks, IsEmpty());
  EXPECT_FALSE(result->isChunked);
  EXPECT_EQ(pcmOf(*result->wavData), deliveredBytes(0, samplesPerChunk - 1));
}

TEST_F(AudioRecorderTest, AudioOf14Point99SecondsComesBackWholeAndUnchunked) {
  ASSERT_TRUE(recorder->start());
  record(239'840);
  const auto result = recorder->stop();
  mainThread.drain();
  ASSERT_TRUE(result);
  EXPECT_THAT(chunks, IsEmpty());
  EXPECT_FALSE(result->isChunked);
  EXPECT_EQ(result->nextChunkIndex, 0);
  EXPECT_DOUBLE_EQ(result->totalDuration, 14.99);
  EXPECT_EQ(result->wavData->size(), 44 + 479'680);
  EXPECT_EQ(pcmOf(*result->wavData), deliveredBytes(0, 239'840));
}

TEST_F(AudioRecorderTest, Exactly480000BytesAreOneChunkAndNoTail) {
  ASSERT_TRUE(recorder->start());
  record(samplesPerChunk);
  const auto result = recorder->stop();
  ASSERT_TRUE(result);
  EXPECT_FALSE(result->wavData);
  EXPECT_TRUE(result->isChunked);
  EXPECT_EQ(result->nextChunkIndex, 1);
  EXPECT_EQ(result->totalDuration, 15.0);
  ASSERT_THAT(chunks, SizeIs(1));
  EXPECT_EQ(chunks[0].index, 0);
  EXPECT_EQ(pcmOf(chunks[0].wav), deliveredBytes(0, samplesPerChunk));
}

TEST_F(AudioRecorderTest, OneSampleMoreThan15SecondsIsTheTail) {
  ASSERT_TRUE(recorder->start());
  record(samplesPerChunk + 1);
  const auto result = recorder->stop();
  ASSERT_TRUE(result);
  EXPECT_EQ(pcmOf(result->wavData.value()), deliveredBytes(samplesPerChunk, 1));
  EXPECT_EQ(result->nextChunkIndex, 1);
}

TEST_F(AudioRecorderTest, AudioOf31SecondsIsTwoChunksAndATailOfOneSecond) {
  ASSERT_TRUE(recorder->start());
  record(31 * 16000);
  const auto result = recorder->stop();
  ASSERT_THAT(chunks, SizeIs(2));
  EXPECT_EQ(chunks[0].index, 0);
  EXPECT_EQ(chunks[1].index, 1);
  EXPECT_EQ(pcmOf(chunks[0].wav), deliveredBytes(0, samplesPerChunk));
  EXPECT_EQ(pcmOf(chunks[1].wav), deliveredBytes(samplesPerChunk, samplesPerChunk));
  ASSERT_TRUE(result);
  EXPECT_TRUE(result->isChunked);
  EXPECT_EQ(result->nextChunkIndex, 2);
  EXPECT_EQ(result->totalDuration, 31.0);
  EXPECT_EQ(pcmOf(result->wavData.value()), deliveredBytes(2 * samplesPerChunk, 16000));
}

TEST_F(AudioRecorderTest, ABacklogDrainsAtOneChunkABuffer) {
  ASSERT_TRUE(recorder->start());
  input.deliver(nextSamples(3 * samplesPerChunk));
  mainThread.drain();
  EXPECT_THAT(chunks, SizeIs(1));
  input.deliver(nextSamples(1));
  input.deliver(nextSamples(1));
  mainThread.drain();
  EXPECT_THAT(chunks, SizeIs(3));
  const auto result = recorder->stop();
  EXPECT_EQ(pcmOf(result.value().wavData.value()), deliveredBytes(3 * samplesPerChunk, 2));
}

TEST_F(AudioRecorderTest, ABacklogAtTheStopIsInTheTail) {
  ASSERT_TRUE(recorder->start());
  input.deliver(nextSamples(2 * samplesPerChunk + 5));
  mainThread.drain();
  const auto result = recorder->stop();
  EXPECT_THAT(chunks, SizeIs(1));
  EXPECT_EQ(result.value().nextChunkIndex, 1);
  EXPECT_EQ(pcmOf(result.value().wavData.value()),
            deliveredBytes(samplesPerChunk, samplesPerChunk + 5));
}

TEST_F(AudioRecorderTest, ChunksAndTailTileTheRecordingWhateverTheBlocks) {
  std::mt19937 random(1);
  for (int round = 0; round < 8; ++round) {
    chunks.clear();
    delivered.clear();
    ASSERT_TRUE(recorder->start());
    const std::size_t total = random() % (4 * samplesPerChunk);
    while (delivered.size() < total) input.deliver(nextSamples(random() % 8192));
    mainThread.drain();
    const auto result = recorder->stop();

    QByteArray joined;
    for (std::size_t i = 0; i < chunks.size(); ++i) {
      EXPECT_EQ(chunks[i].index, static_cast<int>(i));
      EXPECT_EQ(chunks[i].wav.size(), 480'044);
      joined += pcmOf(chunks[i].wav);
    }
    ASSERT_EQ(result.has_value(), !delivered.empty());
    if (!result) continue;
    if (result->wavData) joined += pcmOf(*result->wavData);
    EXPECT_EQ(joined, deliveredBytes(0, delivered.size()));
    EXPECT_EQ(result->nextChunkIndex, static_cast<int>(chunks.size()));
    EXPECT_EQ(result->isChunked, !chunks.empty());
    EXPECT_DOUBLE_EQ(result->totalDuration, static_cast<double>(delivered.size()) / 16000);
  }
}

TEST_F(AudioRecorderTest, ASecondStartWhileRecordingChangesNothing) {
  ASSERT_TRUE(recorder->start());
  record(100);
  ASSERT_TRUE(recorder->start());
  EXPECT_EQ(input.prepareCount, 1);
  EXPECT_EQ(input.startCount, 1);
  record(100);
  EXPECT_EQ(pcmOf(recorder->stop().value().wavData.value()), deliveredBytes(0, 200));
}

TEST_F(AudioRecorderTest, ASecondRecordingBeginsFromNothing) {
  ASSERT_TRUE(recorder->start());
  record(samplesPerChunk + 10);
  recorder->stop();
  chunks.clear();
  delivered.clear();
  ASSERT_TRUE(recorder->start());
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
  record(20);
  const auto result = recorder->stop();
  EXPECT_THAT(chunks, IsEmpty());
  EXPECT_FALSE(result.value().isChunked);
  EXPECT_EQ(result.value().nextChunkIndex, 0);
  EXPECT_EQ(pcmOf(result.value().wavData.value()), deliveredBytes(0, 20));
}

TEST_F(AudioRecorderTest, AChunkMayArriveAfterTheStop) {
  ASSERT_TRUE(recorder->start());
  for (int i = 0; i < 59; ++i) input.deliver(nextSamples(4096));
  EXPECT_THAT(chunks, IsEmpty());
  recorder->stop();
  mainThread.drain();
  EXPECT_THAT(chunks, SizeIs(1));
}

TEST_F(AudioRecorderTest, NeitherCallbackRunsOnTheCaptureThread) {
  ASSERT_TRUE(recorder->start());
  input.deliver(nextSamples(samplesPerChunk));
  EXPECT_THAT(chunks, IsEmpty());
  EXPECT_THAT(levels, IsEmpty());
}

TEST_F(AudioRecorderTest, WithoutCallbacksARecordingWorks) {
  recorder->onAudioChunk = nullptr;
  recorder->onLevel = nullptr;
  ASSERT_TRUE(recorder->start());
  record(samplesPerChunk + 1);
  clock.advance(1s);
  EXPECT_TRUE(recorder->stop().value().isChunked);
}

TEST_F(AudioRecorderTest, ABlockThatComesWhileStoppingIsLeftOut) {
  ASSERT_TRUE(recorder->start());
  record(100);
  input.beforeStop = [this] { input.deliver(Samples(50, 1)); };
  EXPECT_EQ(pcmOf(recorder->stop().value().wavData.value()), deliveredBytes(0, 100));
}

TEST_F(AudioRecorderTest, BlocksOfAnotherFormatAreDroppedInSilence) {
  ASSERT_TRUE(recorder->start());
  record(100);
  input.deliver(Samples(50, 9), {44100, 1, SampleType::Int16});
  input.deliver(Samples(50, 9), {16000, 2, SampleType::Int16});
  input.deliver(Samples(50, 9), {16000, 1, SampleType::Float32});
  input.deliver(Samples{});
  record(100);
  EXPECT_EQ(pcmOf(recorder->stop().value().wavData.value()), deliveredBytes(0, 200));
  EXPECT_EQ(input.prepareCount, 1);
}

TEST_F(AudioRecorderTest, TheDefaultDeviceOfEachStartIsUsed) {
  ASSERT_TRUE(recorder->start());
  record(100);
  recorder->stop();
  const AudioFormat stereo{48000, 2, SampleType::Int16};
  input.formats = {stereo, stereo};
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(2 * 48000, 1000), stereo);
  const auto result = recorder->stop();
  EXPECT_EQ(input.prepareCount, 2);
  EXPECT_NEAR(result.value().totalDuration, 1.0, 0.01);
}

TEST_F(AudioRecorderTest, FloatFramesAreConverted) {
  const AudioFormat format{48000, 2, SampleType::Float32};
  input.formats = {format, format};
  ASSERT_TRUE(recorder->start());
  const std::vector<float> frames(2 * 4800, 0.5F);
  for (int i = 0; i < 20; ++i) input.deliver({format, std::as_bytes(std::span(frames))});
  const auto result = recorder->stop();
  EXPECT_NEAR(result.value().totalDuration, 2.0, 0.01);
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
}

}  // namespace
}  // namespace vemo
