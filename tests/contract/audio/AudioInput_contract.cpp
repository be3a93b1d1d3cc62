// What every audio input promises, held by the fake and by the real sound server.
#include <gmock/gmock.h>

#include <memory>
#include <thread>

#include "BlockCollector.h"
#include "SoundServer.h"
#include "fakes/FakeAudioInput.h"
#include "platform/pulse/PulseAudioInput.h"

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

namespace vemo {
namespace {

/// An input with a microphone that a test can take away.
class Microphone {
 public:
  virtual ~Microphone() = default;
  virtual AudioInput& input() = 0;
  virtual void vanish() = 0;
};

class ScriptedMicrophone : public Microphone {
 public:
  AudioInput& input() override { return m_input; }
  void vanish() override {
    m_delivery = {};
    m_input.formats = {};
  }

 private:
  FakeAudioInput m_input;
  std::jthread m_delivery{[this](std::stop_token stop) {
    const std::vector<std::int16_t> silence(480);
    while (!stop.stop_requested()) m_input.deliver(silence);
  }};
};

class PulseMicrophone : public Microphone {
 public:
  PulseMicrophone() { m_soundServer.start(); }
  AudioInput& input() override { return m_input; }
  void vanish() override { m_soundServer.control({u"unload-module"_s, u"module-remap-source"_s}); }

 private:
  SoundServer m_soundServer;
  PulseServer m_server{"Vemo", "brelmox.Vemo"};
  PulseAudioInput m_input{m_server};
};

using MakeMicrophone = std::unique_ptr<Microphone> (*)();

class AudioInputContract : public testing::TestWithParam<MakeMicrophone> {
 protected:
  AudioInput& input() { return microphone->input(); }

  BlockCollector blocks;  // outlives what delivers to it
  std::unique_ptr<Microphone> microphone = GetParam()();
};

TEST_P(AudioInputContract, AMicrophoneHasOneFormatWithARateAndChannels) {
  const auto formats = input().prepare();
  ASSERT_TRUE(formats);
  EXPECT_GT(formats->node.sampleRate, 0);
  EXPECT_GT(formats->node.channels, 0);
  EXPECT_EQ(formats->hardware.sampleRate, formats->node.sampleRate);
  EXPECT_EQ(formats->hardware.channels, formats->node.channels);
}

TEST_P(AudioInputContract, BlocksAreWholeFramesInTheNodeFormatOfAtMost4096) {
  const auto formats = input().prepare();
  ASSERT_TRUE(input().start(blocks.handler()));
  ASSERT_TRUE(blocks.waitForFrames(20'000));
  input().stop();
  EXPECT_THAT(blocks.formats(), ElementsAre(formats->node));
  EXPECT_LE(blocks.greatestBlock(), 4096U);
  EXPECT_FALSE(blocks.hadBrokenFrames());
}

TEST_P(AudioInputContract, NoHandlerRunsAfterTheStop) {
  for (int round = 0; round < 20; ++round) {
    ASSERT_TRUE(input().prepare());
    auto isListening = std::make_shared<std::atomic<bool>>(true);
    std::atomic<int> lateBlocks = 0;
    ASSERT_TRUE(input().start(
        [&lateBlocks, isListening, count = blocks.handler()](const AudioBlock& block) {
          if (!*isListening) ++lateBlocks;
          count(block);
        }));
    ASSERT_TRUE(blocks.waitForFrames(1));
    input().stop();
    *isListening = false;
    ASSERT_EQ(lateBlocks, 0);
  }
}

TEST_P(AudioInputContract, AStopIsHarmlessAtAnyTime) {
  input().stop();
  input().stop();
  ASSERT_TRUE(input().prepare());
  input().stop();
  ASSERT_TRUE(input().prepare());
  ASSERT_TRUE(input().start(blocks.handler()));
  input().stop();
  input().stop();
}

TEST_P(AudioInputContract, APrepareEndsTheCaptureUnderWay) {
  ASSERT_TRUE(input().prepare());
  ASSERT_TRUE(input().start(blocks.handler()));
  ASSERT_TRUE(blocks.waitForFrames(1));
  ASSERT_TRUE(input().prepare());
  const std::size_t heard = blocks.frameCount();
  BlockCollector later;
  ASSERT_TRUE(input().start(later.handler()));
  EXPECT_TRUE(later.waitForFrames(10'000));
  input().stop();
  EXPECT_EQ(blocks.frameCount(), heard);
}

TEST_P(AudioInputContract, RecordingsFollowEachOther) {
  for (int round = 0; round < 5; ++round) {
    ASSERT_TRUE(input().prepare());
    ASSERT_TRUE(input().start(blocks.handler()));
    EXPECT_TRUE(blocks.waitForFrames(1000));
    input().stop();
  }
}

TEST_P(AudioInputContract, AMicrophoneThatVanishesJustStopsDelivering) {
  ASSERT_TRUE(input().prepare());
  ASSERT_TRUE(input().start(blocks.handler()));
  ASSERT_TRUE(blocks.waitForFrames(1000));
  microphone->vanish();
  input().stop();
  EXPECT_THAT(blocks.formats(), testing::SizeIs(1));
}

TEST_P(AudioInputContract, WithoutAMicrophoneThereIsNoRateAndNoChannel) {
  microphone->vanish();
  const auto formats = input().prepare();
  ASSERT_TRUE(formats);
  EXPECT_EQ(formats->node.sampleRate, 0);
  EXPECT_EQ(formats->node.channels, 0);
}

template <typename T>
std::unique_ptr<Microphone> make() {
  return std::make_unique<T>();
}

INSTANTIATE_TEST_SUITE_P(Fake, AudioInputContract, testing::Values(&make<ScriptedMicrophone>));
INSTANTIATE_TEST_SUITE_P(Pulse, AudioInputContract, testing::Values(&make<PulseMicrophone>));

}  // namespace
}  // namespace vemo
