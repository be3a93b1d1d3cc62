// Whether this program may and can hear a microphone: the sound server's word for a permission.
//
// NotDetermined until the server first answers, Denied when it refuses or has no microphone,
// Granted otherwise. The answer is kept up to date by the server's own notices, so authorization()
// costs no round trip and an idle program no wake-up. While the server is away, each call has one
// more try at connecting, without waiting for it.
//
// authorization() on the main thread; the answer is written on libpulse's.
#pragma once

#include <atomic>

#include "platform/pulse/PulseServer.h"
#include "ports/SystemPermissions.h"

namespace vemo {

class PulseMicrophoneAccess {
 public:
  explicit PulseMicrophoneAccess(PulseServer& server);
  ~PulseMicrophoneAccess();
  PulseMicrophoneAccess(const PulseMicrophoneAccess&) = delete;
  PulseMicrophoneAccess& operator=(const PulseMicrophoneAccess&) = delete;

  MicrophoneAuthorization authorization();

 private:
  void handleState(pa_context& context, pa_context_state_t state);
  void handleEvent(pa_context& context, pa_subscription_event_type_t event);
  void listSources(pa_context& context);
  void takeSource(const pa_source_info* info, int end);

  PulseServer& m_server;
  std::atomic<MicrophoneAuthorization> m_authorization = MicrophoneAuthorization::NotDetermined;
  bool m_hasFoundMicrophone = false;
  PulseOperation m_subscription;
  PulseOperation m_listing;
};

}  // namespace vemo
