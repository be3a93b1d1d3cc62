#include "platform/x11/X11IncrementalSender.h"

#include <algorithm>

namespace vemo {

namespace {
constexpr std::chrono::seconds stallLimit{10};
}  // namespace

X11IncrementalSender::X11IncrementalSender(X11Connection& connection) : m_connection(connection) {
  m_stallTimer.setInterval(stallLimit / 2);
  QObject::connect(&m_stallTimer, &QTimer::timeout, &m_stallTimer, [this] { dropStalled(); });
}

void X11IncrementalSender::start(xcb_window_t requestor, xcb_atom_t property,
                                 const X11Representation& content) {
  std::erase_if(m_transfers, [&](const Transfer& transfer) {
    return transfer.requestor == requestor && transfer.property == property;
  });
  watch(requestor);
  const auto size = static_cast<uint32_t>(content.data.size());
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, requestor, property,
                      m_connection.atom("INCR"), 32, 1, &size);
  m_transfers.push_back({requestor, property, content, 0, std::chrono::steady_clock::now()});
  if (!m_stallTimer.isActive()) m_stallTimer.start();
}

void X11IncrementalSender::handlePropertyNotify(const xcb_property_notify_event_t& event) {
  if (event.state != XCB_PROPERTY_DELETE) return;
  const auto transfer = std::ranges::find_if(m_transfers, [&](const Transfer& candidate) {
    return candidate.requestor == event.window && candidate.property == event.atom;
  });
  if (transfer == m_transfers.end()) return;

  const X11Representation& content = transfer->content;
  const qsizetype size = std::min(pieceBytes, content.data.size() - transfer->sentBytes);
  xcb_change_property(m_connection.xcb(), XCB_PROP_MODE_REPLACE, transfer->requestor,
                      transfer->property, content.type, static_cast<uint8_t>(content.format),
                      static_cast<uint32_t>(size * 8 / content.format),
                      content.data.constData() + transfer->sentBytes);
  transfer->sentBytes += size;
  transfer->lastProgress = std::chrono::steady_clock::now();
  if (size > 0) return;

  // The empty piece was the last.
  const xcb_window_t requestor = transfer->requestor;
  m_transfers.erase(transfer);
  unwatchIfUnused(requestor);
}

void X11IncrementalSender::handleDestroyNotify(const xcb_destroy_notify_event_t& event) {
  std::erase_if(m_transfers,
                [&](const Transfer& transfer) { return transfer.requestor == event.window; });
  if (isIdle()) m_stallTimer.stop();
}

void X11IncrementalSender::watch(xcb_window_t requestor) {
  const uint32_t mask = XCB_EVENT_MASK_PROPERTY_CHANGE | XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(m_connection.xcb(), requestor, XCB_CW_EVENT_MASK, &mask);
}

void X11IncrementalSender::unwatchIfUnused(xcb_window_t requestor) {
  if (isIdle()) m_stallTimer.stop();
  if (std::ranges::count(m_transfers, requestor, &Transfer::requestor) > 0) return;
  const uint32_t mask = XCB_EVENT_MASK_NO_EVENT;
  xcb_change_window_attributes(m_connection.xcb(), requestor, XCB_CW_EVENT_MASK, &mask);
}

void X11IncrementalSender::dropStalled() {
  const auto oldest = std::chrono::steady_clock::now() - stallLimit;
  std::vector<xcb_window_t> droppedRequestors;
  std::erase_if(m_transfers, [&](const Transfer& transfer) {
    if (transfer.lastProgress >= oldest) return false;
    droppedRequestors.push_back(transfer.requestor);
    return true;
  });
  for (const xcb_window_t requestor : droppedRequestors) unwatchIfUnused(requestor);
  m_connection.flush();
}

}  // namespace vemo
