// Records the default microphone as speech-format PCM, hands out a WAV of every completed 15 s
// while the recording runs, meters the level, and at the stop returns what has not been handed out.
//
// start(), stop() and the two main-thread callbacks belong to the main thread; the tap runs on the
// capture thread. `m_lock` guards the recording, `m_levelLock` the two levels, so that reading a
// level never waits for an append. The tap posts to the main thread and never waits for it; a chunk
// may so arrive after the stop. setPcmSink's callback is the one that runs on the capture thread,
// under the lock: it must return at once and must not call the recorder.
//
// AppState owns the one recorder. Destroying it ends a recording under way; what it has posted by
// then does nothing. Only start() can fail: during a recording, a block that can't be converted is
// left out in silence.
#pragma once

#include <QByteArray>
#include <atomic>
#include <cstddef>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <span>

#include "audio/AudioError.h"
#include "audio/PcmBuffer.h"
#include "audio/SampleConverter.h"
#include "base/Clock.h"
#include "base/MainThread.h"
#include "base/TaskScope.h"
#include "ports/AudioInput.h"
#include "storage/DebugLog.h"

namespace vemo {

/// What a stopped recording hands over.
struct AudioStopResult {
  /// The whole recording as WAV if no chunk went out, else the tail after the last chunk; absent if
  /// that stretch is empty.
  std::optional<QByteArray> wavData;
  bool isChunked = false;
  int nextChunkIndex = 0;    ///< the index that the tail takes; 0 when not chunked
  double totalDuration = 0;  ///< seconds
};

class AudioRecorder {
 public:
  /// 15 s of audio.
  static constexpr std::size_t chunkSize = 480'000;

  using PcmSink = std::function<void(std::span<const std::byte>)>;

  /// All four outlive the recorder.
  AudioRecorder(AudioInput& input, MainThread& mainThread, Clock& clock, DebugLog& debugLog);
  ~AudioRecorder();
  AudioRecorder(const AudioRecorder&) = delete;
  AudioRecorder& operator=(const AudioRecorder&) = delete;

  /// Begins a recording; does nothing when one is running.
  std::expected<void, AudioStartError> start();

  /// Ends the recording. Nothing when none was running or it captured no sample.
  std::optional<AudioStopResult> stop();

  bool isRecording() const;

  /// The highest meter value of this recording; stays after the stop.
  float peakLevel() const;

  /// A live feed of the converted PCM, for a streaming session.
  void setPcmSink(PcmSink sink);

  /// Set once by the owner; called on the main thread.
  std::function<void(float level)> onLevel;                     ///< 20 times a second
  std::function<void(QByteArray wav, int index)> onAudioChunk;  ///< once per completed 15 s

 private:
  using Samples = std::span<const speechFormat::Sample>;
  struct Chunk {
    QByteArray wav;
    int index;
  };

  void clearRecording();
  void endCapture();
  void handleBlock(const AudioBlock& block, const AudioFormat& nodeFormat);
  std::optional<Chunk> retain(Samples samples);
  std::optional<Chunk> takeCompletedChunk();
  void postChunk(Chunk chunk);
  void meter(Samples samples);
  Task<> postLevels(std::stop_token stop);

  AudioInput& m_input;
  MainThread& m_mainThread;
  Clock& m_clock;
  DebugLog& m_debugLog;

  mutable std::mutex m_lock;
  std::shared_ptr<SampleConverter> m_converter;
  PcmBuffer m_pcmData;
  std::size_t m_chunkOffset = 0;  ///< bytes of m_pcmData already handed out
  int m_chunkIndex = 0;           ///< index of the next chunk
  bool m_hasEmittedChunks = false;
  PcmSink m_pcmSink;
  bool m_isRecording = false;

  std::optional<Clock::MonotonicTime> m_lastLevelPost;  ///< capture thread only

  mutable std::mutex m_levelLock;
  float m_latestLevel = 0;
  float m_peakLevel = 0;

  std::optional<TaskScope> m_levelTimer;   ///< exists while recording
  std::shared_ptr<AudioRecorder*> m_self;  ///< lets posted work see that the recorder has gone
};

}  // namespace vemo
