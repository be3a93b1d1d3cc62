#include "contract/x11/VirtualUser.h"

#include <xcb/xtest.h>

#include <QProcess>
#include <array>

#include "platform/x11/XcbXkb.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

VirtualUser::VirtualUser()
    : m_connection(X11Connection::create()), m_keymap(X11Keymap::create(*m_connection)) {
  m_connection->setEventHandler(
      [this](const xcb_generic_event_t& event) { m_keymap->handleEvent(event); });
}

VirtualUser::~VirtualUser() {
  for (const xcb_keycode_t code : m_held)
    xcb_test_fake_input(m_connection->xcb(), XCB_KEY_RELEASE, code, 0, m_connection->root(), 0, 0,
                        0);
  if (m_hasSlowKeys) useSlowKeys(false);
  if (!m_hasRepeats) setRepeats(XCB_AUTO_REPEAT_MODE_ON);
  setLockedModifiers(0xFF, 0);
  chooseLayout(u"us"_s);
}

void VirtualUser::chooseLayout(const QString& layout, const QString& variant,
                               const QString& options) {
  QStringList arguments{u"-layout"_s, layout, u"-variant"_s, variant, u"-option"_s, QString()};
  if (!options.isEmpty()) arguments += {u"-option"_s, options};
  QProcess::execute(u"setxkbmap"_s, arguments);
  chooseGroup(0);
  m_connection->processEvents();
}

void VirtualUser::chooseGroup(unsigned int group) {
  xcb_xkb_latch_lock_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 1,
                           static_cast<uint8_t>(group), 0, 0, 0);
  m_connection->synchronize();
}

void VirtualUser::press(xkb_keysym_t key) {
  pressPlace(codeOf(key));
}

void VirtualUser::release(xkb_keysym_t key) {
  releasePlace(codeOf(key));
}

void VirtualUser::pressPlace(xcb_keycode_t code) {
  m_held.insert(code);
  xcb_test_fake_input(m_connection->xcb(), XCB_KEY_PRESS, code, 0, m_connection->root(), 0, 0, 0);
  m_connection->synchronize();
}

void VirtualUser::releasePlace(xcb_keycode_t code) {
  m_held.erase(code);
  xcb_test_fake_input(m_connection->xcb(), XCB_KEY_RELEASE, code, 0, m_connection->root(), 0, 0, 0);
  m_connection->synchronize();
}

void VirtualUser::giveSymbol(xcb_keycode_t code, xkb_keysym_t symbol) {
  xcb_change_keyboard_mapping(m_connection->xcb(), 1, code, 1, &symbol);
  m_connection->synchronize();
}

xcb_keycode_t VirtualUser::codeOf(xkb_keysym_t key) {
  m_connection->processEvents();
  const auto found = m_keymap->findKey(key, 0);
  return found ? found->code : 0;
}

void VirtualUser::useSlowKeys(bool isOn) {
  constexpr std::uint16_t delayMilliseconds = 60'000;
  constexpr std::uint32_t slowKeys = XCB_XKB_BOOL_CTRL_SLOW_KEYS;
  const std::array<std::uint8_t, 32> noKeys{};
  xcb_xkb_set_controls(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0,
                       0, slowKeys, isOn ? slowKeys : 0,
                       slowKeys | XCB_XKB_CONTROL_CONTROLS_ENABLED, 0, 0, delayMilliseconds, 0, 0,
                       0, 0, 0, 0, 0, 0, 0, 0, 0, noKeys.data());
  m_connection->synchronize();
  m_hasSlowKeys = isOn;
}

void VirtualUser::stopRepeats() {
  setRepeats(XCB_AUTO_REPEAT_MODE_OFF);
  m_hasRepeats = false;
}

void VirtualUser::setRepeats(std::uint32_t mode) {
  xcb_change_keyboard_control(m_connection->xcb(), XCB_KB_AUTO_REPEAT_MODE, &mode);
  m_connection->synchronize();
}

std::set<xcb_keycode_t> VirtualUser::keysDown() {
  const auto answer =
      m_connection->reply<xcb_query_keymap_reply_t>(xcb_query_keymap(m_connection->xcb()).sequence);
  std::set<xcb_keycode_t> codes;
  for (int code = 0; answer && code < 256; ++code) {
    if (answer->keys[code / 8] & (1 << (code % 8))) codes.insert(static_cast<xcb_keycode_t>(code));
  }
  return codes;
}

unsigned int VirtualUser::modifiersInForce() {
  const auto state = m_connection->reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD).sequence);
  return state ? state->mods : ~0U;
}

unsigned int VirtualUser::lockedModifiers() {
  const auto state = m_connection->reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD).sequence);
  return state ? state->lockedMods : ~0U;
}

unsigned int VirtualUser::group() {
  const auto state = m_connection->reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD).sequence);
  return state ? state->group : ~0U;
}

void VirtualUser::setLockedModifiers(unsigned int mask, unsigned int values) {
  xcb_xkb_latch_lock_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, static_cast<uint8_t>(mask),
                           static_cast<uint8_t>(values), 0, 0, 0, 0, 0);
  m_connection->synchronize();
}

}  // namespace vemo
