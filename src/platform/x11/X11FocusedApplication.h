// The application in front and the others that have windows, by the window manager's hints.
//
// Main thread only; one for the program, made in the composition root. Each question is a few round
// trips; between questions it costs nothing. A window that vanishes in between is left out.
#pragma once

#include "platform/x11/DesktopEntries.h"
#include "platform/x11/X11Windows.h"
#include "ports/FocusedApplication.h"

namespace vemo {

class X11FocusedApplication : public FocusedApplication {
 public:
  /// Null when there's no X server.
  static std::unique_ptr<X11FocusedApplication> create(
      const QByteArray& displayName = {},
      QStringList desktopEntryFolders = DesktopEntries::standardFolders());

  std::optional<RunningApplication> frontmost() const override;
  std::vector<RunningApplication> running() const override;

 private:
  X11FocusedApplication(std::unique_ptr<X11Connection> connection, QStringList folders);

  std::optional<RunningApplication> applicationOf(xcb_window_t window) const;
  std::optional<DesktopEntry> entryOf(xcb_window_t window,
                                      const std::optional<X11WindowClass>& windowClass) const;
  bool isRegular(xcb_window_t window) const;

  std::unique_ptr<X11Connection> m_connection;
  mutable X11Windows m_windows;
  mutable DesktopEntries m_entries;
};

}  // namespace vemo
