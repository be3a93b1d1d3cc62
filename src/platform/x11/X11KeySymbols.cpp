#include "platform/x11/X11KeySymbols.h"

#include <algorithm>

#include "platform/x11/XcbXkb.h"

namespace vemo {

namespace {
constexpr std::uint8_t groupCountMask = 0x0F;
}

std::unique_ptr<X11KeySymbols> X11KeySymbols::create(X11Connection& connection) {
  const auto xkb = connection.extension(xcb_xkb_id);
  if (!xkb) return nullptr;
  const auto version = connection.reply<xcb_xkb_use_extension_reply_t>(
      xcb_xkb_use_extension(connection.xcb(), XCB_XKB_MAJOR_VERSION, XCB_XKB_MINOR_VERSION)
          .sequence);
  if (!version || !version->supported) return nullptr;
  return std::unique_ptr<X11KeySymbols>(new X11KeySymbols(connection, xkb->first_event));
}

X11KeySymbols::X11KeySymbols(X11Connection& connection, std::uint8_t xkbEvent)
    : m_connection(connection), m_xkbEvent(xkbEvent) {
  const std::uint16_t changes =
      XCB_XKB_EVENT_TYPE_NEW_KEYBOARD_NOTIFY | XCB_XKB_EVENT_TYPE_MAP_NOTIFY;
  const std::uint16_t parts = XCB_XKB_MAP_PART_KEY_SYMS;
  xcb_xkb_select_events(m_connection.xcb(), XCB_XKB_ID_USE_CORE_KBD, changes, 0, changes, parts,
                        parts, nullptr);
  xcb_xkb_select_events_details_t state{};
  state.affectState = XCB_XKB_STATE_PART_GROUP_STATE;
  state.stateDetails = XCB_XKB_STATE_PART_GROUP_STATE;
  xcb_xkb_select_events_aux(m_connection.xcb(), XCB_XKB_ID_USE_CORE_KBD,
                            XCB_XKB_EVENT_TYPE_STATE_NOTIFY, 0, 0, 0, 0, &state);
  const auto now = m_connection.reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(m_connection.xcb(), XCB_XKB_ID_USE_CORE_KBD).sequence);
  if (now) m_group = now->group;
}

void X11KeySymbols::handleEvent(const xcb_generic_event_t& event) {
  if (event.response_type != m_xkbEvent) return;
  switch (event.pad0) {
    case XCB_XKB_STATE_NOTIFY:
      m_group = reinterpret_cast<const xcb_xkb_state_notify_event_t&>(event).group;
      break;
    case XCB_XKB_NEW_KEYBOARD_NOTIFY:
    case XCB_XKB_MAP_NOTIFY:
      forget();
      break;
  }
}

xkb_keysym_t X11KeySymbols::plainSymbol(std::uint16_t deviceId, std::uint32_t keyCode) {
  const Symbols& symbols = symbolsOf(deviceId);
  return keyCode < symbols.size() ? inForce(symbols[keyCode]) : XKB_KEY_NoSymbol;
}

bool X11KeySymbols::hasSymbol(std::uint16_t deviceId, xkb_keysym_t symbol) {
  return std::ranges::any_of(symbolsOf(deviceId),
                             [&](const auto& groups) { return inForce(groups) == symbol; });
}

/// A key with fewer groups than the keyboard wraps.
xkb_keysym_t X11KeySymbols::inForce(const std::vector<xkb_keysym_t>& groups) const {
  return groups.empty() ? XKB_KEY_NoSymbol : groups[m_group % groups.size()];
}

const X11KeySymbols::Symbols& X11KeySymbols::symbolsOf(std::uint16_t deviceId) {
  static const Symbols none;
  if (const auto known = m_keyboards.find(deviceId); known != m_keyboards.end())
    return known->second;
  auto symbols = fetch(deviceId);
  // A keyboard that was unplugged after its key was struck most likely had the others' layout.
  if (!symbols) symbols = fetch(XCB_XKB_ID_USE_CORE_KBD);
  return symbols ? m_keyboards.emplace(deviceId, *std::move(symbols)).first->second : none;
}

std::optional<X11KeySymbols::Symbols> X11KeySymbols::fetch(std::uint16_t deviceId) {
  const auto reply = m_connection.reply<xcb_xkb_get_map_reply_t>(
      xcb_xkb_get_map(m_connection.xcb(), deviceId, XCB_XKB_MAP_PART_KEY_SYMS, 0, 0, 0, 0, 0, 0, 0,
                      0, 0, 0, 0, 0, 0, 0, 0, 0)
          .sequence);
  if (!reply) return std::nullopt;
  Symbols symbols;
  xcb_xkb_get_map_map_t map;
  xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                             reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                             reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                             reply->totalVModMapKeys, reply->present, &map);
  std::size_t keyCode = reply->firstKeySym;
  for (auto key = xcb_xkb_get_map_map_syms_rtrn_iterator(reply.get(), &map);
       key.rem && keyCode < symbols.size(); xcb_xkb_key_sym_map_next(&key), ++keyCode) {
    const xcb_keysym_t* table = xcb_xkb_key_sym_map_syms(key.data);
    for (int group = 0; group < (key.data->groupInfo & groupCountMask); ++group)
      symbols[keyCode].push_back(table[group * key.data->width]);
  }
  return symbols;
}

}  // namespace vemo
