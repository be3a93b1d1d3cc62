#include "platform/atspi/AtspiFocus.h"

#include <atspi/atspi-constants.h>
#include <gio/gio.h>

#include <cstring>
#include <string>

#include "platform/gio/GioBus.h"

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// For the bus and its registry, which may have to be started first.
constexpr auto startLimit = 25s;
/// For one answer of the program that has the focus; nobody waits longer for all of them.
constexpr auto answerLimit = 50ms;
/// Pages nest deep; a chain that is longer leads nowhere.
constexpr int mostAncestors = 200;

const GioTarget accessibilityBus{"org.a11y.Bus", "/org/a11y/bus", "org.a11y.Bus"};
const GioTarget registry{ATSPI_DBUS_NAME_REGISTRY, ATSPI_DBUS_PATH_REGISTRY,
                         ATSPI_DBUS_INTERFACE_REGISTRY};
const GioSignal focusChange{"", ATSPI_DBUS_INTERFACE_EVENT_OBJECT, "StateChanged", "focused"};
const GioSignal registryOwnerChange{"org.freedesktop.DBus", "org.freedesktop.DBus",
                                    "NameOwnerChanged", ATSPI_DBUS_NAME_REGISTRY};

}  // namespace

AtspiFocus::AtspiFocus(GioThread& thread) : m_thread(thread) {
  findBus();
}

AtspiFocus::~AtspiFocus() = default;

void AtspiFocus::askForPassword(PasswordAnswer answer) {
  if (!m_bus && !m_sessionBus) findBus();
  if (!m_objects || !m_focused) return answer(false, Finality::Final);
  // The role is asked for each time: a field that shows its password on demand changes it.
  m_objects->askRole(*m_focused, [this, object = *m_focused,
                                  answer = std::move(answer)](std::optional<unsigned> role) {
    if (role != unsigned{ATSPI_ROLE_PASSWORD_TEXT}) return answer(false, Finality::Final);
    // Not every toolkit reports that the focus has left for another program's window.
    m_objects->askState(object, [this, object, answer](std::optional<AtspiState> state) {
      if (!state || !state->isFocused) return answer(false, Finality::Final);
      answer(true, Finality::SoFar);
      askForWindowInFront(object, 0, answer);
    });
  });
}

/// The topmost ancestor below the program is the window. One that can't be found is taken to be in
/// front, as the field says that it has the focus.
void AtspiFocus::askForWindowInFront(const AtspiObject& object, int depth, PasswordAnswer answer) {
  m_objects->askParent(
      object, [this, object, depth, answer = std::move(answer)](std::optional<AtspiObject> parent) {
        if (!parent || depth == mostAncestors) return answer(true, Finality::Final);
        if (parent->path != ATSPI_DBUS_PATH_ROOT)
          return askForWindowInFront(*parent, depth + 1, answer);
        m_objects->askState(object, [answer](std::optional<AtspiState> window) {
          answer(!window || window->isActive, Finality::Final);
        });
      });
}

void AtspiFocus::findBus() {
  m_sessionBus = std::make_unique<GioBus>(
      m_thread, GioBus::sessionAddress(),
      GioBus::Handlers{.opened =
                           [this] {
                             m_sessionBus->call(accessibilityBus, "GetAddress", nullptr, "(s)",
                                                startLimit, [this](GVariant* body) {
                                                  const char* address = "";
                                                  if (body) g_variant_get(body, "(&s)", &address);
                                                  connectTo(address);
                                                });
                           },
                       .closed = [this] { m_sessionBus.reset(); }});
}

void AtspiFocus::connectTo(const std::string& address) {
  m_sessionBus.reset();
  if (address.empty()) return;
  m_bus = std::make_unique<GioBus>(
      m_thread, address,
      GioBus::Handlers{.opened = [this] { listen(); }, .closed = [this] { loseBus(); }});
}

void AtspiFocus::loseBus() {
  const bool wasOpen = m_objects.has_value();
  m_search.reset();
  m_focused.reset();
  m_objects.reset();
  m_bus.reset();
  if (wasOpen) findBus();
}

void AtspiFocus::listen() {
  m_objects.emplace(*m_bus, answerLimit);
  m_bus->subscribe(focusChange, [this](const char* program, const char* path, GVariant* body) {
    if (!g_variant_is_of_type(body, G_VARIANT_TYPE("(siiva{sv})")) &&
        !g_variant_is_of_type(body, G_VARIANT_TYPE("(siiv(so))")))
      return;
    gint32 isFocused = 0;
    g_variant_get_child(body, 1, "i", &isFocused);
    handleStateChange({program, path}, isFocused != 0);
  });
  m_bus->subscribe(registryOwnerChange, [this](const char*, const char*, GVariant* body) {
    const char* owner = "";
    if (g_variant_is_of_type(body, G_VARIANT_TYPE("(sss)")))
      g_variant_get_child(body, 2, "&s", &owner);
    if (std::strlen(owner) > 0) requestEvents();
  });
  requestEvents();
  search();
}

/// A report that comes meanwhile is newer, and ends the search.
void AtspiFocus::search() {
  if (!m_objects) return;
  m_search = std::make_unique<AtspiFocusSearch>(
      *m_bus, [this](const AtspiObject& object) { m_focused = object; });
}

void AtspiFocus::requestEvents() {
  m_bus->call(registry, "RegisterEvent", g_variant_new("(s)", "object:state-changed:focused"), "()",
              startLimit, [](GVariant*) {});
}

void AtspiFocus::handleStateChange(AtspiObject object, bool isFocused) {
  if (isFocused) {
    m_search.reset();
    m_focused = std::move(object);
  } else if (m_focused == object) {
    m_focused.reset();
  }
}

}  // namespace vemo
