#include "platform/pulse/PulseMicrophoneAccess.h"

#include "platform/pulse/PulseSource.h"

namespace vemo {

PulseMicrophoneAccess::PulseMicrophoneAccess(PulseServer& server) : m_server(server) {
  server.setStateHandler(
      [this](pa_context& context, pa_context_state_t state) { handleState(context, state); });
}

PulseMicrophoneAccess::~PulseMicrophoneAccess() {
  m_server.setStateHandler(nullptr);
  const PulseServer::Lock lock(m_server);
  if (m_server.context()) pa_context_set_subscribe_callback(m_server.context(), nullptr, nullptr);
  m_subscription.reset();
  m_listing.reset();
}

MicrophoneAuthorization PulseMicrophoneAccess::authorization() {
  m_server.connect();
  return m_authorization;
}

void PulseMicrophoneAccess::handleState(pa_context& context, pa_context_state_t state) {
  if (!PA_CONTEXT_IS_GOOD(state)) {
    m_subscription.reset();
    m_listing.reset();
    m_authorization = MicrophoneAuthorization::Denied;
    return;
  }
  if (state != PA_CONTEXT_READY) return;
  pa_context_set_subscribe_callback(
      &context,
      [](pa_context* from, pa_subscription_event_type_t event, std::uint32_t, void* self) {
        static_cast<PulseMicrophoneAccess*>(self)->handleEvent(*from, event);
      },
      this);
  m_subscription.reset(
      pa_context_subscribe(&context, PA_SUBSCRIPTION_MASK_SOURCE, nullptr, nullptr));
  listSources(context);
}

void PulseMicrophoneAccess::handleEvent(pa_context& context, pa_subscription_event_type_t event) {
  // Changes come with every start and stop of a capture, and turn no source into a microphone.
  if ((event & PA_SUBSCRIPTION_EVENT_TYPE_MASK) != PA_SUBSCRIPTION_EVENT_CHANGE)
    listSources(context);
}

void PulseMicrophoneAccess::listSources(pa_context& context) {
  m_hasFoundMicrophone = false;
  m_listing.reset(pa_context_get_source_info_list(
      &context,
      [](pa_context*, const pa_source_info* info, int end, void* self) {
        static_cast<PulseMicrophoneAccess*>(self)->takeSource(info, end);
      },
      this));
}

void PulseMicrophoneAccess::takeSource(const pa_source_info* info, int end) {
  if (!end) {
    m_hasFoundMicrophone |= !PulseSource::of(*info).isMonitor;
    return;
  }
  m_authorization =
      m_hasFoundMicrophone ? MicrophoneAuthorization::Granted : MicrophoneAuthorization::Denied;
}

}  // namespace vemo
