// Hands long data to other programs piece by piece: writes a piece into the requestor's property
// each time that the requestor has taken the one before.
//
// Main thread only; owned by X11Clipboard, which passes it the events. Transfers outlive the offer
// they come from, since a requestor may finish what it began. One that stands still for ten
// seconds, or whose window goes, is dropped.
#pragma once

#include <QTimer>
#include <chrono>
#include <vector>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Representation.h"

namespace vemo {

class X11IncrementalSender {
 public:
  /// Longer data than this is sent in pieces of this size.
  static constexpr qsizetype pieceBytes = 1024 * 1024;

  explicit X11IncrementalSender(X11Connection& connection);

  /// Announces the data in the property. The caller then notifies the requestor.
  void start(xcb_window_t requestor, xcb_atom_t property, const X11Representation& content);

  void handlePropertyNotify(const xcb_property_notify_event_t& event);
  void handleDestroyNotify(const xcb_destroy_notify_event_t& event);
  bool isIdle() const { return m_transfers.empty(); }

 private:
  struct Transfer {
    xcb_window_t requestor;
    xcb_atom_t property;
    X11Representation content;
    qsizetype sentBytes = 0;
    std::chrono::steady_clock::time_point lastProgress;
  };

  void watch(xcb_window_t requestor);
  void unwatchIfUnused(xcb_window_t requestor);
  void dropStalled();

  X11Connection& m_connection;
  std::vector<Transfer> m_transfers;
  QTimer m_stallTimer;  ///< runs only while there are transfers
};

}  // namespace vemo
