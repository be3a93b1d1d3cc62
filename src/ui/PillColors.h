// The colours of the pill by the value of the setting dictationPillColor; what isn't known is
// "dark".
#pragma once

#include <QString>

namespace vemo {

/// sRGB, not linear; each channel 0 to 1.
struct Color {
  double red = 0;
  double green = 0;
  double blue = 0;
  double opacity = 1;

  Color withOpacity(double value) const { return {red, green, blue, value}; }
  friend bool operator==(const Color&, const Color&) = default;
};

inline constexpr Color black{0, 0, 0, 1};
inline constexpr Color white{1, 1, 1, 1};

constexpr double mixed(double from, double to, double part) {
  return from + (to - from) * part;
}
constexpr Color mixed(const Color& from, const Color& to, double part) {
  return {mixed(from.red, to.red, part), mixed(from.green, to.green, part),
          mixed(from.blue, to.blue, part), mixed(from.opacity, to.opacity, part)};
}

struct PillColors {
  Color fill;
  Color stroke;
  Color text;

  friend bool operator==(const PillColors&, const PillColors&) = default;
};

struct WaveformColors {
  Color bright;          ///< in the middle of the row, and where light falls
  Color edge;            ///< at the ends of the row
  Color processingRest;  ///< of a bar that no light falls on

  friend bool operator==(const WaveformColors&, const WaveformColors&) = default;
};

struct PillTheme {
  PillColors pill;
  WaveformColors waveform;
};

const PillTheme& pillTheme(const QString& pillColor);

}  // namespace vemo
