#include "audio/AudioRecorder.h"

#include <algorithm>
#include <utility>

#include "audio/LevelMeter.h"
#include "audio/WavFile.h"

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace vemo {

namespace {

constexpr auto levelInterval = 50ms;

bool hasSameShape(const AudioFormat& one, const AudioFormat& other) {
  return one.sampleRate == other.sampleRate && one.channels == other.channels;
}

QString formatMismatchLine(const AudioInput::Formats& formats) {
  return u"audio: format mismatch — hw %1Hz/%2ch vs node %3Hz/%4ch"_s
      .arg(formats.hardware.sampleRate)
      .arg(formats.hardware.channels)
      .arg(formats.node.sampleRate)
      .arg(formats.node.channels);
}

}  // namespace

AudioRecorder::AudioRecorder(AudioInput& input, MainThread& mainThread, Clock& clock,
                             DebugLog& debugLog)
    : m_input(input),
      m_mainThread(mainThread),
      m_clock(clock),
      m_debugLog(debugLog),
      m_self(std::make_shared<AudioRecorder*>(this)) {}

AudioRecorder::~AudioRecorder() {
  *m_self = nullptr;
  m_input.stop();
}

std::expected<void, AudioStartError> AudioRecorder::start() {
  if (isRecording()) return {};
  clearRecording();

  const auto formats = m_input.prepare();
  if (!formats) return std::unexpected(AudioStartError{{}, formats.error().message});
  const AudioFormat node = formats->node;
  if (!(node.sampleRate > 0) || node.channels <= 0)
    return std::unexpected(AudioStartError::of(AudioError::NoInputDevice));
  if (!hasSameShape(formats->hardware, node)) {
    m_debugLog(formatMismatchLine(*formats));
    return std::unexpected(AudioStartError::of(AudioError::FormatMismatch));
  }
  std::shared_ptr<SampleConverter> converter = SampleConverter::create(node);
  if (!converter) return std::unexpected(AudioStartError::of(AudioError::ConverterUnavailable));

  {
    const std::lock_guard lock(m_lock);
    m_converter = std::move(converter);
    m_isRecording = true;
  }
  const auto started =
      m_input.start([this, node](const AudioBlock& block) { handleBlock(block, node); });
  if (!started) {
    m_input.stop();
    const std::lock_guard lock(m_lock);
    m_isRecording = false;
    m_converter.reset();
    return std::unexpected(AudioStartError{{}, started.error().message});
  }
  m_levelTimer.emplace(m_mainThread);
  m_levelTimer->start([this](std::stop_token stop) { return postLevels(std::move(stop)); });
  return {};
}

std::optional<AudioStopResult> AudioRecorder::stop() {
  {
    const std::lock_guard lock(m_lock);
    if (!m_isRecording) return std::nullopt;
    m_isRecording = false;
  }
  endCapture();

  const std::lock_guard lock(m_lock);
  m_converter.reset();
  const std::size_t length = m_pcmData.size();
  if (length == 0) return std::nullopt;

  AudioStopResult result;
  const std::size_t tail = length - m_chunkOffset;
  if (tail > 0) result.wavData = wavFile(m_pcmData, m_chunkOffset, tail);
  result.isChunked = m_hasEmittedChunks;
  result.nextChunkIndex = m_chunkIndex;
  result.totalDuration = static_cast<double>(length) / speechFormat::bytesPerSecond;
  // Nothing of what was said is kept while nobody speaks.
  m_pcmData.clear();
  return result;
}

bool AudioRecorder::isRecording() const {
  const std::lock_guard lock(m_lock);
  return m_isRecording;
}

float AudioRecorder::peakLevel() const {
  const std::lock_guard lock(m_levelLock);
  return m_peakLevel;
}

void AudioRecorder::setPcmSink(PcmSink sink) {
  // Swapped, so that the old sink is destroyed outside the lock.
  const std::lock_guard lock(m_lock);
  std::swap(m_pcmSink, sink);
}

void AudioRecorder::clearRecording() {
  {
    const std::lock_guard lock(m_lock);
    m_pcmData.clear();
    m_chunkOffset = 0;
    m_chunkIndex = 0;
    m_hasEmittedChunks = false;
  }
  const std::lock_guard lock(m_levelLock);
  m_latestLevel = 0;
  m_peakLevel = 0;
}

void AudioRecorder::endCapture() {
  m_levelTimer.reset();
  {
    const std::lock_guard lock(m_levelLock);
    m_latestLevel = 0;
  }
  m_input.stop();
}

void AudioRecorder::handleBlock(const AudioBlock& block, const AudioFormat& nodeFormat) {
  if (block.format != nodeFormat) return;  // the device has changed: nothing more accumulates
  std::shared_ptr<SampleConverter> converter;
  {
    const std::lock_guard lock(m_lock);
    if (!m_isRecording || !m_converter) return;
    converter = m_converter;
  }
  const Samples samples = converter->convert(block.frames);
  if (samples.empty()) return;
  if (auto chunk = retain(samples)) postChunk(std::move(*chunk));
  meter(samples);
}

std::optional<AudioRecorder::Chunk> AudioRecorder::retain(Samples samples) {
  const auto bytes = std::as_bytes(samples);
  const std::lock_guard lock(m_lock);
  if (!m_isRecording || !m_pcmData.append(bytes)) return std::nullopt;
  if (m_pcmSink) m_pcmSink(bytes);
  return takeCompletedChunk();
}

std::optional<AudioRecorder::Chunk> AudioRecorder::takeCompletedChunk() {
  if (m_pcmData.size() - m_chunkOffset < chunkSize) return std::nullopt;
  Chunk chunk{wavFile(m_pcmData, m_chunkOffset, chunkSize), m_chunkIndex};
  m_chunkOffset += chunkSize;
  ++m_chunkIndex;
  m_hasEmittedChunks = true;
  return chunk;
}

void AudioRecorder::postChunk(Chunk chunk) {
  m_mainThread.post([self = m_self, chunk = std::move(chunk)] {
    if (*self && (*self)->onAudioChunk) (*self)->onAudioChunk(chunk.wav, chunk.index);
  });
}

void AudioRecorder::meter(Samples samples) {
  const Clock::MonotonicTime now = m_clock.monotonicTime();
  if (m_lastLevelPost && now - *m_lastLevelPost < levelInterval) return;
  m_lastLevelPost = now;
  const float level = meterLevel(samples);
  const std::lock_guard lock(m_levelLock);
  m_latestLevel = level;
  m_peakLevel = std::max(m_peakLevel, level);
}

/// Each level is passed on by work of its own: the callback may stop the recording, and a scope
/// must not be destroyed by its own task.
Task<> AudioRecorder::postLevels(std::stop_token stop) {
  while (co_await m_clock.sleep(levelInterval, stop) == SleepEnd::Elapsed) {
    m_levelLock.lock();
    const float level = m_latestLevel;
    m_levelLock.unlock();
    m_mainThread.post([self = m_self, level] {
      if (*self && (*self)->onLevel) (*self)->onLevel(level);
    });
  }
}

}  // namespace vemo
