#include "platform/x11/X11OwnKeys.h"

namespace vemo {

namespace {

constexpr const char* messageName = "_VEMO_OWN_KEY";
enum Kind : std::uint32_t { Concluded, PressFollows, ReleaseFollows };

/// Reaches the clients that selected this mask on the window.
constexpr std::uint32_t audience = XCB_EVENT_MASK_STRUCTURE_NOTIFY;

void send(X11Connection& connection, Kind kind, xcb_keycode_t code) {
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = connection.window();
  message.type = connection.atom(messageName);
  message.data.data32[0] = kind;
  message.data.data32[1] = code;
  xcb_send_event(connection.xcb(), 0, connection.window(), audience,
                 reinterpret_cast<const char*>(&message));
}

}  // namespace

void X11OwnKeys::announce(X11Connection& connection, Strike strike, xcb_keycode_t code) {
  send(connection, strike == Strike::Press ? PressFollows : ReleaseFollows, code);
}

void X11OwnKeys::conclude(X11Connection& connection) {
  send(connection, Concluded, 0);
}

X11OwnKeys::X11OwnKeys(X11Connection& connection, xcb_window_t announcer)
    : m_messageType(connection.atom(messageName)) {
  xcb_change_window_attributes(connection.xcb(), announcer, XCB_CW_EVENT_MASK, &audience);
}

void X11OwnKeys::handleEvent(const xcb_generic_event_t& event) {
  constexpr std::uint8_t sentByAClient = 0x80;
  if (event.response_type != (XCB_CLIENT_MESSAGE | sentByAClient)) return;
  const auto& message = reinterpret_cast<const xcb_client_message_event_t&>(event);
  if (message.type != m_messageType) return;
  const std::uint32_t code = message.data.data32[1];
  m_announced.reset();
  if (message.data.data32[0] == PressFollows) m_announced.emplace(Strike::Press, code);
  if (message.data.data32[0] == ReleaseFollows) m_announced.emplace(Strike::Release, code);
}

bool X11OwnKeys::take(Strike strike, std::uint32_t code) {
  if (m_announced != std::pair(strike, code)) return false;
  m_announced.reset();
  return true;
}

}  // namespace vemo
