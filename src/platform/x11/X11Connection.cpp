#include "platform/x11/X11Connection.h"

#include <poll.h>
#include <xcb/xcbext.h>

#include <QAbstractEventDispatcher>
#include <QMetaObject>
#include <algorithm>
#include <cerrno>
#include <cstring>

#include "platform/x11/WaitLimit.h"

namespace vemo {

namespace {

using SteadyClock = std::chrono::steady_clock;

constexpr std::chrono::seconds replyTimeout{2};
/// Long properties are read in pieces, so that no single reply occupies the server for long.
constexpr uint32_t propertyPieceBytes = 8 * 1024 * 1024;

}  // namespace

std::vector<std::uint32_t> X11Property::numbers() const {
  if (format != 32 || data.isEmpty()) return {};
  std::vector<std::uint32_t> values(data.size() / sizeof(std::uint32_t));
  std::memcpy(values.data(), data.constData(), values.size() * sizeof(std::uint32_t));
  return values;
}

std::unique_ptr<X11Connection> X11Connection::create(const QByteArray& displayName) {
  int screenNumber = 0;
  xcb_connection_t* connection =
      xcb_connect(displayName.isEmpty() ? nullptr : displayName.constData(), &screenNumber);
  if (xcb_connection_has_error(connection)) {
    xcb_disconnect(connection);
    return nullptr;
  }
  std::unique_ptr<X11Connection> created(new X11Connection(connection, screenNumber));
  return created->root() == XCB_WINDOW_NONE ? nullptr : std::move(created);
}

X11Connection::X11Connection(xcb_connection_t* connection, int screenNumber)
    : m_connection(connection) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(m_connection));
  for (int number = 0; screens.rem && number < screenNumber; ++number) xcb_screen_next(&screens);
  if (!screens.rem) return;
  m_root = screens.data->root;
  m_window = createHiddenWindow();
  flush();

  m_notifier = std::make_unique<QSocketNotifier>(xcb_get_file_descriptor(m_connection),
                                                 QSocketNotifier::Read);
  QObject::connect(m_notifier.get(), &QSocketNotifier::activated, m_notifier.get(),
                   [this] { processEvents(); });
  QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::aboutToBlock,
                   m_notifier.get(), [this] { takeEvents(xcb_poll_for_queued_event); });
}

X11Connection::~X11Connection() {
  m_notifier.reset();
  xcb_disconnect(m_connection);
}

xcb_window_t X11Connection::createHiddenWindow() {
  const xcb_window_t window = xcb_generate_id(m_connection);
  const uint32_t eventMask = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, -10, -10, 1, 1, 0,
                    XCB_WINDOW_CLASS_INPUT_ONLY, XCB_COPY_FROM_PARENT, XCB_CW_EVENT_MASK,
                    &eventMask);
  return window;
}

std::optional<xcb_query_extension_reply_t> X11Connection::extension(
    xcb_extension_t& extension) const {
  const xcb_query_extension_reply_t* data = xcb_get_extension_data(m_connection, &extension);
  if (!data || !data->present) return std::nullopt;
  return *data;
}

void* X11Connection::waitForReply(unsigned int sequence) {
  flush();
  WaitLimit limit(m_isStalled ? replyTimeout * 0 : replyTimeout, SteadyClock::now());
  while (true) {
    takeEvents(xcb_poll_for_event);
    void* reply = nullptr;
    xcb_generic_error_t* error = nullptr;
    if (xcb_poll_for_reply(m_connection, sequence, &reply, &error)) {
      std::free(error);
      return reply;
    }
    if (!waitForInput(limit)) {
      xcb_discard_reply(m_connection, sequence);
      m_isStalled = true;
      return nullptr;
    }
    m_isStalled = false;
  }
}

bool X11Connection::waitForInput(WaitLimit& limit) const {
  pollfd input{xcb_get_file_descriptor(m_connection), POLLIN, 0};
  while (isAlive()) {
    const auto wait = limit.nextWait(SteadyClock::now());
    if (wait.count() <= 0) return false;
    const int ready = poll(&input, 1, static_cast<int>(wait.count()));
    if (ready > 0) return true;
    if (ready < 0 && errno != EINTR) return false;
  }
  return false;
}

void X11Connection::synchronize() {
  reply<xcb_get_input_focus_reply_t>(xcb_get_input_focus(m_connection).sequence);
}

xcb_atom_t X11Connection::atom(const QByteArray& name) {
  if (const auto known = m_atoms.constFind(name); known != m_atoms.cend()) return *known;
  const auto answer = reply<xcb_intern_atom_reply_t>(
      xcb_intern_atom(m_connection, 0, static_cast<uint16_t>(name.size()), name.constData())
          .sequence);
  if (!answer) return XCB_ATOM_NONE;
  m_atoms.insert(name, answer->atom);
  m_atomNames.insert(answer->atom, name);
  return answer->atom;
}

std::vector<QByteArray> X11Connection::atomNames(std::span<const xcb_atom_t> atoms) {
  std::vector<std::pair<xcb_atom_t, unsigned int>> requests;
  for (const xcb_atom_t atom : atoms) {
    if (!m_atomNames.contains(atom))
      requests.emplace_back(atom, xcb_get_atom_name(m_connection, atom).sequence);
  }
  for (const auto& [atom, sequence] : requests) {
    const auto answer = reply<xcb_get_atom_name_reply_t>(sequence);
    if (!answer) continue;
    m_atomNames.insert(atom, QByteArray(xcb_get_atom_name_name(answer.get()),
                                        xcb_get_atom_name_name_length(answer.get())));
  }
  std::vector<QByteArray> names;
  for (const xcb_atom_t atom : atoms) names.push_back(m_atomNames.value(atom));
  return names;
}

std::optional<X11Property> X11Connection::property(xcb_window_t window, xcb_atom_t name,
                                                   AfterRead afterRead, qsizetype maximumBytes) {
  X11Property property;
  uint32_t remainingBytes = 0;
  do {
    const auto offset = static_cast<uint32_t>(property.data.size() / 4);
    const auto piece = reply<xcb_get_property_reply_t>(
        xcb_get_property(m_connection, afterRead == AfterRead::Delete, window, name,
                         XCB_GET_PROPERTY_TYPE_ANY, offset, propertyPieceBytes / 4)
            .sequence);
    if (!piece || piece->type == XCB_ATOM_NONE) return std::nullopt;
    remainingBytes = piece->bytes_after;
    const qsizetype pieceBytes = xcb_get_property_value_length(piece.get());
    const bool isTooLong = property.data.size() + pieceBytes + remainingBytes > maximumBytes;
    if (isTooLong || (remainingBytes > 0 && pieceBytes == 0)) {
      if (afterRead == AfterRead::Delete) xcb_delete_property(m_connection, window, name);
      return std::nullopt;
    }
    property.type = piece->type;
    property.format = piece->format;
    if (property.data.isEmpty() && remainingBytes > 0)
      property.data.reserve(pieceBytes + remainingBytes);
    property.data.append(static_cast<const char*>(xcb_get_property_value(piece.get())), pieceBytes);
  } while (remainingBytes > 0);
  return property;
}

/// What xcb has read no longer wakes the notifier, and it reads with each flush and each reply.
void X11Connection::takeEvents(xcb_generic_event_t* (*poll)(xcb_connection_t*)) {
  const bool wereEvents = !m_events.empty();
  while (xcb_generic_event_t* event = poll(m_connection)) m_events.emplace_back(event);
  if (!isAlive()) {
    // A dead socket stays readable for ever.
    if (m_notifier->isEnabled()) {
      m_notifier->setEnabled(false);
      const auto tell = [this] {
        if (m_closedHandler) m_closedHandler();
      };
      QMetaObject::invokeMethod(m_notifier.get(), tell, Qt::QueuedConnection);
    }
  } else if (!wereEvents && !m_events.empty()) {
    QMetaObject::invokeMethod(m_notifier.get(), [this] { processEvents(); }, Qt::QueuedConnection);
  }
}

void X11Connection::processEvents() {
  takeEvents(xcb_poll_for_event);
  while (!m_events.empty()) {
    const auto event = std::move(m_events.front());
    m_events.pop_front();
    if (m_handler && event->response_type != 0) m_handler(*event);
  }
  flush();
}

bool X11Connection::processEventsUntil(const std::function<bool()>& isDone,
                                       std::chrono::milliseconds time) {
  WaitLimit limit(time, SteadyClock::now());
  processEvents();
  while (!isDone()) {
    if (!waitForInput(limit)) return false;
    processEvents();
  }
  return true;
}

}  // namespace vemo
