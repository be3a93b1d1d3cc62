#include "contract/x11/SelectionRequestor.h"

#include <cstring>

#include "contract/x11/EventLoop.h"

namespace vemo {

namespace {
constexpr qsizetype noLimit = 1LL << 31;
const QByteArray propertyName = "TEST_PROPERTY";
}  // namespace

SelectionRequestor::SelectionRequestor() : m_connection(X11Connection::create()) {
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) {
    const int type = event.response_type & 0x7F;
    if (type == XCB_SELECTION_NOTIFY)
      m_notifiedProperty = reinterpret_cast<const xcb_selection_notify_event_t&>(event).property;
    if (type == XCB_PROPERTY_NOTIFY &&
        reinterpret_cast<const xcb_property_notify_event_t&>(event).state == XCB_PROPERTY_NEW_VALUE)
      ++m_newValues;
  });
}

void SelectionRequestor::convert(const QByteArray& target) {
  m_notifiedProperty.reset();
  xcb_convert_selection(m_connection->xcb(), m_connection->window(),
                        m_connection->atom("CLIPBOARD"), m_connection->atom(target),
                        m_connection->atom(propertyName), XCB_CURRENT_TIME);
  m_connection->flush();
  EventLoop::runUntil([this] { return m_notifiedProperty.has_value(); });
}

std::optional<X11Property> SelectionRequestor::readPieces(const QByteArray& property) {
  X11Property whole;
  while (true) {
    m_newValues = 0;
    auto piece = m_connection->property(m_connection->window(), m_connection->atom(property),
                                        X11Connection::AfterRead::Delete, noLimit);
    m_connection->flush();
    if (!piece) return std::nullopt;
    if (piece->type != m_connection->atom("INCR") && whole.type == XCB_ATOM_NONE) return piece;
    if (piece->type != m_connection->atom("INCR")) {
      if (piece->data.isEmpty()) return whole;
      whole.type = piece->type;
      whole.format = piece->format;
      whole.data += piece->data;
    } else {
      whole.type = piece->type;
    }
    if (!EventLoop::runUntil([this] { return m_newValues > 0; })) return std::nullopt;
  }
}

SelectionRequestor::Answer SelectionRequestor::answerOf(const X11Property& property) {
  return {m_connection->atomNames({&property.type, 1}).front(), property.format, property.data};
}

std::optional<SelectionRequestor::Answer> SelectionRequestor::request(const QByteArray& target) {
  convert(target);
  if (m_notifiedProperty.value_or(XCB_ATOM_NONE) == XCB_ATOM_NONE) return std::nullopt;
  const auto value = readPieces(propertyName);
  return value ? std::optional(answerOf(*value)) : std::nullopt;
}

std::vector<QByteArray> SelectionRequestor::targets() {
  const auto answer = request("TARGETS");
  if (!answer) return {};
  std::vector<xcb_atom_t> atoms(answer->data.size() / sizeof(xcb_atom_t));
  std::memcpy(atoms.data(), answer->data.constData(), atoms.size() * sizeof(xcb_atom_t));
  return m_connection->atomNames(atoms);
}

std::vector<std::optional<SelectionRequestor::Answer>> SelectionRequestor::requestMultiple(
    const std::vector<QByteArray>& targets) {
  std::vector<xcb_atom_t> pairs;
  for (const QByteArray& target : targets) {
    pairs.push_back(m_connection->atom(target));
    pairs.push_back(m_connection->atom("FOR_" + target));
  }
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, m_connection->window(),
                      m_connection->atom(propertyName), m_connection->atom("ATOM_PAIR"), 32,
                      static_cast<uint32_t>(pairs.size()), pairs.data());
  convert("MULTIPLE");
  std::vector<std::optional<Answer>> answers;
  const auto list = m_connection->property(m_connection->window(), m_connection->atom(propertyName),
                                           X11Connection::AfterRead::Delete, noLimit);
  if (!list || list->data.size() != qsizetype(pairs.size() * sizeof(xcb_atom_t))) return answers;
  std::memcpy(pairs.data(), list->data.constData(), list->data.size());
  for (std::size_t i = 0; i < targets.size(); ++i) {
    std::optional<X11Property> value;
    if (pairs[2 * i + 1] != XCB_ATOM_NONE) value = readPieces("FOR_" + targets[i]);
    answers.push_back(value ? std::optional(answerOf(*value)) : std::nullopt);
  }
  return answers;
}

void SelectionRequestor::requestAndVanish(const QByteArray& target) {
  convert(target);
  m_connection->property(m_connection->window(), m_connection->atom(propertyName),
                         X11Connection::AfterRead::Delete, noLimit);
  m_connection.reset();
}

}  // namespace vemo
