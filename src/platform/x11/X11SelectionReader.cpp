#include "platform/x11/X11SelectionReader.h"

#include <algorithm>
#include <string_view>

namespace vemo {

namespace {

using namespace std::chrono_literals;

/// Time is counted in ticks. However long the machine stands still, it is one, and then the owner
/// still has its time to answer.
constexpr auto tick = 50ms;
/// An owner that is there says at once what it has; making it may take longer, as big images are
/// encoded on request.
constexpr int answerTicks = 400ms / tick;
constexpr int contentTicks = 1500ms / tick;
constexpr int totalTicks = 3s / tick;
constexpr qsizetype maximumSnapshotBytes = 512LL * 1024 * 1024;
constexpr std::size_t maximumTargets = 256;

/// Targets that aren't content: questions about the selection, and requests with a side effect.
bool isContent(const QByteArray& name) {
  static constexpr std::array<std::string_view, 7> others{
      "TARGETS", "MULTIPLE",         "TIMESTAMP",      "SAVE_TARGETS",
      "DELETE",  "INSERT_SELECTION", "INSERT_PROPERTY"};
  return !name.isEmpty() && std::ranges::count(others, std::string_view(name)) == 0;
}

}  // namespace

X11SelectionReader::X11SelectionReader(X11Connection& connection, MainThread& mainThread,
                                       xcb_atom_t selection)
    : m_connection(connection),
      m_selection(selection),
      m_targets(connection.atom("TARGETS")),
      m_incremental(connection.atom("INCR")),
      m_property(connection.atom("VEMO_SELECTION")),
      m_finished(mainThread) {
  QObject::connect(&m_timer, &QTimer::timeout, &m_timer, [this] { countTick(); });
}

X11SelectionReader::~X11SelectionReader() {
  closeChannels();
}

void X11SelectionReader::start() {
  if (!m_timer.isActive()) m_timer.start(tick);
  m_startedAt = xcb_get_selection_owner(m_connection.xcb(), m_selection).sequence;
  const auto owner = m_connection.reply<xcb_get_selection_owner_reply_t>(m_startedAt);
  if (!owner || owner->owner == XCB_WINDOW_NONE) return finish();

  for (Channel& channel : m_channels) channel.window = m_connection.createHiddenWindow();
  m_stage = Stage::Targets;
  m_ticksWithoutProgress = 0;
  request(m_channels.front(), m_targets);
  m_connection.flush();
}

void X11SelectionReader::request(Channel& channel, xcb_atom_t target) {
  channel.state = Channel::State::Requested;
  channel.target = target;
  channel.received = {};
  xcb_convert_selection(m_connection.xcb(), channel.window, m_selection, target, m_property,
                        XCB_CURRENT_TIME);
}

void X11SelectionReader::handleSelectionNotify(const xcb_selection_notify_event_t& event) {
  Channel* channel = channelOf(event.requestor);
  if (!channel || channel->state != Channel::State::Requested || event.target != channel->target)
    return;
  m_ticksWithoutProgress = 0;
  if (event.property != m_property) return finishChannel(*channel, std::nullopt);

  auto value = m_connection.property(channel->window, m_property, X11Connection::AfterRead::Delete,
                                     bytesLeft());
  if (value && value->type == m_incremental) {
    channel->state = Channel::State::Incremental;
    m_connection.flush();
  } else {
    finishChannel(*channel, std::move(value));
  }
}

void X11SelectionReader::handlePropertyNotify(const xcb_property_notify_event_t& event) {
  Channel* channel = channelOf(event.window);
  if (!channel || channel->state != Channel::State::Incremental || event.atom != m_property ||
      event.state != XCB_PROPERTY_NEW_VALUE)
    return;
  m_ticksWithoutProgress = 0;
  const auto piece = m_connection.property(channel->window, m_property,
                                           X11Connection::AfterRead::Delete, bytesLeft());
  if (!piece) return finishChannel(*channel, std::nullopt);
  receivePiece(*channel, *piece);
  m_connection.flush();
}

void X11SelectionReader::receivePiece(Channel& channel, const X11Property& piece) {
  if (piece.data.isEmpty()) {
    if (channel.received.type == XCB_ATOM_NONE) channel.received.type = piece.type;
    return finishChannel(channel, std::move(channel.received));
  }
  channel.received.type = piece.type;
  channel.received.format = piece.format;
  channel.received.data.append(piece.data);
}

void X11SelectionReader::finishChannel(Channel& channel, std::optional<X11Property> value) {
  channel.state = Channel::State::Idle;
  if (m_stage == Stage::Targets) {
    readTargets(value);
  } else if (value) {
    X11Representation& representation = m_representations[channel.index];
    representation.type = value->type;
    representation.format = value->format;
    representation.data = std::move(value->data);
  }
  requestNext();
}

void X11SelectionReader::readTargets(const std::optional<X11Property>& targets) {
  m_stage = Stage::Contents;
  std::vector<xcb_atom_t> atoms;
  if (targets && targets->format == 32) {
    atoms = targets->numbers();
    atoms.resize(std::min(atoms.size(), maximumTargets));
  } else {
    // Old programs hand out text without being able to say so.
    m_areTargetsGuessed = true;
    atoms = {m_connection.atom("UTF8_STRING"), XCB_ATOM_STRING};
  }
  const std::vector<QByteArray> names = m_connection.atomNames(atoms);
  for (std::size_t i = 0; i < atoms.size(); ++i) {
    const bool isKnown =
        std::ranges::count(m_representations, atoms[i], &X11Representation::target) > 0;
    if (isContent(names[i]) && !isKnown)
      m_representations.push_back({atoms[i], XCB_ATOM_NONE, 8, {}});
  }
}

void X11SelectionReader::requestNext() {
  for (Channel& channel : m_channels) {
    if (channel.state != Channel::State::Idle || m_nextIndex == m_representations.size()) continue;
    channel.index = m_nextIndex++;
    request(channel, m_representations[channel.index].target);
  }
  m_connection.flush();
  const bool isIdle = std::ranges::all_of(
      m_channels, [](const Channel& channel) { return channel.state == Channel::State::Idle; });
  if (isIdle) finish();
}

void X11SelectionReader::handleOwnerChange(xcb_window_t owner, std::uint32_t sequence) {
  if (m_finished.isComplete() || X11Connection::isBefore(sequence, m_startedAt)) return;
  if (owner == XCB_WINDOW_NONE) return finish();
  closeChannels();
  m_representations.clear();
  m_nextIndex = 0;
  m_areTargetsGuessed = false;
  start();
}

void X11SelectionReader::countTick() {
  ++m_ticks;
  ++m_ticksWithoutProgress;
  // The tick in which the progress came isn't a whole one.
  const int patience = m_stage == Stage::Targets ? answerTicks : contentTicks;
  if (m_ticksWithoutProgress > patience || m_ticks >= totalTicks) finish();
}

void X11SelectionReader::finish() {
  if (m_finished.isComplete()) return;
  closeChannels();
  m_timer.stop();
  if (m_areTargetsGuessed) {
    std::erase_if(m_representations, [](const X11Representation& representation) {
      return representation.type == XCB_ATOM_NONE;
    });
  }
  for (X11Representation& representation : m_representations) {
    if (representation.type == XCB_ATOM_NONE) representation.type = representation.target;
  }
  m_finished.complete();
}

void X11SelectionReader::closeChannels() {
  for (Channel& channel : m_channels) {
    if (channel.window != XCB_WINDOW_NONE) xcb_destroy_window(m_connection.xcb(), channel.window);
    channel = {};
  }
  m_connection.flush();
}

X11SelectionReader::Channel* X11SelectionReader::channelOf(xcb_window_t window) {
  const auto channel = std::ranges::find(m_channels, window, &Channel::window);
  return channel == m_channels.end() ? nullptr : &*channel;
}

qsizetype X11SelectionReader::bytesLeft() const {
  qsizetype bytes = maximumSnapshotBytes;
  for (const X11Representation& representation : m_representations)
    bytes -= representation.data.size();
  for (const Channel& channel : m_channels) bytes -= channel.received.data.size();
  return std::max<qsizetype>(bytes, 0);
}

}  // namespace vemo
