#include "audio/AudioRecorder.h"

#include <gmock/gmock.h>
#include <QFile>
#include <QTemporaryDir>

#include <numbers>
#include <random>

#include "audio/WavFile.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Samples = std::vector<std::int16_t>;

constexpr std::size_t samplesPerChunk = 240'000;

struct Chunk {
  QByteArray wav;
  int index;
};

class AudioRecorderTest : public testing::Test {
 protected:
  AudioRecorderTest() {
    recorder->onAudioChunk = [this](QByteArray wav, int index) { chunks.push_back({wav, index}); };
    recorder->onLevel = [this](float level) { levels.push_back(level); };
  }

  /// Speech-format samples that differ from place to place, and go on from call to call.
  Samples nextSamples(std::size_t count) {
    Samples samples(count);
    for (std::int16_t& sample : samples) sample = static_cast<std::int16_t>(next++ * 31);
    delivered.insert(delivered.end(), samples.begin(), samples.end());
    return samples;
  }

  /// Delivers `count` samples in blocks of 4096 frames, as a microphone does.
  void record(std::size_t count) {
    while (count > 0) {
      const std::size_t block = std::min<std::size_t>(count, 4096);
      ASSERT_TRUE(input.deliver(nextSamples(block)));
      count -= block;
    }
    mainThread.drain();
  }

  QByteArray deliveredBytes(std::size_t firstSample, std::size_t count) const {
    return {reinterpret_cast<const char*>(delivered.data() + firstSample),
            static_cast<qsizetype>(count * 2)};
  }

  static QByteArray pcmOf(const QByteArray& wav) { return wav.mid(wavHeaderSize); }

  QString logText() {
    log.waitUntilWritten();
    QFile file(logFolder.filePath(u"debug.log"_s));
    if (!file.open(QIODevice::ReadOnly)) return {};
    return QString::fromUtf8(file.readAll());
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  QTemporaryDir logFolder;
  DebugLog log{clock, logFolder.path()};
  FakeAudioInput input;
  std::unique_ptr<AudioRecorder> recorder =
      std::make_unique<AudioRecorder>(input, mainThread, clock, log);
  std::vector<Chunk> chunks;
  std::vector<float> levels;
  Samples delivered;
  unsigned next = 1;
};

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

// Failures of the start

TEST_F(AudioRecorderTest, WithoutASampleRateThereIsNoMicrophone) {
  input.formats = {{0, 1, SampleType::Float32}, {0, 1, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::NoInputDevice);
  EXPECT_EQ(started.error().errorDescription, u"No microphone available"_s);
  EXPECT_FALSE(recorder->isRecording());
  EXPECT_EQ(input.startCount, 0);
}

TEST_F(AudioRecorderTest, WithoutChannelsThereIsNoMicrophone) {
  input.formats = {{48000, 0, SampleType::Float32}, {48000, 0, SampleType::Float32}};
  EXPECT_EQ(recorder->start().error().reason, AudioError::NoInputDevice);
}

TEST_F(AudioRecorderTest, AnotherHardwareRateIsAFormatMismatch) {
  input.formats = {{48000, 2, SampleType::Float32}, {44100, 2, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::FormatMismatch);
  EXPECT_EQ(started.error().errorDescription, u"Microphone changed — try again"_s);
  EXPECT_TRUE(
      logText().contains(u"audio: format mismatch — hw 44100Hz/2ch vs node 48000Hz/2ch\n"_s));
  EXPECT_FALSE(recorder->isRecording());
}

TEST_F(AudioRecorderTest, AnotherHardwareChannelCountIsAFormatMismatch) {
  input.formats = {{48000, 1, SampleType::Float32}, {48000, 2, SampleType::Float32}};
  EXPECT_EQ(recorder->start().error().reason, AudioError::FormatMismatch);
}

TEST_F(AudioRecorderTest, AnotherHardwareSampleTypeIsNone) {
  input.formats = {{48000, 1, SampleType::Float32}, {48000, 1, SampleType::Int16}};
  EXPECT_TRUE(recorder->start());
}

TEST_F(AudioRecorderTest, AfterAMismatchTheNextAttemptStartsAfresh) {
  input.formats.hardware.sampleRate = 44100;
  ASSERT_FALSE(recorder->start());
  input.formats.hardware = input.formats.node;
  ASSERT_TRUE(recorder->start());
  EXPECT_EQ(input.prepareCount, 2);
  record(10);
  EXPECT_TRUE(recorder->stop());
}

TEST_F(AudioRecorderTest, AFormatThatCantBeConvertedIsSaid) {
  input.formats = {{5, 1, SampleType::Float32}, {5, 1, SampleType::Float32}};
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().reason, AudioError::ConverterUnavailable);
  EXPECT_EQ(started.error().errorDescription, u"Could not create the audio converter."_s);
}

TEST_F(AudioRecorderTest, TheTextForAMissingTargetFormatStands) {
  EXPECT_EQ(errorDescription(AudioError::FormatUnavailable),
            u"Could not create the target audio format."_s);
}

TEST_F(AudioRecorderTest, ThePlatformsWordsForAFailedPrepareReachTheCaller) {
  input.prepareError = u"out of sockets"_s;
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_FALSE(started.error().reason);
  EXPECT_EQ(started.error().errorDescription, u"out of sockets"_s);
  EXPECT_FALSE(recorder->isRecording());
}

TEST_F(AudioRecorderTest, AFailedStartOfTheCaptureLeavesNothingRunning) {
  input.startError = u"device busy"_s;
  const auto started = recorder->start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().errorDescription, u"device busy"_s);
  EXPECT_FALSE(recorder->isRecording());
  EXPECT_EQ(input.stopCount, 1);
  clock.advance(1s);
  EXPECT_THAT(levels, IsEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0U);
  EXPECT_FALSE(recorder->stop());

  input.startError.reset();
  EXPECT_TRUE(recorder->start());
}

TEST_F(AudioRecorderTest, AFailedStartForgetsTheRecordingBefore) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 32767));
  recorder->stop();
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
  input.prepareError = u"gone"_s;
  ASSERT_FALSE(recorder->start());
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
}

// Levels

TEST_F(AudioRecorderTest, AFullScaleSignalReadsOne) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 32767));
  clock.advance(50ms);
  EXPECT_EQ(recorder->peakLevel(), 1.0F);
  EXPECT_THAT(levels, ElementsAre(1.0F));
}

TEST_F(AudioRecorderTest, DigitalSilenceReadsZero) {
  ASSERT_TRUE(recorder->start());
  input.deliver(Samples(4096, 0));
  clock.advance(50ms);
  EXPECT_EQ(recorder->peakLevel(), 0.0F);
  EXPECT_THAT(levels, ElementsAre(0.0F));
}

TEST_F(AudioRecorderTest, LevelsComeTwentyTimesASecondAndOnlyWhileRecording) {
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

TEST_F(AudioRecorderTest, TheMeterIsReadAtMostEvery50Milliseconds) {
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

TEST_F(AudioRecorderTest, ThePeakIsTheHighestLevelAndStaysAfterTheStop) {
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

TEST_F(AudioRecorderTest, TheRecordingMayBeStoppedFromALevelOrAChunk) {
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

TEST_F(AudioRecorderTest, TheSinkHearsEveryConvertedByteWhileItIsSet) {
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

TEST_F(AudioRecorderTest, ARecorderThatGoesEndsTheCaptureAndWhatItPosted) {
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
