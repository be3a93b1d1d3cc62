#include "platform/pulse/PulseAudioInput.h"

#include <QCoreApplication>
#include <algorithm>
#include <utility>

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace vemo {

namespace {

constexpr auto longestPreparation = 2s;
constexpr auto blockDuration = 20ms;
constexpr std::size_t greatestBlock = 4096;  ///< frames

QString messageOf(PulseError error) {
  switch (error) {
    case PulseError::NotReachable:
    case PulseError::ConnectionLost:
      return QCoreApplication::translate("Dictation", "Sound server not available");
    case PulseError::NotAnswering:
      return QCoreApplication::translate("Dictation", "Sound server not answering");
  }
  std::unreachable();
}

std::unexpected<AudioInputError> microphoneIsGone() {
  return std::unexpected(
      AudioInputError{QCoreApplication::translate("Dictation", "Microphone changed — try again")});
}

/// What fits 16 bits comes as such; everything finer as floats.
SampleType sampleTypeFor(pa_sample_format_t format) {
  switch (format) {
    case PA_SAMPLE_U8:
    case PA_SAMPLE_ALAW:
    case PA_SAMPLE_ULAW:
    case PA_SAMPLE_S16LE:
    case PA_SAMPLE_S16BE:
      return SampleType::Int16;
    default:
      return SampleType::Float32;
  }
}

AudioFormat formatOf(const pa_sample_spec& spec) {
  return {static_cast<double>(spec.rate), spec.channels, sampleTypeFor(spec.format)};
}

pa_sample_spec sampleSpecOf(const AudioFormat& format) {
  return {.format = format.sampleType == SampleType::Int16 ? PA_SAMPLE_S16NE : PA_SAMPLE_FLOAT32NE,
          .rate = static_cast<std::uint32_t>(format.sampleRate),
          .channels = static_cast<std::uint8_t>(format.channels)};
}

/// Without a fragment size the server collects two seconds before it sends anything.
pa_buffer_attr bufferFor(const AudioFormat& format) {
  const auto frames = static_cast<std::size_t>(
      format.sampleRate * std::chrono::duration<double>(blockDuration).count());
  const std::size_t bytes = std::min(frames, greatestBlock) * bytesPerFrame(format);
  constexpr auto byDefault = static_cast<std::uint32_t>(-1);
  return {.maxlength = byDefault,
          .tlength = byDefault,
          .prebuf = byDefault,
          .minreq = byDefault,
          .fragsize = static_cast<std::uint32_t>(bytes)};
}

/// The source's format as the server answers it, after the stream was attached.
struct FormatAnswer {
  PulseServer& server;
  AudioFormat format;
  bool isComplete = false;
};

void takeFormat(pa_context*, const pa_source_info* info, int end, void* data) {
  auto& answer = *static_cast<FormatAnswer*>(data);
  if (end) {
    answer.isComplete = true;
    answer.server.wake();
  } else {
    answer.format = formatOf(info->sample_spec);
  }
}

}  // namespace

std::expected<AudioInput::Formats, AudioInputError> PulseAudioInput::prepare() {
  stop();
  const PulseServer::Deadline deadline = PulseServer::within(longestPreparation);
  const auto microphone = lookUpMicrophone(m_server, deadline);
  if (!microphone) return giveUp(microphone.error());
  if (!*microphone) return Formats{};

  if (!openStream(**microphone)) {
    stop();
    return microphoneIsGone();
  }
  const auto hardware = awaitStream(**microphone, deadline);
  if (!hardware) return std::unexpected(hardware.error());
  return Formats{.node = m_format, .hardware = *hardware};
}

std::expected<void, AudioInputError> PulseAudioInput::start(BlockHandler handler) {
  const PulseServer::Lock lock(m_server);
  if (!isStreamIn(PA_STREAM_READY)) return microphoneIsGone();
  m_handler = std::move(handler);
  pa_operation* const flowing = pa_stream_cork(m_stream, 0, nullptr, nullptr);
  if (!flowing) return microphoneIsGone();
  pa_operation_unref(flowing);
  return {};
}

void PulseAudioInput::stop() {
  const PulseServer::Lock lock(m_server);
  m_handler = nullptr;
  if (!m_stream) return;
  pa_stream_set_state_callback(m_stream, nullptr, nullptr);
  pa_stream_set_read_callback(m_stream, nullptr, nullptr);
  pa_stream_disconnect(m_stream);
  pa_stream_unref(std::exchange(m_stream, nullptr));
}

bool PulseAudioInput::openStream(const PulseSource& source) {
  const PulseServer::Lock lock(m_server);
  if (!m_server.isAlive()) return false;
  m_format = formatOf(source.sampleSpec);
  const pa_sample_spec spec = sampleSpecOf(m_format);
  m_stream = pa_stream_new(m_server.context(), "Dictation", &spec, &source.channelMap);
  if (!m_stream) return false;
  pa_stream_set_state_callback(
      m_stream,
      [](pa_stream*, void* self) { static_cast<PulseAudioInput*>(self)->m_server.wake(); }, this);
  pa_stream_set_read_callback(
      m_stream,
      [](pa_stream*, std::size_t, void* self) {
        static_cast<PulseAudioInput*>(self)->readBlocks();
      },
      this);
  const pa_buffer_attr buffer = bufferFor(m_format);
  constexpr auto flags = static_cast<pa_stream_flags_t>(
      PA_STREAM_START_CORKED | PA_STREAM_DONT_MOVE | PA_STREAM_ADJUST_LATENCY);
  return pa_stream_connect_record(m_stream, source.name.c_str(), &buffer, flags) == 0;
}

std::expected<AudioFormat, AudioInputError> PulseAudioInput::awaitStream(
    const PulseSource& source, PulseServer::Deadline deadline) {
  FormatAnswer answer{.server = m_server, .format = {}};
  PulseOperation question;
  {
    // The server answers in order: what it says here, it says with the stream attached.
    const PulseServer::Lock lock(m_server);
    if (m_server.isAlive())
      question.reset(pa_context_get_source_info_by_name(m_server.context(), source.name.c_str(),
                                                        takeFormat, &answer));
  }
  const bool isDecided = m_server.waitUntil(deadline, [&] {
    if (isStreamIn(PA_STREAM_FAILED) || isStreamIn(PA_STREAM_TERMINATED)) return true;
    return answer.isComplete && isStreamIn(PA_STREAM_READY);
  });

  bool isReady = false;
  {
    const PulseServer::Lock lock(m_server);
    question.reset();
    isReady = isStreamIn(PA_STREAM_READY);
  }
  if (!isDecided) return giveUp(PulseError::NotAnswering);
  if (isReady) return answer.format;
  stop();
  return microphoneIsGone();
}

/// A server that fell silent may never speak on this connection again.
std::unexpected<AudioInputError> PulseAudioInput::giveUp(PulseError error) {
  stop();
  m_server.disconnect();
  return std::unexpected(AudioInputError{messageOf(error)});
}

bool PulseAudioInput::isStreamIn(pa_stream_state_t state) const {
  return m_stream && pa_stream_get_state(m_stream) == state;
}

void PulseAudioInput::readBlocks() {
  while (pa_stream_readable_size(m_stream) > 0) {
    const void* data = nullptr;
    std::size_t size = 0;
    if (pa_stream_peek(m_stream, &data, &size) < 0 || size == 0) return;
    if (data) deliver(std::span(static_cast<const std::byte*>(data), size));  // else it is a hole
    pa_stream_drop(m_stream);
  }
}

void PulseAudioInput::deliver(std::span<const std::byte> frames) const {
  if (!m_handler) return;
  const std::size_t frameSize = bytesPerFrame(m_format);
  while (frames.size() >= frameSize) {
    const std::size_t count = std::min(frames.size() / frameSize, greatestBlock);
    m_handler({m_format, frames.first(count * frameSize)});
    frames = frames.subspan(count * frameSize);
  }
}

}  // namespace vemo
