#include "platform/x11/X11SelectionOffer.h"

#include <algorithm>

namespace vemo {

namespace {

constexpr qsizetype maximumMultipleBytes = 64 * 1024;

void notify(X11Connection& connection, const xcb_selection_request_event_t& request,
            xcb_atom_t property) {
  xcb_selection_notify_event_t event{};
  event.response_type = XCB_SELECTION_NOTIFY;
  event.time = request.time;
  event.requestor = request.requestor;
  event.selection = request.selection;
  event.target = request.target;
  event.property = property;
  xcb_send_event(connection.xcb(), 0, request.requestor, XCB_EVENT_MASK_NO_EVENT,
                 reinterpret_cast<const char*>(&event));
}

}  // namespace

X11SelectionOffer::X11SelectionOffer(X11Connection& connection, X11IncrementalSender& sender,
                                     std::vector<X11Representation> representations,
                                     xcb_timestamp_t since)
    : m_connection(connection),
      m_sender(sender),
      m_representations(std::move(representations)),
      m_since(since),
      m_targets(connection.atom("TARGETS")),
      m_timestamp(connection.atom("TIMESTAMP")),
      m_multiple(connection.atom("MULTIPLE")) {}

void X11SelectionOffer::refuse(X11Connection& connection,
                               const xcb_selection_request_event_t& request) {
  notify(connection, request, XCB_ATOM_NONE);
}

void X11SelectionOffer::answer(const xcb_selection_request_event_t& request) {
  // Requestors of old name no property and mean the one that is called like the target.
  const xcb_atom_t property = request.property ? request.property : request.target;
  const Conversion conversion = request.target == m_multiple
                                    ? convertMultiple(request.requestor, request.property)
                                    : convert(request.requestor, request.target, property);
  notify(m_connection, request, conversion == Conversion::Done ? property : XCB_ATOM_NONE);
}

std::vector<xcb_atom_t> X11SelectionOffer::targets() const {
  std::vector<xcb_atom_t> atoms;
  for (const X11Representation& representation : m_representations)
    atoms.push_back(representation.target);
  return atoms;
}

X11SelectionOffer::Conversion X11SelectionOffer::convert(xcb_window_t requestor, xcb_atom_t target,
                                                         xcb_atom_t property) {
  if (target == m_targets) {
    std::vector<xcb_atom_t> atoms{m_targets, m_timestamp, m_multiple};
    std::ranges::copy(targets(), std::back_inserter(atoms));
    xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        XCB_ATOM_ATOM, 32, static_cast<uint32_t>(atoms.size()), atoms.data());
    return Conversion::Done;
  }
  if (target == m_timestamp) {
    xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                        XCB_ATOM_INTEGER, 32, 1, &m_since);
    return Conversion::Done;
  }
  const auto found = std::ranges::find(m_representations, target, &X11Representation::target);
  if (found == m_representations.end()) return Conversion::Refused;
  write(requestor, property, *found);
  return Conversion::Done;
}

X11SelectionOffer::Conversion X11SelectionOffer::convertMultiple(xcb_window_t requestor,
                                                                 xcb_atom_t property) {
  if (property == XCB_ATOM_NONE) return Conversion::Refused;
  const auto list = m_connection.property(requestor, property, X11Connection::AfterRead::Keep,
                                          maximumMultipleBytes);
  if (!list || list->format != 32) return Conversion::Refused;

  // Each pair is a target and the property for its answer.
  std::vector<xcb_atom_t> pairs = list->numbers();
  for (std::size_t i = 0; i + 1 < pairs.size(); i += 2) {
    const xcb_atom_t target = pairs[i];
    xcb_atom_t& answer = pairs[i + 1];
    const bool canConvert = target != m_multiple && answer != XCB_ATOM_NONE;
    if (!canConvert || convert(requestor, target, answer) == Conversion::Refused)
      answer = XCB_ATOM_NONE;
  }
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, requestor, property, list->type,
                      32, static_cast<uint32_t>(pairs.size()), pairs.data());
  return Conversion::Done;
}

void X11SelectionOffer::write(xcb_window_t requestor, xcb_atom_t property,
                              const X11Representation& content) {
  if (content.data.size() > X11IncrementalSender::pieceBytes)
    return m_sender.start(requestor, property, content);
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, requestor, property, content.type,
                      static_cast<uint8_t>(content.format),
                      static_cast<uint32_t>(content.data.size() * 8 / content.format),
                      content.data.constData());
}

}  // namespace vemo
