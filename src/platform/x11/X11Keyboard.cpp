#include "platform/x11/X11Keyboard.h"

#include <xcb/xtest.h>

#include <ranges>
#include <utility>

#include "platform/x11/X11OwnKeys.h"
#include "platform/x11/XcbXkb.h"

namespace vemo {

namespace {

constexpr std::uint8_t allModifiers = 0xFF;

}  // namespace

std::shared_ptr<X11Keyboard> X11Keyboard::create(const QByteArray& displayName) {
  auto connection = X11Connection::create(displayName);
  if (!connection || !connection->extension(xcb_test_id)) return nullptr;
  const auto input = X11RawInput::create(*connection);
  if (!input) return nullptr;
  auto keymap = X11Keymap::create(*connection);
  if (!keymap) return nullptr;
  return std::shared_ptr<X11Keyboard>(
      new X11Keyboard(std::move(connection), std::move(keymap), *input));
}

X11Keyboard::X11Keyboard(std::unique_ptr<X11Connection> connection,
                         std::unique_ptr<X11Keymap> keymap, X11RawInput input)
    : m_connection(std::move(connection)), m_keymap(std::move(keymap)), m_input(input) {
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  m_connection->synchronize();
}

// What is taken down after this speaks to the server and must not be told of events.
X11Keyboard::~X11Keyboard() {
  m_connection->setEventHandler({});
}

X11Keys X11Keyboard::pressedKeys() {
  const auto request = xcb_query_keymap(m_connection->xcb());
  const auto answer = m_connection->reply<xcb_query_keymap_reply_t>(request.sequence);
  X11Keys keys;
  if (!answer) return keys;
  m_readAt = request.sequence;
  for (std::size_t code = 0; code < keys.size(); ++code)
    keys[code] = (answer->keys[code / 8] >> (code % 8)) & 1;
  return keys;
}

ModifierFlags X11Keyboard::heldModifiers() {
  m_connection->processEvents();
  const X11Keys pressed = pressedKeys();
  ModifierFlags flags = 0;
  for (std::size_t code = 0; code < pressed.size(); ++code) {
    if (pressed[code]) flags |= m_keymap->modifierFlag(static_cast<xcb_keycode_t>(code));
  }
  return flags;
}

X11Keyboard::Locks X11Keyboard::locks() {
  const auto state = m_connection->reply<xcb_xkb_get_state_reply_t>(
      xcb_xkb_get_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD).sequence);
  if (!state) return {};
  return {state->lockedGroup, state->lockedMods};
}

void X11Keyboard::strikeChord(const KeyChord& chord) {
  m_connection->processEvents();
  const Locks before = locks();
  const bool hasGroups = m_keymap->groupCount() > 1;
  watchUsersKeys(true);
  m_usersKeys = pressedKeys();
  m_onBehalf.clear();
  m_isStriking = true;

  for (std::size_t i = 0; i < m_usersKeys.size(); ++i) {
    const auto code = static_cast<xcb_keycode_t>(i);
    if (m_usersKeys[i] && m_keymap->isHeldModifier(code)) m_lifted.insert(code);
  }
  if (!m_lifted.empty()) postMeaninglessKey();
  // A key that counts as down already can't be pressed, and another program may have left the
  // virtual keyboard's own that way.
  m_lifted.insert(chord.modifiers.begin(), chord.modifiers.end());
  m_lifted.insert(chord.key.code);
  for (const xcb_keycode_t code : m_lifted) post(Strike::Release, code);

  // Modifiers latched by sticky keys are meant for the user's next key, not for ours.
  xcb_xkb_latch_lock_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, 0, 0, 0, 0, allModifiers,
                           0, 0);
  for (const xcb_keycode_t code : chord.modifiers) post(Strike::Press, code);
  // Where Control and Shift together switch layouts, the second of them acts as that switch and not
  // as a modifier. So the key is struck with its group and the modifiers locked in.
  const std::uint8_t lacking = chord.modifierMask & ~before.modifiers;
  if (hasGroups) lock(chord.key.group, lacking, lacking);
  post(Strike::Press, chord.key.code);
  if (hasGroups) lock(before.group, lacking, 0);
  post(Strike::Release, chord.key.code, pasteKeyGap);
  for (const xcb_keycode_t code : chord.modifiers | std::views::reverse)
    post(Strike::Release, code);
  m_connection->flush();
}

void X11Keyboard::giveModifiersBack() {
  // The answer comes once the chord is up.
  m_connection->synchronize();
  m_connection->processEvents();

  m_isStriking = false;
  for (const xcb_keycode_t code : std::exchange(m_lifted, {})) {
    if (!m_usersKeys[code] || !m_keymap->isHeldModifier(code)) continue;
    post(Strike::Press, code);
    m_onBehalf.insert(code);
  }
  if (!m_onBehalf.empty()) postMeaninglessKey();
  // The user may have let go of one just before it was pressed again.
  m_connection->synchronize();
  m_connection->processEvents();
  stopWatchingWhenIdle();
}

void X11Keyboard::strikeMeaninglessKey() {
  m_connection->processEvents();
  postMeaninglessKey();
  if (!m_isWatching) m_posted.clear();
  m_connection->flush();
}

void X11Keyboard::postMeaninglessKey() {
  const auto code = m_keymap->meaninglessKey();
  if (!code) return;
  post(Strike::Press, *code);
  post(Strike::Release, *code);
}

void X11Keyboard::post(Strike strike, xcb_keycode_t code, std::chrono::milliseconds delay) {
  const std::uint8_t event = strike == Strike::Press ? XCB_KEY_PRESS : XCB_KEY_RELEASE;
  X11OwnKeys::announce(*m_connection, strike, code);
  m_posted.insert(xcb_test_fake_input(m_connection->xcb(), event, code,
                                      static_cast<std::uint32_t>(delay.count()),
                                      m_connection->root(), 0, 0, 0)
                      .sequence);
  // Moves the sequence on, too, so that no event of the user carries the number of one of ours.
  X11OwnKeys::conclude(*m_connection);
}

void X11Keyboard::lock(X11Keymap::Group group, std::uint8_t affectedModifiers,
                       std::uint8_t modifiers) {
  xcb_xkb_latch_lock_state(m_connection->xcb(), XCB_XKB_ID_USE_CORE_KBD, affectedModifiers,
                           modifiers, 1, static_cast<std::uint8_t>(group), 0, 0, 0);
}

void X11Keyboard::watchUsersKeys(bool isWatching) {
  m_isWatching = isWatching;
  m_input.selectKeys(isWatching);
}

void X11Keyboard::handleEvent(const xcb_generic_event_t& event) {
  m_keymap->handleEvent(event);
  const auto key = m_isWatching ? m_input.keyEvent(event) : std::nullopt;
  if (!key || key->keyCode >= m_usersKeys.size()) return;
  if (X11Connection::isBefore(key->fullSequence, m_readAt) || m_posted.contains(key->fullSequence))
    return;
  handleUsersKey(key->strike, static_cast<xcb_keycode_t>(key->keyCode));
}

void X11Keyboard::handleUsersKey(Strike strike, xcb_keycode_t code) {
  m_usersKeys[code] = strike == Strike::Press;
  if (m_isStriking || strike == Strike::Press || m_onBehalf.erase(code) == 0) return;
  post(Strike::Release, code);
  stopWatchingWhenIdle();
}

void X11Keyboard::stopWatchingWhenIdle() {
  if (m_isStriking || !m_onBehalf.empty() || !m_isWatching) return;
  watchUsersKeys(false);
  m_posted.clear();
  m_connection->flush();
}

}  // namespace vemo
