#include "platform/pulse/PulseSource.h"

#include <algorithm>
#include <vector>

namespace vemo {

namespace {

std::string propertyOf(const pa_source_info& info, const char* key) {
  const char* const value = pa_proplist_gets(info.proplist, key);
  return value ? value : "";
}

/// The answers to the two questions, as they come in.
struct Inquiry {
  PulseServer& server;
  std::string defaultName;
  std::vector<PulseSource> sources;
  int openAnswers = 2;

  void closeAnswer() {
    --openAnswers;
    server.wake();
  }
};

void takeServerInfo(pa_context*, const pa_server_info* info, void* data) {
  auto& inquiry = *static_cast<Inquiry*>(data);
  if (info && info->default_source_name) inquiry.defaultName = info->default_source_name;
  inquiry.closeAnswer();
}

void takeSourceInfo(pa_context*, const pa_source_info* info, int end, void* data) {
  auto& inquiry = *static_cast<Inquiry*>(data);
  if (end)
    inquiry.closeAnswer();
  else
    inquiry.sources.push_back(PulseSource::of(*info));
}

std::expected<std::optional<PulseSource>, PulseError> askOnce(PulseServer& server,
                                                              PulseServer::Deadline deadline) {
  if (!server.waitUntilConnected(deadline)) return std::unexpected(PulseError::NotReachable);

  Inquiry inquiry{.server = server, .defaultName = {}, .sources = {}};
  PulseOperation serverInfo;
  PulseOperation sourceInfo;
  {
    const PulseServer::Lock lock(server);
    if (!server.isAlive()) return std::unexpected(PulseError::ConnectionLost);
    serverInfo.reset(pa_context_get_server_info(server.context(), takeServerInfo, &inquiry));
    sourceInfo.reset(pa_context_get_source_info_list(server.context(), takeSourceInfo, &inquiry));
  }
  server.waitUntil(deadline, [&] { return inquiry.openAnswers == 0 || !server.isAlive(); });

  const PulseServer::Lock lock(server);
  serverInfo.reset();
  sourceInfo.reset();
  if (inquiry.openAnswers == 0) return chooseMicrophone(inquiry.sources, inquiry.defaultName);
  return std::unexpected(server.isAlive() ? PulseError::NotAnswering : PulseError::ConnectionLost);
}

}  // namespace

PulseSource PulseSource::of(const pa_source_info& info) {
  return {.name = info.name,
          .sampleSpec = info.sample_spec,
          .channelMap = info.channel_map,
          .isMonitor = info.monitor_of_sink != PA_INVALID_INDEX,
          .isHardware = (info.flags & PA_SOURCE_HARDWARE) != 0,
          .isNetwork = (info.flags & PA_SOURCE_NETWORK) != 0,
          .bus = propertyOf(info, PA_PROP_DEVICE_BUS),
          .api = propertyOf(info, PA_PROP_DEVICE_API),
          .formFactor = propertyOf(info, PA_PROP_DEVICE_FORM_FACTOR)};
}

std::optional<PulseSource> chooseMicrophone(std::span<const PulseSource> sources,
                                            const std::string& defaultName) {
  const auto isMicrophone = [](const PulseSource& source) { return !source.isMonitor; };
  const auto byDefault = std::ranges::find(sources, defaultName, &PulseSource::name);
  if (byDefault != sources.end() && isMicrophone(*byDefault)) return *byDefault;
  const auto first = std::ranges::find_if(sources, isMicrophone);
  if (first == sources.end()) return std::nullopt;
  return *first;
}

std::expected<std::optional<PulseSource>, PulseError> lookUpMicrophone(
    PulseServer& server, PulseServer::Deadline deadline) {
  // A server that was restarted since the last use may show as a connection that breaks only now.
  auto answer = askOnce(server, deadline);
  if (!answer && answer.error() == PulseError::ConnectionLost) answer = askOnce(server, deadline);
  return answer;
}

InputTransport transportOf(const PulseSource& source) {
  if (source.bus == "usb") return InputTransport::Usb;
  if (source.bus == "bluetooth" || source.api.starts_with("bluez"))
    return InputTransport::Bluetooth;
  if (source.bus == "pci" || source.bus == "isa" || source.bus == "platform")
    return InputTransport::BuiltIn;
  if (!source.bus.empty() || source.isMonitor || source.isNetwork) return InputTransport::Other;
  if (source.formFactor == "internal") return InputTransport::BuiltIn;
  return source.isHardware ? InputTransport::Other : InputTransport::Virtual;
}

}  // namespace vemo
