// What windows tell about themselves: the window manager's hints, read with a bound and without
// trust.
//
// Main thread only. A window may vanish at any moment; it then reads as one without properties.
#pragma once

#include <QString>
#include <optional>
#include <vector>

#include "platform/x11/X11Connection.h"

namespace vemo {

struct X11WindowClass {
  QString instanceName;
  QString className;
};

class X11Windows {
 public:
  explicit X11Windows(X11Connection& connection) : m_connection(connection) {}

  /// The active window by the window manager's word; without one, the top-level window that has the
  /// keyboard focus. XCB_WINDOW_NONE when there is neither.
  xcb_window_t active();
  /// The window manager's list of clients, in the order in which they were mapped.
  std::vector<xcb_window_t> clients();

  std::optional<X11WindowClass> windowClass(xcb_window_t window);
  std::optional<QString> text(xcb_window_t window, const QByteArray& property);
  std::vector<xcb_atom_t> atoms(xcb_window_t window, const QByteArray& property);
  /// The values of a property of 32-bit values; none when there's no such property of that type.
  std::vector<uint32_t> numbers(xcb_window_t window, const QByteArray& property, xcb_atom_t type);
  /// The process that made the window; absent when it's unknown or runs on another machine.
  std::optional<qint64> localProcess(xcb_window_t window);

 private:
  xcb_window_t focusedTopLevel();

  X11Connection& m_connection;
};

}  // namespace vemo
