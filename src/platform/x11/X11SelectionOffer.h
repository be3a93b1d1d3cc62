// The content that we hand out while we own a selection.
//
// Main thread only; owned by X11Clipboard from taking the selection until somebody else takes it.
#pragma once

#include <vector>

#include "platform/x11/X11Connection.h"
#include "platform/x11/X11IncrementalSender.h"
#include "platform/x11/X11Representation.h"

namespace vemo {

class X11SelectionOffer {
 public:
  X11SelectionOffer(X11Connection& connection, X11IncrementalSender& sender,
                    std::vector<X11Representation> representations, xcb_timestamp_t since);

  void answer(const xcb_selection_request_event_t& request);

  /// Tells a requestor that it gets nothing.
  static void refuse(X11Connection& connection, const xcb_selection_request_event_t& request);

  /// The content's targets, in order.
  std::vector<xcb_atom_t> targets() const;

 private:
  enum class Conversion { Done, Refused };

  Conversion convert(xcb_window_t requestor, xcb_atom_t target, xcb_atom_t property);
  Conversion convertMultiple(xcb_window_t requestor, xcb_atom_t property);
  void write(xcb_window_t requestor, xcb_atom_t property, const X11Representation& content);

  X11Connection& m_connection;
  X11IncrementalSender& m_sender;
  const std::vector<X11Representation> m_representations;
  const xcb_timestamp_t m_since;
  const xcb_atom_t m_targets;
  const xcb_atom_t m_timestamp;
  const xcb_atom_t m_multiple;
};

}  // namespace vemo
