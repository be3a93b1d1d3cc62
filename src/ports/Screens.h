// The screens of the desktop, as they stand when asked.
//
// Main thread only. Lengths are points: pixels divided by the screen's scale. y grows downwards,
// and the origin is that of the desktop, so that frames of several screens lie beside each other.
#pragma once

#include <optional>
#include <vector>

#include "base/Notifier.h"

namespace vemo {

struct ScreenRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;

  double midX() const { return x + width / 2; }
  friend bool operator==(const ScreenRect&, const ScreenRect&) = default;
};

struct Screen {
  ScreenRect frame;              ///< all of the screen, panels included
  double safeAreaTop = 0;        ///< height of a camera housing at the top edge; 0 without one
  double topStripThickness = 0;  ///< what the desktop's own panel takes at the top edge
  double scale = 1;              ///< pixels to a point
  double refreshRate = 60;       ///< frames a second

  friend bool operator==(const Screen&, const Screen&) = default;
};

class Screens {
 public:
  virtual ~Screens() = default;

  /// The one that the user works on: where the active window is. Absent when that can't be told.
  virtual std::optional<Screen> mainScreen() const = 0;

  /// All of them; empty while no display is connected.
  virtual std::vector<Screen> screens() const = 0;

  /// A screen came, went, moved or has another size.
  Notifier<> changed;
};

}  // namespace vemo
