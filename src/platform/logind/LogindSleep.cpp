#include "platform/logind/LogindSleep.h"

#include <gio/gio.h>

#include <utility>

#include "platform/gio/GioBus.h"
#include "platform/gio/GioThread.h"

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// Doubled from try to try: a bus that restarts is back within seconds, and one that isn't back
/// after minutes stays away.
constexpr auto firstPause = 100ms;
constexpr std::chrono::milliseconds longestPause = 5min;

const GioSignal prepareForSleep{"org.freedesktop.login1", "org.freedesktop.login1.Manager",
                                "PrepareForSleep", ""};

}  // namespace

LogindSleep::LogindSleep(GioThread& thread, MainThread& mainThread, std::function<void()> didWake)
    : m_thread(thread),
      m_mainThread(mainThread),
      m_didWake(std::make_shared<std::function<void()>>(std::move(didWake))) {
  m_thread.post([this] {
    m_self = std::make_shared<LogindSleep*>(this);
    connect();
  });
}

LogindSleep::~LogindSleep() {
  m_thread.run([this] {
    m_self.reset();
    m_bus.reset();
  });
}

void LogindSleep::connect() {
  m_bus = std::make_unique<GioBus>(
      m_thread, GioBus::systemAddress(),
      GioBus::Handlers{.opened = [this] { listen(); }, .closed = [this] { tryAgain(); }});
}

void LogindSleep::listen() {
  m_wasEverOpen = true;
  m_nextPause = firstPause;
  m_bus->subscribe(prepareForSleep, [this](const char*, const char*, GVariant* body) {
    if (!g_variant_is_of_type(body, G_VARIANT_TYPE("(b)"))) return;
    gboolean isAboutToSleep = TRUE;
    g_variant_get(body, "(b)", &isAboutToSleep);
    if (isAboutToSleep) return;
    m_mainThread.post([didWake = std::weak_ptr(m_didWake)] {
      if (const auto callback = didWake.lock()) (*callback)();
    });
  });
}

void LogindSleep::tryAgain() {
  m_bus.reset();
  if (!m_wasEverOpen || m_nextPause > longestPause) return;
  m_thread.post(
      [self = std::weak_ptr(m_self)] {
        if (const auto living = self.lock()) (*living)->connect();
      },
      m_nextPause);
  m_nextPause *= 2;
}

}  // namespace vemo
