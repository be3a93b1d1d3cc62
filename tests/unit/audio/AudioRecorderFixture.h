// A recorder on a microphone that a test speaks into.
#pragma once

#include <gmock/gmock.h>

#include <QFile>
#include <QTemporaryDir>
#include <numbers>
#include <random>

#include "audio/AudioRecorder.h"
#include "audio/WavFile.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Samples = std::vector<std::int16_t>;

inline constexpr std::size_t samplesPerChunk = 240'000;

struct Chunk {
  QByteArray wav;
  int index;
};

class AudioRecorderFixture : public testing::Test {
 protected:
  AudioRecorderFixture() {
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

}  // namespace vemo
