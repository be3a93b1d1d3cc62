// The default microphone through the sound server.
//
// Blocks arrive on libpulse's thread. prepare() opens a corked stream, so that the microphone's
// format is the one it has with this stream attached; start() lets it flow. The stream stays with
// its source: when that goes, or the server does, blocks stop coming and nothing else happens.
// Blocks are asked for every 20 ms, which is what a start has to wait for its first one.
#pragma once

#include <memory>

#include "platform/pulse/PulseServer.h"
#include "platform/pulse/PulseSource.h"
#include "ports/AudioInput.h"

namespace vemo {

class PulseAudioInput : public AudioInput {
 public:
  explicit PulseAudioInput(PulseServer& server) : m_server(server) {}
  ~PulseAudioInput() override { stop(); }
  PulseAudioInput(const PulseAudioInput&) = delete;
  PulseAudioInput& operator=(const PulseAudioInput&) = delete;

  std::expected<Formats, AudioInputError> prepare() override;
  std::expected<void, AudioInputError> start(BlockHandler handler) override;
  void stop() override;

 private:
  bool openStream(const PulseSource& source);
  std::expected<AudioFormat, AudioInputError> awaitStream(const PulseSource& source,
                                                          PulseServer::Deadline deadline);
  std::unexpected<AudioInputError> giveUp(PulseError error);
  bool isStreamIn(pa_stream_state_t state) const;
  void readBlocks();
  void deliver(std::span<const std::byte> frames) const;

  PulseServer& m_server;
  pa_stream* m_stream = nullptr;
  AudioFormat m_format;
  BlockHandler m_handler;  ///< under libpulse's lock
};

}  // namespace vemo
