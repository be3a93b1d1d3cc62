#include "platform/canberra/CanberraPlayer.h"

#include <chrono>
#include <thread>
#include <utility>

using namespace std::chrono_literals;

namespace vemo {

namespace {
constexpr auto longestEnd = 500ms;
}

CanberraPlayer::CanberraPlayer(QByteArray applicationName, QByteArray applicationId)
    : m_applicationName(std::move(applicationName)), m_applicationId(std::move(applicationId)) {}

std::uint32_t CanberraPlayer::newSoundId() {
  const std::lock_guard lock(m_mutex);
  return ++m_lastSoundId;
}

void CanberraPlayer::play(std::uint32_t soundId, CanberraSource source) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_isEnding) return;
    m_waiting.insert_or_assign(soundId, std::move(source));
    if (!std::exchange(m_isRunning, true))
      std::thread([self = shared_from_this()] { self->run(); }).detach();
  }
  m_changed.notify_one();
}

void CanberraPlayer::end() {
  std::unique_lock lock(m_mutex);
  m_isEnding = true;
  m_changed.notify_all();
  m_changed.wait_for(lock, longestEnd, [this] { return !m_isRunning; });
}

void CanberraPlayer::run() {
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return m_isEnding || !m_waiting.empty(); });
    if (m_isEnding) break;
    const auto next = m_waiting.extract(m_waiting.begin());
    lock.unlock();
    playNow(next.key(), next.mapped());
    lock.lock();
  }
  lock.unlock();
  closeContext();
  lock.lock();
  m_isRunning = false;
  m_changed.notify_all();
}

bool CanberraPlayer::openContext() {
  if (m_context) return true;
  if (ca_context_create(&m_context) != CA_SUCCESS) return false;
  // The driver is named, so that no other one is tried: its ALSA driver runs a thread that doesn't
  // end.
  ca_context_set_driver(m_context, "pulse");
  ca_context_change_props(m_context, CA_PROP_APPLICATION_NAME, m_applicationName.constData(),
                          CA_PROP_APPLICATION_ID, m_applicationId.constData(), nullptr);
  return true;
}

void CanberraPlayer::closeContext() {
  if (m_context) ca_context_destroy(std::exchange(m_context, nullptr));
}

void CanberraPlayer::playNow(std::uint32_t soundId, const CanberraSource& source) {
  if (!openContext()) return;
  ca_context_cancel(m_context, soundId);
  const int result =
      ca_context_play(m_context, soundId, source.property, source.value.constData(), nullptr);
  // A connection that broke stays broken: the next sound begins with a new one.
  if (result != CA_SUCCESS && result != CA_ERROR_NOTFOUND) closeContext();
}

}  // namespace vemo
