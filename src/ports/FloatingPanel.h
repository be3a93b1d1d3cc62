// A window without frame that floats above everything, full-screen windows included, on every
// desktop: in no task bar or pager, never in focus, never clicked. Made hidden.
//
// Main thread only; the callbacks run on it, from the event loop. The owner sets them once, before
// the first show. Nothing fails: without a display, what is shown goes nowhere. While the panel is
// hidden, or not animating, it costs no time.
#pragma once

#include <cstdint>
#include <functional>
#include <span>

#include "ports/Screens.h"

namespace vemo {

/// A rectangle of pixels within a panel.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  bool isEmpty() const { return width <= 0 || height <= 0; }
  friend bool operator==(const PixelRect&, const PixelRect&) = default;
};

/// What a panel shows: premultiplied ARGB, 32 bits a pixel in the host's byte order, row after row
/// from the top without a gap.
struct PanelPixels {
  std::span<std::uint32_t> argb;
  int width = 0;
  int height = 0;
  double scale = 1;  ///< pixels to a point
};

enum class Animating { No, Yes };

class FloatingPanel {
 public:
  virtual ~FloatingPanel() = default;

  /// Moves the panel; `frame` is in points of `screen`, in the coordinates of all screens. What it
  /// showed is lost when its size in pixels changes.
  virtual void setFrame(const ScreenRect& frame, const Screen& screen) = 0;

  /// 0 to 1, for the panel as a whole.
  virtual void setAlpha(double alpha) = 0;

  /// Shows the panel above everything, without making it active.
  virtual void orderFrontRegardless() = 0;
  virtual void orderOut() = 0;

  /// While Yes, onFrame runs as soon as the event loop turns and then at the screen's rate.
  virtual void setAnimating(Animating animating) = 0;

  /// The pixels to draw into. They stay the same until the next setFrame().
  virtual PanelPixels pixels() = 0;
  /// Puts a part of the pixels on the screen. Harmless while the panel is hidden.
  virtual void present(const PixelRect& changed) = 0;

  /// Whether what lies below shines through. Where not, a pixel is either opaque (from half of full
  /// alpha on) or not part of the panel.
  virtual bool isTranslucent() const = 0;

  std::function<void()> onFrame;
  /// Everything has to be drawn anew: isTranslucent() has changed.
  std::function<void()> onRedrawNeeded;
};

}  // namespace vemo
