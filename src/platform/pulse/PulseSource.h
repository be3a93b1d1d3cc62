// What the sound server says about its sources, and which of them is the microphone.
#pragma once

#include <pulse/pulseaudio.h>

#include <expected>
#include <optional>
#include <span>
#include <string>

#include "platform/pulse/PulseServer.h"
#include "ports/InputDevice.h"

namespace vemo {

struct PulseSource {
  std::string name;
  pa_sample_spec sampleSpec{};
  pa_channel_map channelMap{};
  bool isMonitor = false;  ///< hears what a sink plays
  bool isHardware = false;
  bool isNetwork = false;
  std::string bus;
  std::string api;
  std::string formFactor;

  static PulseSource of(const pa_source_info& info);
};

enum class PulseError { NotReachable, ConnectionLost, NotAnswering };

/// The default source; where that is a monitor or there is none, the first source that is none.
/// Nothing when every source is a monitor.
std::optional<PulseSource> chooseMicrophone(std::span<const PulseSource> sources,
                                            const std::string& defaultName);

/// Asks the server for its microphone of this moment, connecting if need be.
std::expected<std::optional<PulseSource>, PulseError> lookUpMicrophone(
    PulseServer& server, PulseServer::Deadline deadline);

InputTransport transportOf(const PulseSource& source);

}  // namespace vemo
