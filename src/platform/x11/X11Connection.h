// One connection to the X server: replies with a bounded wait, events through the Qt event loop,
// names of atoms, and a hidden window to own things with.
//
// Main thread only; owned by the adapter that uses it. A server that dies ends neither the process
// nor a wait: isAlive() turns false, replies are null from then on, requests go nowhere. Events are
// handed to one handler, from the event loop or from processEvents(), never while a reply is waited
// for.
#pragma once

#include <xcb/xcb.h>

#include <QByteArray>
#include <QHash>
#include <QSocketNotifier>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <vector>

namespace vemo {

class WaitLimit;

struct FreeX11Memory {
  void operator()(void* memory) const { std::free(memory); }
};
template <typename T>
using X11Pointer = std::unique_ptr<T, FreeX11Memory>;

/// A property's value. `data` holds 16- and 32-bit values in the host's byte order.
struct X11Property {
  xcb_atom_t type = XCB_ATOM_NONE;
  int format = 8;
  QByteArray data;

  /// The 32-bit values; none when the format is another.
  std::vector<std::uint32_t> numbers() const;
};

class X11Connection {
 public:
  using EventHandler = std::function<void(const xcb_generic_event_t&)>;

  /// Connects to the display of that name, or to the one that DISPLAY names. Null when there's
  /// none.
  static std::unique_ptr<X11Connection> create(const QByteArray& displayName = {});
  ~X11Connection();
  X11Connection(const X11Connection&) = delete;
  X11Connection& operator=(const X11Connection&) = delete;

  xcb_connection_t* xcb() const { return m_connection; }
  xcb_window_t root() const { return m_root; }
  /// An unmapped window of ours that reports changes of its properties.
  xcb_window_t window() const { return m_window; }
  xcb_window_t createHiddenWindow();
  bool isAlive() const { return xcb_connection_has_error(m_connection) == 0; }

  /// The first event code and major opcode of an extension; absent when the server lacks it.
  std::optional<xcb_query_extension_reply_t> extension(xcb_extension_t& extension) const;

  /// The reply to the request with that sequence number; null when the request failed, the server
  /// has gone, or it doesn't answer within two seconds, in which a standstill of the machine
  /// doesn't count. After a wait in vain there's no other before the server has sent something.
  template <typename Reply>
  X11Pointer<Reply> reply(unsigned int sequence) {
    return X11Pointer<Reply>(static_cast<Reply*>(waitForReply(sequence)));
  }
  /// Waits until the server has carried out everything sent so far.
  void synchronize();
  void flush() { xcb_flush(m_connection); }

  xcb_atom_t atom(const QByteArray& name);
  /// The names of atoms, fetched in one round trip; an empty name for one that doesn't exist.
  std::vector<QByteArray> atomNames(std::span<const xcb_atom_t> atoms);

  enum class AfterRead { Keep, Delete };
  /// The whole value of a property, up to `maximumBytes`; absent when there's no such property, or
  /// it is longer, or there's no such window.
  std::optional<X11Property> property(xcb_window_t window, xcb_atom_t name, AfterRead afterRead,
                                      qsizetype maximumBytes);

  void setEventHandler(EventHandler handler) { m_handler = std::move(handler); }
  /// Called once, from the event loop, when the server is found gone. The connection is still there
  /// when the call returns.
  void setClosedHandler(std::function<void()> handler) { m_closedHandler = std::move(handler); }
  /// Handles all events that have arrived, without waiting for more.
  void processEvents();
  /// Handles events until `isDone` or the time is up, as for a reply. Returns whether it was done.
  bool processEventsUntil(const std::function<bool()>& isDone, std::chrono::milliseconds time);

  /// Whether one sequence number comes before another; they wrap around.
  static bool isBefore(std::uint32_t sequence, std::uint32_t other) {
    return static_cast<std::int32_t>(sequence - other) < 0;
  }

 private:
  X11Connection(xcb_connection_t* connection, int screenNumber);

  void* waitForReply(unsigned int sequence);
  void takeEvents(xcb_generic_event_t* (*poll)(xcb_connection_t*));
  bool waitForInput(WaitLimit& limit) const;

  xcb_connection_t* m_connection;
  xcb_window_t m_root = XCB_WINDOW_NONE;
  xcb_window_t m_window = XCB_WINDOW_NONE;
  std::unique_ptr<QSocketNotifier> m_notifier;
  std::deque<X11Pointer<xcb_generic_event_t>> m_events;
  EventHandler m_handler;
  std::function<void()> m_closedHandler;
  bool m_isStalled = false;  ///< a reply was waited for in vain, and nothing has come since
  QHash<QByteArray, xcb_atom_t> m_atoms;
  QHash<xcb_atom_t, QByteArray> m_atomNames;
};

}  // namespace vemo
