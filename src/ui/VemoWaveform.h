// The row of bars on the pill: a pure function of its size, the time, what it shows and the theme.
#pragma once

#include <QString>
#include <variant>
#include <vector>

#include "ui/PillColors.h"

namespace vemo {

/// A rounded rectangle, in points from the top left corner of the canvas.
struct WaveformBar {
  double x;
  double y;
  double width;
  double height;
  double cornerRadius;
  Color color;

  friend bool operator==(const WaveformBar&, const WaveformBar&) = default;
};

/// In the order of drawing: the glow as one layer under its blur, then the bars.
struct WaveformDrawing {
  double glowBlurRadius = 0;
  std::vector<WaveformBar> glow;
  std::vector<WaveformBar> bars;

  friend bool operator==(const WaveformDrawing&, const WaveformDrawing&) = default;
};

struct VemoWaveform {
  /// Follows the microphone.
  struct Active {
    float level;
  };
  /// A band of light sweeps across.
  struct Processing {};
  using Mode = std::variant<Active, Processing>;

  Mode mode;
  QString theme;  ///< a value of the setting dictationPillColor
  double barScale = 1;

  /// `time` is seconds since the start of 2001. Nothing is drawn on a canvas without area.
  WaveformDrawing drawing(double width, double height, double time) const;
};

}  // namespace vemo
