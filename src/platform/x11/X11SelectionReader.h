// Reads everything that a selection's owner offers, once: its targets, then each of them, several
// at a time, by the incremental protocol where the owner chooses it.
//
// Main thread only; lives in the coroutine that takes the snapshot, and stops reading when it goes.
// The X11Clipboard passes it the events. An owner that doesn't say what it has within 400 ms, makes
// no progress for 1.5 s, or isn't done after 3 s, has said all that it will: what is missing is
// left empty. A standstill of the machine isn't counted.
#pragma once

#include <QTimer>
#include <array>
#include <optional>
#include <vector>

#include "base/Completion.h"
#include "platform/x11/X11Connection.h"
#include "platform/x11/X11Representation.h"

namespace vemo {

class X11SelectionReader {
 public:
  X11SelectionReader(X11Connection& connection, MainThread& mainThread, xcb_atom_t selection);
  ~X11SelectionReader();
  X11SelectionReader(const X11SelectionReader&) = delete;
  X11SelectionReader& operator=(const X11SelectionReader&) = delete;

  void start();
  Completion<> finished() const { return m_finished; }
  std::vector<X11Representation> takeRepresentations() { return std::move(m_representations); }

  void handleSelectionNotify(const xcb_selection_notify_event_t& event);
  void handlePropertyNotify(const xcb_property_notify_event_t& event);
  /// A new owner's content is read from the start; without an owner nothing more will come.
  void handleOwnerChange(xcb_window_t owner, std::uint32_t sequence);

 private:
  /// One request under way. Each has a window of its own, since there are owners that keep their
  /// state by requestor.
  struct Channel {
    enum class State { Idle, Requested, Incremental };
    xcb_window_t window = XCB_WINDOW_NONE;
    State state = State::Idle;
    xcb_atom_t target = XCB_ATOM_NONE;
    std::size_t index = 0;  ///< into m_representations
    X11Property received;
  };
  enum class Stage { Targets, Contents };

  void request(Channel& channel, xcb_atom_t target);
  void receivePiece(Channel& channel, const X11Property& piece);
  void finishChannel(Channel& channel, std::optional<X11Property> value);
  void readTargets(const std::optional<X11Property>& targets);
  void requestNext();
  void countTick();
  void finish();
  void closeChannels();
  Channel* channelOf(xcb_window_t window);
  qsizetype bytesLeft() const;

  X11Connection& m_connection;
  const xcb_atom_t m_selection;
  const xcb_atom_t m_targets;
  const xcb_atom_t m_incremental;
  const xcb_atom_t m_property;
  Completion<> m_finished;
  QTimer m_timer;
  int m_ticks = 0;
  int m_ticksWithoutProgress = 0;
  std::uint32_t m_startedAt = 0;  ///< sequence of the request that told the owner that is read
  Stage m_stage = Stage::Targets;
  bool m_areTargetsGuessed = false;
  std::array<Channel, 8> m_channels;
  std::vector<X11Representation> m_representations;
  std::size_t m_nextIndex = 0;
};

}  // namespace vemo
