#include "platform/x11/X11Keymap.h"

#include <xkbcommon/xkbcommon-keysyms.h>
#include <xkbcommon/xkbcommon-x11.h>

#include <algorithm>
#include <array>

#include "platform/x11/XcbXkb.h"

namespace vemo {

namespace {

/// Keyboard events of XKB share one event code; the second byte tells them apart.
std::uint8_t xkbEventKind(const xcb_generic_event_t& event) {
  return event.pad0;
}

/// The symbol that a key gives without a modifier; a key with fewer groups than the keyboard wraps.
xkb_keysym_t plainSymbol(xkb_keymap* keymap, xkb_keycode_t code, xkb_layout_index_t group) {
  const xkb_layout_index_t groups = xkb_keymap_num_layouts_for_key(keymap, code);
  if (groups == 0) return XKB_KEY_NoSymbol;
  const xkb_keysym_t* symbols = nullptr;
  const int count = xkb_keymap_key_get_syms_by_level(keymap, code, group % groups, 0, &symbols);
  return count == 1 ? symbols[0] : XKB_KEY_NoSymbol;
}

}  // namespace

std::unique_ptr<X11Keymap> X11Keymap::create(X11Connection& connection) {
  std::uint8_t firstEvent = 0;
  if (!xkb_x11_setup_xkb_extension(
          connection.xcb(), XKB_X11_MIN_MAJOR_XKB_VERSION, XKB_X11_MIN_MINOR_XKB_VERSION,
          XKB_X11_SETUP_XKB_EXTENSION_NO_FLAGS, nullptr, nullptr, &firstEvent, nullptr))
    return nullptr;
  const std::int32_t deviceId = xkb_x11_get_core_keyboard_device_id(connection.xcb());
  if (deviceId < 0) return nullptr;

  const std::uint16_t events =
      XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  const std::uint16_t parts = XCB_XKB_MAP_PART_KEY_TYPES | XCB_XKB_MAP_PART_KEY_SYMS |
                              XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_VIRTUAL_MODS;
  xcb_xkb_select_events(connection.xcb(), XCB_XKB_ID_USE_CORE_KBD, events, 0, events, parts, parts,
                        nullptr);
  return std::unique_ptr<X11Keymap>(new X11Keymap(connection, firstEvent, deviceId));
}

X11Keymap::X11Keymap(X11Connection& connection, std::uint8_t xkbEvent, std::int32_t deviceId)
    : m_connection(connection),
      m_xkbEvent(xkbEvent),
      m_deviceId(deviceId),
      m_context(xkb_context_new(XKB_CONTEXT_NO_DEFAULT_INCLUDES)) {}

X11Keymap::~X11Keymap() {
  if (!m_lentKey) return;
  m_keymap.reset();
  if (symbolOf(*m_lentKey, 0) != m_lentSymbol) return;
  const xcb_keysym_t none = XCB_NO_SYMBOL;
  xcb_change_keyboard_mapping(m_connection.xcb(), 1, *m_lentKey, 1, &none);
  m_connection.synchronize();
}

void X11Keymap::handleEvent(const xcb_generic_event_t& event) {
  if (event.response_type != m_xkbEvent) return;
  const std::uint8_t kind = xkbEventKind(event);
  if (kind == XCB_XKB_NEW_KEYBOARD_NOTIFY || kind == XCB_XKB_MAP_NOTIFY) m_keymap.reset();
}

xkb_keymap* X11Keymap::current() {
  if (!m_keymap && m_context && m_connection.isAlive()) {
    m_keymap.reset(xkb_x11_keymap_new_from_device(m_context.get(), m_connection.xcb(), m_deviceId,
                                                  XKB_KEYMAP_COMPILE_NO_FLAGS));
  }
  return m_keymap.get();
}

xkb_keysym_t X11Keymap::symbolOf(xcb_keycode_t code, Group group) {
  xkb_keymap* keymap = current();
  return keymap ? plainSymbol(keymap, code, group) : XKB_KEY_NoSymbol;
}

std::optional<X11Keymap::Key> X11Keymap::findKey(xkb_keysym_t symbol, Group group) {
  xkb_keymap* keymap = current();
  if (!keymap) return std::nullopt;
  const Group groups = groupCount();
  for (Group distance = 0; distance < groups; ++distance) {
    // The group in force comes first, then the others from the user's first layout on.
    const Group candidate = distance == 0 ? group : (distance <= group ? distance - 1 : distance);
    for (unsigned int code = xkb_keymap_min_keycode(keymap);
         code <= std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap), 255); ++code) {
      if (plainSymbol(keymap, code, candidate) == symbol)
        return Key{static_cast<xcb_keycode_t>(code), candidate};
    }
  }
  return std::nullopt;
}

std::optional<xcb_keycode_t> X11Keymap::meaninglessKey() {
  xkb_keymap* keymap = current();
  if (!keymap) return std::nullopt;
  for (unsigned int code = std::min<xkb_keycode_t>(xkb_keymap_max_keycode(keymap), 255);
       code >= xkb_keymap_min_keycode(keymap); --code) {
    if (xkb_keymap_num_layouts_for_key(keymap, code) == 0) return static_cast<xcb_keycode_t>(code);
  }
  return std::nullopt;
}

std::optional<X11Keymap::Key> X11Keymap::lendKey(xkb_keysym_t symbol, xkb_keysym_t shiftedSymbol,
                                                 Group group) {
  const auto key = meaninglessKey();
  if (!key) return std::nullopt;
  const std::array<xcb_keysym_t, 2> symbols{symbol, shiftedSymbol};
  xcb_change_keyboard_mapping(m_connection.xcb(), 1, *key, symbols.size(), symbols.data());
  m_connection.synchronize();
  m_connection.processEvents();
  m_lentKey = key;
  m_lentSymbol = symbol;
  return Key{*key, group};
}

X11Keymap::Group X11Keymap::groupCount() {
  xkb_keymap* keymap = current();
  return keymap ? xkb_keymap_num_layouts(keymap) : 0;
}

bool X11Keymap::isHeldModifier(xcb_keycode_t code) {
  switch (symbolOf(code, 0)) {
    case XKB_KEY_ISO_Level3_Shift:
    case XKB_KEY_ISO_Level5_Shift:
    case XKB_KEY_Mode_switch:
      return true;
    default:
      return modifierFlag(code) != 0;
  }
}

ModifierFlags X11Keymap::modifierFlag(xcb_keycode_t code) {
  switch (symbolOf(code, 0)) {
    case XKB_KEY_Shift_L:
    case XKB_KEY_Shift_R:
      return ShiftFlag;
    case XKB_KEY_Control_L:
    case XKB_KEY_Control_R:
      return ControlFlag;
    case XKB_KEY_Alt_L:
    case XKB_KEY_Alt_R:
    case XKB_KEY_Meta_L:
    case XKB_KEY_Meta_R:
      return OptionFlag;
    case XKB_KEY_Super_L:
    case XKB_KEY_Super_R:
    case XKB_KEY_Hyper_L:
    case XKB_KEY_Hyper_R:
      return CommandFlag;
    default:
      return 0;
  }
}

}  // namespace vemo
