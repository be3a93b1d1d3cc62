#include "contract/x11/TestWindow.h"

#include <xkbcommon/xkbcommon-x11.h>

namespace vemo {

namespace {
constexpr uint32_t realModifiers = 0xFF;
}  // namespace

TestWindow::TestWindow(const QByteArray& className, const QByteArray& instanceName)
    : m_connection(X11Connection::create()) {
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  xkb_x11_setup_xkb_extension(m_connection->xcb(), XKB_X11_MIN_MAJOR_XKB_VERSION,
                              XKB_X11_MIN_MINOR_XKB_VERSION, XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS,
                              nullptr, nullptr, nullptr, nullptr);
  m_window = xcb_generate_id(m_connection->xcb());
  const uint32_t eventMask = XCB_EVENT_MASK_KEY_PRESS | XCB_EVENT_MASK_KEY_RELEASE |
                             XCB_EVENT_MASK_FOCUS_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_create_window(m_connection->xcb(), XCB_COPY_FROM_PARENT, m_window, m_connection->root(), 10,
                    10, 200, 100, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_EVENT_MASK, &eventMask);
  if (!className.isEmpty()) {
    setProperty("WM_CLASS", "STRING", 8, instanceName + '\0' + className + '\0');
  }
  xcb_map_window(m_connection->xcb(), m_window);
  m_connection->synchronize();
}

void TestWindow::setProperty(const QByteArray& name, const QByteArray& type, int format,
                             const QByteArray& data) {
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_window,
                      m_connection->atom(name), m_connection->atom(type),
                      static_cast<uint8_t>(format), static_cast<uint32_t>(data.size() * 8 / format),
                      data.constData());
  m_connection->synchronize();
}

void TestWindow::handleEvent(const xcb_generic_event_t& event) {
  switch (event.response_type & 0x7F) {
    case XCB_MAP_NOTIFY:
      xcb_set_input_focus(m_connection->xcb(), XCB_INPUT_FOCUS_POINTER_ROOT, m_window,
                          XCB_CURRENT_TIME);
      m_connection->flush();
      break;
    case XCB_FOCUS_IN:
      m_hasFocus = true;
      break;
    case XCB_FOCUS_OUT:
      m_hasFocus = false;
      break;
    case XCB_KEY_PRESS:
    case XCB_KEY_RELEASE: {
      const auto& key = reinterpret_cast<const xcb_key_press_event_t&>(event);
      m_keyEvents.push_back({(event.response_type & 0x7F) == XCB_KEY_PRESS, key.detail,
                             static_cast<uint16_t>(key.state & realModifiers), symbolOf(key),
                             key.time});
      break;
    }
    default:
      break;
  }
}

xkb_keysym_t TestWindow::symbolOf(const xcb_key_press_event_t& event) {
  xkb_context* context = xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES);
  xkb_keymap* keymap = xkb_x11_keymap_new_from_device(
      context, m_connection->xcb(), xkb_x11_get_core_keyboard_device_id(m_connection->xcb()),
      XKB_KEYMAP_COMPILE_NO_FLAGS);
  xkb_state* state = xkb_state_new(keymap);
  xkb_state_update_mask(state, 0, 0, 0, 0, 0, (event.state >> 13) & 3);
  const xkb_keysym_t symbol = xkb_state_key_get_one_sym(state, event.detail);
  xkb_state_unref(state);
  xkb_keymap_unref(keymap);
  xkb_context_unref(context);
  return symbol;
}

}  // namespace vemo
