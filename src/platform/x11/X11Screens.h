// The monitors by RandR, and what desktop panels take of them by the window manager's hints.
//
// Main thread only; one for the program, made in the composition root. Each question is some round
// trips; between questions it wakes up only when the monitors change. All monitors share one scale,
// that of the resource Xft.dpi. No X server tells of a camera housing.
#pragma once

#include <QRect>

#include "platform/x11/X11Windows.h"
#include "ports/Screens.h"

namespace vemo {

class X11Screens : public Screens {
 public:
  /// Null when there's no X server with RandR 1.5.
  static std::unique_ptr<X11Screens> create(const QByteArray& displayName = {});

  std::optional<Screen> mainScreen() const override;
  std::vector<Screen> screens() const override;

 private:
  struct Monitor {
    QRect pixels;
    bool isPrimary;
    std::optional<std::uint32_t> output;
  };

  X11Screens(std::unique_ptr<X11Connection> connection, std::uint8_t firstEvent);

  void handleEvent(const xcb_generic_event_t& event);
  std::vector<Monitor> monitors() const;
  Screen screenOf(const Monitor& monitor, std::size_t monitorCount) const;
  double scale() const;
  double refreshRate(std::uint32_t output) const;
  std::optional<QRect> activeWindow() const;
  int topStrip(const QRect& monitor, std::size_t monitorCount) const;
  int topStripOfPanels(const QRect& monitor) const;

  std::unique_ptr<X11Connection> m_connection;
  mutable X11Windows m_windows;
  std::uint8_t m_firstEvent;  ///< of RandR's
};

}  // namespace vemo
