#include "platform/qt/QtTaskBar.h"

#include <xcb/xcb.h>

#include <QByteArray>
#include <QGuiApplication>
#include <cstdlib>
#include <memory>

namespace vemo {

namespace {

struct Free {
  void operator()(void* memory) const { std::free(memory); }
};

xcb_atom_t atom(xcb_connection_t* connection, const QByteArray& name) {
  const auto cookie =
      xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.constData());
  const std::unique_ptr<xcb_intern_atom_reply_t, Free> reply(
      xcb_intern_atom_reply(connection, cookie, nullptr));
  return reply ? reply->atom : XCB_ATOM_NONE;
}

}  // namespace

void applyTaskBarPolicy(quintptr window, ActivationPolicy policy) {
  const auto* const display =
      qGuiApp ? qGuiApp->nativeInterface<QNativeInterface::QX11Application>() : nullptr;
  if (!display) return;
  xcb_connection_t* const connection = display->connection();

  constexpr std::uint32_t removeState = 0;
  constexpr std::uint32_t addState = 1;
  constexpr std::uint32_t fromApplication = 1;
  xcb_client_message_event_t message{};
  message.response_type = XCB_CLIENT_MESSAGE;
  message.format = 32;
  message.window = static_cast<xcb_window_t>(window);
  message.type = atom(connection, "_NET_WM_STATE");
  message.data.data32[0] = policy == ActivationPolicy::Accessory ? addState : removeState;
  message.data.data32[1] = atom(connection, "_NET_WM_STATE_SKIP_TASKBAR");
  message.data.data32[2] = atom(connection, "_NET_WM_STATE_SKIP_PAGER");
  message.data.data32[3] = fromApplication;

  const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(connection)).data->root;
  xcb_send_event(connection, 0, root,
                 XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                 reinterpret_cast<const char*>(&message));
  xcb_flush(connection);
}

}  // namespace vemo
