#include "contract/x11/ScriptedOwner.h"

#include <QTimer>
#include <algorithm>

namespace vemo {

ScriptedOwner::ScriptedOwner(std::vector<Target> targets)
    : m_connection(X11Connection::create()), m_targets(std::move(targets)) {
  m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handleEvent(event); });
  xcb_set_selection_owner(m_connection->xcb(), m_connection->window(),
                          m_connection->atom("CLIPBOARD"), XCB_CURRENT_TIME);
  m_connection->synchronize();
}

void ScriptedOwner::handleEvent(const xcb_generic_event_t& event) {
  if (event.response_type == XCB_SELECTION_REQUEST)
    answer(reinterpret_cast<const xcb_selection_request_event_t&>(event));
  if (event.response_type == XCB_PROPERTY_NOTIFY) {
    const auto& notification = reinterpret_cast<const xcb_property_notify_event_t&>(event);
    if (notification.state == XCB_PROPERTY_DELETE)
      sendNextPiece(notification.window, notification.atom);
  }
}

void ScriptedOwner::answer(const xcb_selection_request_event_t& request) {
  ++m_requestCount;
  if (request.target == m_connection->atom("TARGETS")) return answerTargets(request);
  const auto target = std::ranges::find_if(m_targets, [&](const Target& candidate) {
    return m_connection->atom(candidate.name) == request.target;
  });
  if (target == m_targets.end()) return notify(request, XCB_ATOM_NONE);
  if (target->name == m_lastWish) {
    // Not from inside the connection's own event handler.
    QTimer::singleShot(0, [this] { die(); });
    return;
  }

  const xcb_atom_t type = m_connection->atom(target->type.isEmpty() ? target->name : target->type);
  switch (target->manner) {
    case Manner::AtOnce:
      xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, request.requestor,
                          request.property, type, static_cast<uint8_t>(target->format),
                          static_cast<uint32_t>(target->data.size() * 8 / target->format),
                          target->data.constData());
      break;
    case Manner::Refuse:
      return notify(request, XCB_ATOM_NONE);
    case Manner::NeverAnswer:
      return;
    case Manner::NameATypeAndNothingElse:
      break;
    case Manner::InPieces:
    case Manner::StallAfterTheFirstPiece: {
      const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE;
      xcb_change_window_attributes(m_connection->xcb(), request.requestor, XCB_CW_EVENT_MASK,
                                   &mask);
      m_transfers[{request.requestor, request.property}] = {
          target->data, type, target->manner == Manner::StallAfterTheFirstPiece};
      [[fallthrough]];
    }
    case Manner::AnnouncePiecesAndStall: {
      const auto size = static_cast<uint32_t>(target->data.size());
      xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, request.requestor,
                          request.property, m_connection->atom("INCR"), 32, 1, &size);
      break;
    }
  }
  notify(request, request.property);
}

void ScriptedOwner::answerTargets(const xcb_selection_request_event_t& request) {
  if (m_targetsManner == Manner::NeverAnswer) return;
  if (m_targetsManner == Manner::Refuse) return notify(request, XCB_ATOM_NONE);
  std::vector<xcb_atom_t> atoms{m_connection->atom("TARGETS"), m_connection->atom("MULTIPLE"),
                                m_connection->atom("TIMESTAMP"),
                                m_connection->atom("SAVE_TARGETS")};
  for (const Target& target : m_targets) atoms.push_back(m_connection->atom(target.name));
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, request.requestor,
                      request.property, XCB_ATOM_ATOM, 32, static_cast<uint32_t>(atoms.size()),
                      atoms.data());
  notify(request, request.property);
}

void ScriptedOwner::sendNextPiece(xcb_window_t requestor, xcb_atom_t property) {
  const auto found = m_transfers.find({requestor, property});
  if (found == m_transfers.end()) return;
  Transfer& transfer = found->second;
  const QByteArray piece = transfer.rest.left(pieceBytes);
  transfer.rest.remove(0, piece.size());
  xcb_change_property(m_connection->xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                      transfer.type, 8, static_cast<uint32_t>(piece.size()), piece.constData());
  if (piece.isEmpty() || transfer.stallsAfterNext) m_transfers.erase(found);
}

void ScriptedOwner::notify(const xcb_selection_request_event_t& request, xcb_atom_t property) {
  xcb_selection_notify_event_t event{};
  event.response_type = XCB_SELECTION_NOTIFY;
  event.requestor = request.requestor;
  event.selection = request.selection;
  event.target = request.target;
  event.property = property;
  xcb_send_event(m_connection->xcb(), 0, request.requestor, 0,
                 reinterpret_cast<const char*>(&event));
  m_connection->flush();
}

}  // namespace vemo
