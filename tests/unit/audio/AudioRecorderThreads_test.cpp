// The recorder with a capture thread beside the main thread: what a race detector watches.
#include <gmock/gmock.h>

#include <atomic>
#include <thread>

#include "audio/AudioRecorder.h"
#include "audio/WavFile.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"

namespace vemo {
namespace {

using Samples = std::vector<std::int16_t>;

class AudioRecorderThreadsTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  DebugLog log{clock, {}};
  FakeAudioInput input;
  AudioRecorder recorder{input, mainThread, clock, log};
};

/// Delivers the same block over and over until it goes.
class CaptureThread {
 public:
  CaptureThread(FakeAudioInput& input, std::size_t samplesPerBlock)
      : m_thread([&input, samplesPerBlock](std::stop_token stop) {
          const Samples block(samplesPerBlock, 12345);
          while (!stop.stop_requested()) input.deliver(block);
        }) {}

 private:
  std::jthread m_thread;
};

TEST_F(AudioRecorderThreadsTest, RecordingsTileWhileTheCaptureThreadRuns) {
  std::size_t chunkBytes = 0;
  int chunkCount = 0;
  recorder.onAudioChunk = [&](QByteArray wav, int index) {
    EXPECT_EQ(index, chunkCount++);
    chunkBytes += static_cast<std::size_t>(wav.size()) - wavHeaderSize;
  };
  const CaptureThread capture(input, 4096);
  for (int round = 0; round < 5; ++round) {
    chunkBytes = 0;
    chunkCount = 0;
    ASSERT_TRUE(recorder.start());
    while (chunkCount < 2) mainThread.drain();
    const auto result = recorder.stop();
    mainThread.drain();
    ASSERT_TRUE(result);
    EXPECT_EQ(result->nextChunkIndex, chunkCount);
    const std::size_t tail =
        result->wavData ? static_cast<std::size_t>(result->wavData->size()) - wavHeaderSize : 0;
    EXPECT_EQ(result->totalDuration, static_cast<double>(chunkBytes + tail) / 32000);
  }
}

TEST_F(AudioRecorderThreadsTest, TheMainThreadMayReadAndSetWhileBlocksComeIn) {
  std::atomic<std::size_t> heard = 0;
  const CaptureThread capture(input, 512);
  ASSERT_TRUE(recorder.start());
  for (int i = 0; i < 200; ++i) {
    recorder.setPcmSink([&heard](std::span<const std::byte> bytes) { heard += bytes.size(); });
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_LE(recorder.peakLevel(), 1.0F);
    mainThread.drain();
    recorder.setPcmSink(nullptr);
    const std::size_t silentSince = heard;
    EXPECT_TRUE(recorder.isRecording());
    EXPECT_EQ(heard, silentSince);
  }
  recorder.stop();
}

TEST_F(AudioRecorderThreadsTest, ManyShortRecordingsStartAndStopUnderTheCaptureThread) {
  const CaptureThread capture(input, 64);
  for (int round = 0; round < 300; ++round) {
    ASSERT_TRUE(recorder.start());
    recorder.stop();
    mainThread.drain();
  }
}

TEST_F(AudioRecorderThreadsTest, ABlockIsTakenInWhileTheMainThreadIsBusy) {
  // Nothing drains the main queue here: the capture thread has to get by without it.
  ASSERT_TRUE(recorder.start());
  std::thread capture([this] {
    for (int i = 0; i < 200; ++i) input.deliver(Samples(4096, 1));
  });
  capture.join();
  EXPECT_EQ(recorder.stop().value().totalDuration, 200 * 4096 / 16000.0);
}

}  // namespace
}  // namespace vemo
