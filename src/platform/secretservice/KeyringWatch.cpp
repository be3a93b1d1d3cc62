#include "platform/secretservice/KeyringWatch.h"

#include <utility>

#include "platform/gio/GioBus.h"
#include "platform/gio/GioThread.h"

namespace vemo {

namespace {

constexpr auto keyringName = "org.freedesktop.secrets";

/// Keyrings differ in which of these they send when they are unlocked.
const GioSignal tellingSignals[] = {
    {"org.freedesktop.DBus", "org.freedesktop.DBus", "NameOwnerChanged", keyringName},
    {keyringName, "org.freedesktop.Secret.Service", "", ""},
    {keyringName, "org.freedesktop.DBus.Properties", "PropertiesChanged", ""},
};

}  // namespace

KeyringWatch::KeyringWatch(GioThread& thread, MainThread& mainThread, std::function<void()> changed)
    : m_thread(thread),
      m_mainThread(mainThread),
      m_changed(std::make_shared<std::function<void()>>(std::move(changed))) {
  m_thread.post([this] {
    m_bus =
        std::make_unique<GioBus>(m_thread, GioBus::sessionAddress(),
                                 GioBus::Handlers{.opened = [this] { listen(); }, .closed = {}});
  });
}

KeyringWatch::~KeyringWatch() {
  m_thread.run([this] { m_bus.reset(); });
}

/// What has changed before the signals were asked for would stay untold.
void KeyringWatch::listen() {
  for (const GioSignal& signal : tellingSignals)
    m_bus->subscribe(signal, [this](const char*, const char*, GVariant*) { tell(); });
  tell();
}

void KeyringWatch::tell() {
  m_mainThread.post([changed = std::weak_ptr(m_changed)] {
    if (const auto callback = changed.lock()) (*callback)();
  });
}

}  // namespace vemo
