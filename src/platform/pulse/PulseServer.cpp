#include "platform/pulse/PulseServer.h"

#include <utility>

namespace vemo {

PulseServer::Lock::Lock(PulseServer& server) : m_mainloop(server.m_mainloop) {
  if (m_mainloop) pa_threaded_mainloop_lock(m_mainloop);
}

PulseServer::Lock::~Lock() {
  if (m_mainloop) pa_threaded_mainloop_unlock(m_mainloop);
}

PulseServer::PulseServer(std::string applicationName, std::string applicationId)
    : m_applicationName(std::move(applicationName)),
      m_applicationId(std::move(applicationId)),
      m_mainloop(pa_threaded_mainloop_new()) {
  if (m_mainloop) pa_threaded_mainloop_set_name(m_mainloop, "vemo.audio");
}

PulseServer::~PulseServer() {
  {
    const Lock lock(*this);
    dropContext();
  }
  if (m_isRunning) pa_threaded_mainloop_stop(m_mainloop);
  if (m_mainloop) pa_threaded_mainloop_free(m_mainloop);
}

void PulseServer::connect() {
  if (!m_mainloop) return;
  startMainloop();
  const Lock lock(*this);
  if (isAlive()) return;
  dropContext();

  pa_proplist* const properties = pa_proplist_new();
  pa_proplist_sets(properties, PA_PROP_APPLICATION_NAME, m_applicationName.c_str());
  pa_proplist_sets(properties, PA_PROP_APPLICATION_ID, m_applicationId.c_str());
  pa_proplist_sets(properties, PA_PROP_APPLICATION_ICON_NAME, m_applicationId.c_str());
  m_context = pa_context_new_with_proplist(pa_threaded_mainloop_get_api(m_mainloop),
                                           m_applicationName.c_str(), properties);
  pa_proplist_free(properties);
  if (!m_context) return;
  pa_context_set_state_callback(
      m_context, [](pa_context*, void* self) { static_cast<PulseServer*>(self)->handleState(); },
      this);
  pa_context_connect(m_context, nullptr, PA_CONTEXT_NOAUTOSPAWN, nullptr);
}

bool PulseServer::waitUntilConnected(Deadline deadline) {
  connect();
  bool isReady = false;
  waitUntil(deadline, [this, &isReady] {
    isReady = m_context && pa_context_get_state(m_context) == PA_CONTEXT_READY;
    return isReady || !isAlive();
  });
  return isReady;
}

void PulseServer::disconnect() {
  const Lock lock(*this);
  dropContext();
}

bool PulseServer::waitUntil(Deadline deadline, const std::function<bool()>& isDone) {
  while (true) {
    std::uint64_t seen = 0;
    {
      const Lock lock(*this);
      if (isDone()) return true;
      const std::lock_guard wakeLock(m_wakeMutex);
      seen = m_wakeCount;
    }
    std::unique_lock wakeLock(m_wakeMutex);
    if (!m_woken.wait_until(wakeLock, deadline, [&] { return m_wakeCount != seen; })) return false;
  }
}

void PulseServer::wake() {
  {
    const std::lock_guard lock(m_wakeMutex);
    ++m_wakeCount;
  }
  m_woken.notify_all();
}

void PulseServer::setStateHandler(StateHandler handler) {
  const Lock lock(*this);
  m_stateHandler = std::move(handler);
}

bool PulseServer::isAlive() const {
  return m_context && PA_CONTEXT_IS_GOOD(pa_context_get_state(m_context));
}

void PulseServer::startMainloop() {
  if (!m_isRunning) m_isRunning = pa_threaded_mainloop_start(m_mainloop) == 0;
}

void PulseServer::dropContext() {
  if (!m_context) return;
  pa_context_disconnect(m_context);
  pa_context_set_state_callback(m_context, nullptr, nullptr);
  pa_context_set_subscribe_callback(m_context, nullptr, nullptr);
  pa_context_unref(std::exchange(m_context, nullptr));
}

void PulseServer::handleState() {
  if (m_stateHandler) m_stateHandler(*m_context, pa_context_get_state(m_context));
  wake();
}

}  // namespace vemo
