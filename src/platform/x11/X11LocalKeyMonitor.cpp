#include "platform/x11/X11LocalKeyMonitor.h"

#include <QCoreApplication>
#include <array>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11KeySymbols.h"
#include "platform/x11/XcbXkb.h"

namespace vemo {

namespace {

constexpr std::uint8_t sentByProgram = 0x80;
constexpr std::size_t modifierCount = 8;

}  // namespace

/// What the keys and the modifiers of the keyboard stand for. Without a server to ask, keys go by
/// their place alone.
class X11LocalKeyMonitor::Layout {
 public:
  Layout() : m_connection(X11Connection::create()) {
    if (m_connection) m_symbols = X11KeySymbols::create(*m_connection);
    if (!m_symbols) return;
    m_connection->setEventHandler(
        [this](const xcb_generic_event_t& event) { m_symbols->handleEvent(event); });
    readModifiers();
  }

  X11VirtualKey key(xcb_keycode_t code) {
    constexpr std::uint16_t coreKeyboard = XCB_XKB_ID_USE_CORE_KBD;
    if (!m_symbols) return x11VirtualKey(code, XKB_KEY_NoSymbol, FnKey::StoodFor);
    const bool hasFnKey = m_symbols->hasSymbol(coreKeyboard, XKB_KEY_XF86Fn);
    return x11VirtualKey(code, m_symbols->plainSymbol(coreKeyboard, code),
                         hasFnKey ? FnKey::Reported : FnKey::StoodFor);
  }

  /// By the server's word, which may be ahead of its events.
  bool isDown(xcb_keycode_t code) {
    if (!m_symbols) return false;
    const auto keys = m_connection->reply<xcb_query_keymap_reply_t>(
        xcb_query_keymap(m_connection->xcb()).sequence);
    return keys && keys->keys[code / 8] >> code % 8 & 1;
  }

  ModifierFlags flags(std::uint16_t state) const {
    ModifierFlags flags = 0;
    for (std::size_t i = 0; i < modifierCount; ++i) {
      if (state >> i & 1) flags |= m_flags[i];
    }
    return flags;
  }

 private:
  /// Keys that the keyboard's layout gives each of the server's modifiers.
  void readModifiers() {
    const auto reply = m_connection->reply<xcb_get_modifier_mapping_reply_t>(
        xcb_get_modifier_mapping(m_connection->xcb()).sequence);
    if (!reply) return;
    const xcb_keycode_t* codes = xcb_get_modifier_mapping_keycodes(reply.get());
    const std::size_t perModifier = reply->keycodes_per_modifier;
    for (std::size_t i = 0; i < modifierCount * perModifier; ++i) {
      if (codes[i]) m_flags[i / perModifier] |= key(codes[i]).flag;
    }
  }

  std::unique_ptr<X11Connection> m_connection;
  std::unique_ptr<X11KeySymbols> m_symbols;
  std::array<ModifierFlags, modifierCount> m_flags{};
};

X11LocalKeyMonitor::X11LocalKeyMonitor() = default;

X11LocalKeyMonitor::~X11LocalKeyMonitor() {
  if (m_isInstalled && QCoreApplication::instance())
    QCoreApplication::instance()->removeNativeEventFilter(this);
}

void X11LocalKeyMonitor::start(Handler handler) {
  if (!std::exchange(m_isInstalled, true))
    QCoreApplication::instance()->installNativeEventFilter(this);
  if (!m_layout) m_layout = std::make_unique<Layout>();
  m_handler = std::move(handler);
}

void X11LocalKeyMonitor::stop() {
  m_handler = nullptr;
  if (m_held.empty()) m_layout.reset();
}

bool X11LocalKeyMonitor::nativeEventFilter(const QByteArray& eventType, void* message, qintptr*) {
  if (eventType != "xcb_generic_event_t") return false;
  const auto& event = *static_cast<xcb_generic_event_t*>(message);
  switch (event.response_type & ~sentByProgram) {
    case XCB_KEY_PRESS:
      return keyWentDown(reinterpret_cast<const xcb_key_press_event_t&>(event));
    case XCB_KEY_RELEASE:
      return keyWentUp(reinterpret_cast<const xcb_key_release_event_t&>(event));
    case XCB_FOCUS_OUT:
      letGoOfAll();
      break;
  }
  return false;
}

bool X11LocalKeyMonitor::keyWentDown(const xcb_key_press_event_t& event) {
  if (m_held.contains(event.detail)) return m_swallowed.contains(event.detail);
  // Of a repetition that is handled after the key is up, both halves are in the past.
  if (m_lastUp && m_lastUp->code == event.detail && m_lastUp->time == event.time)
    return m_lastUp->wasSwallowed;
  m_lastUp.reset();
  if (!m_handler) return false;

  const X11VirtualKey key = m_layout->key(event.detail);
  m_held.emplace(event.detail, key);
  const auto type = key.isModifier ? KeyEvent::Type::FlagsChanged : KeyEvent::Type::KeyDown;
  const auto handling = tell({type, key.code, m_layout->flags(event.state) | heldFlags()});
  if (handling == Handling::Swallow) m_swallowed.insert(event.detail);
  return handling == Handling::Swallow;
}

bool X11LocalKeyMonitor::keyWentUp(const xcb_key_release_event_t& event) {
  if (!m_held.contains(event.detail))
    return m_lastUp && m_lastUp->code == event.detail && m_lastUp->wasSwallowed;
  const bool isSwallowed = m_swallowed.contains(event.detail);
  // The other half of a repetition may come at any time later.
  if (m_layout->isDown(event.detail)) return isSwallowed;
  m_lastUp = {event.detail, event.time, isSwallowed};
  letGo(event.detail, event.state);
  return isSwallowed;
}

void X11LocalKeyMonitor::letGo(xcb_keycode_t code, std::uint16_t state) {
  const X11VirtualKey key = m_held.extract(code).mapped();
  m_swallowed.erase(code);
  if (m_handler) {
    const auto type = key.isModifier ? KeyEvent::Type::FlagsChanged : KeyEvent::Type::KeyUp;
    tell({type, key.code, (m_layout->flags(state) & ~key.flag) | heldFlags()});
  }
  if (!m_handler && m_held.empty()) m_layout.reset();
}

void X11LocalKeyMonitor::letGoOfAll() {
  while (!m_held.empty()) letGo(m_held.begin()->first, 0);
}

ModifierFlags X11LocalKeyMonitor::heldFlags() const {
  ModifierFlags flags = 0;
  for (const auto& [code, key] : m_held) flags |= key.flag;
  return flags;
}

/// The handler may end the monitoring.
LocalKeyMonitor::Handling X11LocalKeyMonitor::tell(const KeyEvent& event) {
  const Handler handler = m_handler;
  return handler(event);
}

}  // namespace vemo
