#include "platform/x11/X11KeyEventSource.h"

#include <algorithm>
#include <chrono>

namespace vemo {

namespace {
constexpr std::chrono::seconds comparisonInterval{1};
constexpr std::chrono::seconds recoveryInterval{1};
}  // namespace

struct X11KeyEventSource::Link {
  static std::unique_ptr<Link> create(const QByteArray& displayName, xcb_window_t ownKeysWindow) {
    auto connection = X11Connection::create(displayName);
    if (!connection) return nullptr;
    const auto input = X11RawInput::create(*connection);
    auto symbols = X11KeySymbols::create(*connection);
    if (!input || !symbols) return nullptr;
    const X11OwnKeys ownKeys(*connection, ownKeysWindow);
    return std::unique_ptr<Link>(
        new Link{std::move(connection), *input, std::move(symbols), ownKeys});
  }

  std::unique_ptr<X11Connection> connection;
  X11RawInput input;
  std::unique_ptr<X11KeySymbols> symbols;
  X11OwnKeys ownKeys;
};

X11KeyEventSource::X11KeyEventSource(xcb_window_t ownKeysWindow, QByteArray displayName)
    : m_ownKeysWindow(ownKeysWindow), m_displayName(std::move(displayName)) {
  for (QTimer* timer : {&m_comparison, &m_recovery, &m_delivery}) timer->setSingleShot(true);
  QObject::connect(&m_comparison, &QTimer::timeout, &m_comparison, [this] { compareWithServer(); });
  QObject::connect(&m_recovery, &QTimer::timeout, &m_recovery, [this] { start(); });
  QObject::connect(&m_delivery, &QTimer::timeout, &m_delivery, [this] { deliver(); });
}

X11KeyEventSource::~X11KeyEventSource() = default;

// Listening

bool X11KeyEventSource::canListen() {
  const bool isAlive = m_link && m_link->connection->isAlive();
  // While it is started, a connection is made again by what makes it listen again as well.
  if (isAlive || m_isStarted) return isAlive;
  m_link.reset();
  return connect();
}

bool X11KeyEventSource::start() {
  if (m_link && !m_link->connection->isAlive()) loseConnection();
  const bool isListening = m_isStarted && m_link;
  if (!m_link && !connect()) {
    if (m_isStarted) m_recovery.start(recoveryInterval);
    return false;
  }
  m_isStarted = true;
  if (!isListening) listen();
  return true;
}

void X11KeyEventSource::stop() {
  m_isStarted = false;
  m_comparison.stop();
  m_recovery.stop();
  m_delivery.stop();
  m_news.clear();
  m_held.clear();
  if (!m_link) return;
  m_link->input.selectKeys(false);
  m_link->input.selectHierarchy(false);
  m_link->connection->flush();
}

bool X11KeyEventSource::connect() {
  m_link = Link::create(m_displayName, m_ownKeysWindow);
  if (!m_link) return false;
  m_link->connection->setEventHandler(
      [this](const xcb_generic_event_t& event) { handleEvent(event); });
  m_link->connection->setClosedHandler([this] {
    if (m_isStarted) m_recovery.start(0);
  });
  return true;
}

void X11KeyEventSource::listen() {
  m_listeningSince = m_link->input.selectKeys(true);
  m_link->input.selectHierarchy(true);
  const auto keyboards = m_link->input.keyboards();
  if (!keyboards) return;
  noteVirtualKeyboards(*keyboards);
  for (const auto& keyboard : *keyboards) {
    const auto held = m_link->input.heldKeys(keyboard.id);
    for (std::size_t code = 0; held && code < held->keys.size(); ++code) {
      const Place place(keyboard.id, code);
      if (held->keys[code]) m_held.emplace(place, HeldKey{virtualKey(place), held->fullSequence});
    }
  }
  if (!m_held.empty()) m_comparison.start(comparisonInterval);
}

/// What is held can't be known from here on.
void X11KeyEventSource::loseConnection() {
  m_link.reset();
  m_held.clear();
  m_comparison.stop();
  if (m_isStarted) tellInterrupted();
}

// Keys

void X11KeyEventSource::handleEvent(const xcb_generic_event_t& event) {
  m_link->symbols->handleEvent(event);
  m_link->ownKeys.handleEvent(event);
  if (!m_isStarted) return;
  if (m_link->input.isHierarchyEvent(event)) {
    m_link->symbols->forget();
    m_comparison.start(0);
  } else if (const auto key = m_link->input.keyEvent(event)) {
    handleKey(*key);
  }
}

void X11KeyEventSource::handleKey(const X11RawInput::KeyEvent& event) {
  if (isOwn(event) || X11Connection::isBefore(event.fullSequence, m_listeningSince)) return;
  const Place place(event.keyboard, event.keyCode);
  const auto held = m_held.find(place);
  if (event.strike == Strike::Press) {
    if (held != m_held.end()) return;  // it repeats
    const X11VirtualKey key = virtualKey(place);
    m_held.emplace(place, HeldKey{key, event.fullSequence});
    if (!m_comparison.isActive()) m_comparison.start(comparisonInterval);
    tellKey(Strike::Press, key);
  } else if (held != m_held.end()) {
    const X11VirtualKey key = held->second.key;
    m_held.erase(held);
    tellKey(Strike::Release, key);
  }
}

bool X11KeyEventSource::isOwn(const X11RawInput::KeyEvent& event) {
  if (!m_virtualKeyboards.contains(event.keyboard)) return false;
  if (!m_link->ownKeys.take(event.strike, event.keyCode)) return false;
  const auto held = m_held.find({event.keyboard, event.keyCode});
  if (held != m_held.end()) held->second.isLifted = event.strike == Strike::Release;
  return true;
}

X11VirtualKey X11KeyEventSource::virtualKey(const Place& place) {
  const auto& [keyboard, keyCode] = place;
  const bool hasFnKey = m_link->symbols->hasSymbol(keyboard, XKB_KEY_XF86Fn);
  return x11VirtualKey(keyCode, m_link->symbols->plainSymbol(keyboard, keyCode),
                       hasFnKey ? FnKey::Reported : FnKey::StoodFor);
}

// Lost key-ups

void X11KeyEventSource::noteVirtualKeyboards(const std::vector<X11RawInput::Keyboard>& keyboards) {
  m_virtualKeyboards.clear();
  for (const auto& keyboard : keyboards) {
    if (keyboard.isVirtual) m_virtualKeyboards.insert(keyboard.id);
  }
}

void X11KeyEventSource::compareWithServer() {
  const auto keyboards = m_link ? m_link->input.keyboards() : std::nullopt;
  if (!keyboards) return;
  noteVirtualKeyboards(*keyboards);
  std::set<std::uint16_t> present;
  for (const auto& keyboard : *keyboards) present.insert(keyboard.id);
  std::map<std::uint16_t, X11RawInput::HeldKeys> truth;
  for (const auto& [place, held] : m_held) {
    const std::uint16_t keyboard = place.first;
    if (truth.contains(keyboard) || !present.contains(keyboard)) continue;
    if (const auto keys = m_link->input.heldKeys(keyboard)) truth.emplace(keyboard, *keys);
  }
  // Key-ups that came before the answers are no longer news to the server, nor to us from here on.
  m_link->connection->processEvents();

  const auto wentUpUnheard = [&](const auto& entry) {
    const auto& [place, held] = entry;
    const auto& [keyboard, keyCode] = place;
    if (!present.contains(keyboard)) return true;
    const auto answer = truth.find(keyboard);
    return answer != truth.end() && keyCode < answer->second.keys.size() &&
           !answer->second.keys[keyCode] && !held.isLifted &&
           X11Connection::isBefore(held.pressedAt, answer->second.fullSequence);
  };
  if (std::erase_if(m_held, wentUpUnheard) > 0) tellInterrupted();
  if (!m_held.empty()) m_comparison.start(comparisonInterval);
}

// Telling

ModifierFlags X11KeyEventSource::modifierFlags() const {
  if (m_link && m_isStarted) {
    const bool wasReadingAhead = std::exchange(m_isReadingAhead, true);
    m_link->connection->synchronize();
    m_link->connection->processEvents();
    m_isReadingAhead = wasReadingAhead;
  }
  return heldFlags();
}

ModifierFlags X11KeyEventSource::heldFlags() const {
  ModifierFlags flags = 0;
  for (const auto& [place, held] : m_held) flags |= held.key.flag;
  return flags;
}

void X11KeyEventSource::tellKey(Strike strike, const X11VirtualKey& key) {
  using Type = KeyEvent::Type;
  const Type plainType = strike == Strike::Press ? Type::KeyDown : Type::KeyUp;
  m_news.emplace_back(
      KeyEvent{key.isModifier ? Type::FlagsChanged : plainType, key.code, heldFlags()});
  deliver();
}

void X11KeyEventSource::tellInterrupted() {
  m_news.emplace_back(std::nullopt);
  deliver();
}

void X11KeyEventSource::deliver() {
  if (m_isReadingAhead) return m_delivery.start(0);
  while (!m_news.empty()) {
    const auto news = m_news.front();
    m_news.pop_front();
    if (news && onEvent) onEvent(*news);
    if (!news && onInterrupted) onInterrupted();
  }
}

}  // namespace vemo
