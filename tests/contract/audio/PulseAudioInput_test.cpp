// The microphone through a real sound server that does everything a sound server may do.
#include "platform/pulse/PulseAudioInput.h"

#include <gmock/gmock.h>

#include "BlockCollector.h"
#include "SoundServer.h"
#include "audio/AudioRecorder.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "platform/pulse/PulseInputDevice.h"

using namespace Qt::Literals::StringLiterals;

namespace vemo {
namespace {

class PulseAudioInputTest : public testing::Test {
 protected:
  /// Starts the recorder, lets half a second come in and returns what it then hands over.
  std::optional<AudioStopResult> recordHalfASecond() {
    const auto started = recorder.start();
    EXPECT_TRUE(started) << (started ? "" : started.error().errorDescription.toStdString());
    if (!started) return std::nullopt;
    waitForSeconds(0.5);
    return recorder.stop();
  }

  void waitForSeconds(double seconds) {
    std::unique_lock lock(mutex);
    const double goal = heardSeconds + seconds;
    EXPECT_TRUE(
        heardMore.wait_for(lock, std::chrono::seconds(20), [&] { return heardSeconds >= goal; }));
  }

  template <typename Call>
  void timed(Call call) {
    const auto start = std::chrono::steady_clock::now();
    call();
    longestCall = std::max(longestCall, std::chrono::steady_clock::now() - start);
  }

  /// Whether each timed call of the scene ends within the port's two seconds, with some grace for a
  /// loaded machine, and another try for one that stands still.
  template <typename Scene>
  bool isPrompt(Scene scene) {
    for (int tries = 3; tries > 0; --tries) {
      longestCall = {};
      scene();
      if (longestCall < std::chrono::milliseconds(2500)) return true;
    }
    return false;
  }

  void SetUp() override {
    recorder.setPcmSink([this](std::span<const std::byte> bytes) {
      {
        const std::lock_guard lock(mutex);
        heardSeconds += static_cast<double>(bytes.size()) / 32000;
      }
      heardMore.notify_all();
    });
  }

  std::mutex mutex;
  std::condition_variable heardMore;
  double heardSeconds = 0;
  std::chrono::steady_clock::duration longestCall{};

  SoundServer soundServer;
  PulseServer server{"Vemo", "brelmox.Vemo"};
  PulseAudioInput input{server};
  PulseInputDevice device{server};
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  DebugLog log{clock, {}};
  AudioRecorder recorder{input, mainThread, clock, log};
};

TEST_F(PulseAudioInputTest, ASoundIsHeard) {
  soundServer.start();
  soundServer.load(u"module-sine sink=mic frequency=440"_s);
  BlockCollector blocks;
  ASSERT_TRUE(input.prepare());
  ASSERT_TRUE(input.start(blocks.handler()));
  EXPECT_TRUE(blocks.waitForSound());
}

TEST_F(PulseAudioInputTest, TheSourcesOwnRateAndChannelsAreTaken) {
  soundServer.start();
  struct Case {
    QString arguments;
    AudioFormat expected;
  };
  for (const Case& one :
       {Case{u"format=s16le rate=44100 channels=2"_s, {44100, 2, SampleType::Int16}},
        Case{u"format=float32le rate=48000 channels=1"_s, {48000, 1, SampleType::Float32}},
        Case{u"format=s32le rate=96000 channels=4"_s, {96000, 4, SampleType::Float32}},
        Case{u"format=u8 rate=8000 channels=1"_s, {8000, 1, SampleType::Int16}},
        Case{u"format=s16le rate=16000 channels=1"_s, {16000, 1, SampleType::Int16}},
        Case{u"format=float32le rate=192000 channels=2"_s, {192000, 2, SampleType::Float32}}}) {
    const QString sink =
        soundServer.load(u"module-null-sink norewinds=1 sink_name=other "_s + one.arguments);
    const QString source =
        soundServer.load(u"module-remap-source master=other.monitor source_name=othermic"_s);
    soundServer.control({u"set-default-source"_s, u"othermic"_s});
    const auto formats = input.prepare();
    ASSERT_TRUE(formats) << formats.error().message.toStdString();
    EXPECT_EQ(formats->node, one.expected) << one.arguments.toStdString();
    EXPECT_EQ(formats->hardware.sampleRate, formats->node.sampleRate);
    const auto result = recordHalfASecond();
    EXPECT_GE(result.value().totalDuration, 0.5);
    soundServer.control({u"unload-module"_s, source});
    soundServer.control({u"unload-module"_s, sink});
  }
}

TEST_F(PulseAudioInputTest, BlocksAreShortEnoughForAQuickStart) {
  soundServer.start();
  BlockCollector blocks;
  const auto formats = input.prepare();
  ASSERT_TRUE(input.start(blocks.handler()));
  EXPECT_TRUE(blocks.waitForFrames(20'000));
  input.stop();
  EXPECT_LE(static_cast<double>(blocks.greatestBlock()), formats->node.sampleRate * 0.040);
}

TEST_F(PulseAudioInputTest, ADefaultThatChangesIsPickedUpAtTheNextStart) {
  soundServer.start();
  ASSERT_TRUE(recordHalfASecond());
  soundServer.load(u"module-null-sink norewinds=1 sink_name=other rate=32000 channels=1"_s);
  soundServer.load(u"module-remap-source master=other.monitor source_name=othermic"_s);
  ASSERT_TRUE(recorder.start());
  soundServer.control({u"set-default-source"_s, u"othermic"_s});
  waitForSeconds(0.2);  // the running capture stays where it is
  ASSERT_TRUE(recorder.stop());
  EXPECT_EQ(input.prepare()->node.sampleRate, 32000);
  EXPECT_TRUE(recordHalfASecond());
}

TEST_F(PulseAudioInputTest, AMonitorAsTheDefaultYieldsToAMicrophone) {
  soundServer.start();
  soundServer.control({u"set-default-source"_s, u"mic.monitor"_s});
  EXPECT_TRUE(recordHalfASecond());
  EXPECT_TRUE(soundServer.control({u"get-default-source"_s}).endsWith(u".monitor"_s));
}

TEST_F(PulseAudioInputTest, AMutedMicrophoneDeliversSilence) {
  soundServer.start();
  soundServer.load(u"module-sine sink=mic frequency=440"_s);
  soundServer.control({u"set-source-mute"_s, u"virtmic"_s, u"1"_s});
  const auto result = recordHalfASecond();
  ASSERT_TRUE(result);
  EXPECT_EQ(result->wavData->mid(44).count('\0'), result->wavData->size() - 44);
  EXPECT_EQ(recorder.peakLevel(), 0.0F);
}

TEST_F(PulseAudioInputTest, AMicrophoneThatVanishesWhileRecordingLeavesWhatWasSaid) {
  soundServer.start();
  ASSERT_TRUE(recorder.start());
  waitForSeconds(0.3);
  soundServer.control({u"unload-module"_s, u"module-remap-source"_s});
  EXPECT_TRUE(recorder.isRecording());
  EXPECT_GE(recorder.stop().value().totalDuration, 0.3);
  EXPECT_EQ(recorder.start().error().errorDescription, u"No microphone available"_s);
}

TEST_F(PulseAudioInputTest, AServerThatDiesWhileRecordingLeavesWhatWasSaidAndIsFoundAgain) {
  EXPECT_TRUE(isPrompt([this] {
    soundServer.start();
    ASSERT_TRUE(recorder.start());
    waitForSeconds(0.3);
    soundServer.kill();
    timed([this] { EXPECT_GE(recorder.stop().value().totalDuration, 0.3); });
    timed([this] {
      EXPECT_EQ(recorder.start().error().errorDescription, u"Sound server not available"_s);
    });
  }));
  soundServer.start();
  EXPECT_TRUE(recordHalfASecond());
}

TEST_F(PulseAudioInputTest, AServerThatWasRestartedBetweenRecordingsIsNotNoticed) {
  soundServer.start();
  ASSERT_TRUE(recordHalfASecond());
  soundServer.kill();
  soundServer.start();
  EXPECT_TRUE(recordHalfASecond());
}

TEST_F(PulseAudioInputTest, WithoutAServerTheStartFailsAtOnce) {
  EXPECT_TRUE(isPrompt([this] {
    timed([this] {
      EXPECT_EQ(recorder.start().error().errorDescription, u"Sound server not available"_s);
    });
  }));
  EXPECT_FALSE(recorder.isRecording());
  EXPECT_EQ(device.transport(), InputTransport::Other);
}

TEST_F(PulseAudioInputTest, AFrozenServerNeverHoldsUpTheProgram) {
  soundServer.start();
  EXPECT_TRUE(isPrompt([this] {
    ASSERT_TRUE(recorder.start());
    waitForSeconds(0.2);
    soundServer.freeze();
    timed([this] { EXPECT_EQ(device.transport(), InputTransport::Other); });
    timed([this] { EXPECT_TRUE(recorder.stop()); });
    timed([this] {
      EXPECT_EQ(recorder.start().error().errorDescription, u"Sound server not answering"_s);
    });
    timed([this] {
      EXPECT_EQ(recorder.start().error().errorDescription, u"Sound server not available"_s);
    });
    soundServer.thaw();
    EXPECT_TRUE(recordHalfASecond());
  }));
}

TEST_F(PulseAudioInputTest, AMicrophoneThatVanishesBetweenPrepareAndStartIsSaid) {
  soundServer.start();
  ASSERT_TRUE(input.prepare());
  soundServer.kill();
  server.waitUntil(PulseServer::within(std::chrono::seconds(20)),
                   [this] { return !server.isAlive(); });
  BlockCollector blocks;
  const auto started = input.start(blocks.handler());
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, u"Microphone changed — try again"_s);
}

TEST_F(PulseAudioInputTest, AMicrophoneMadeOfAnotherIsVirtual) {
  soundServer.start();
  EXPECT_EQ(device.transport(), InputTransport::Virtual);
}

TEST_F(PulseAudioInputTest, AMonitorAloneIsNoMicrophone) {
  soundServer.start();
  soundServer.control({u"unload-module"_s, u"module-remap-source"_s});
  EXPECT_EQ(recorder.start().error().errorDescription, u"No microphone available"_s);
  EXPECT_EQ(device.transport(), InputTransport::Other);
}

TEST_F(PulseAudioInputTest, TheTransportCanBeAskedWhileRecording) {
  soundServer.start();
  ASSERT_TRUE(recorder.start());
  EXPECT_EQ(device.transport(), InputTransport::Virtual);
  waitForSeconds(0.2);
  EXPECT_TRUE(recorder.stop());
}

}  // namespace
}  // namespace vemo
