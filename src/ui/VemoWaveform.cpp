#include "ui/VemoWaveform.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vemo {

namespace {

constexpr int barCount = 21;

/// The bars are tallest in the middle.
double envelope(int bar) {
  return std::sin(static_cast<double>(bar) / (barCount - 1) * std::numbers::pi) * 0.45 + 0.55;
}

/// An uneven profile of the row that is always the same.
double jitter(int bar) {
  const double scattered = std::sin(bar * 127.1 + 3.7) * 43758.5453;
  return (scattered - std::floor(scattered)) * 0.66 + 0.34;
}

/// Input below the floor shows as flat bars, and the curve lifts soft speech.
double energyOf(float level) {
  constexpr double floor = 0.06;
  const float amplified = level * 1.9F;
  if (amplified >= 1) return 1;
  if (!(amplified >= floor)) return 0;
  return std::pow((amplified - floor) / (1 - floor), 0.75);
}

/// Where the bars stand; their heights and colours come with the mode.
class BarRow {
 public:
  BarRow(double width, double height, double barScale)
      : m_slot(width / barCount),
        m_height(height),
        m_barWidth(std::min(m_slot * 0.55, 5.0) * barScale) {}

  double barWidth() const { return m_barWidth; }
  double centre(int bar) const { return m_slot * (bar + 0.5); }

  /// `part` is the height as a part of the row's, which no bar exceeds but by its minimum.
  WaveformBar bar(int index, double part, double minimumHeight, const Color& color) const {
    const double height = std::max(minimumHeight, part < 1 ? m_height * part : m_height);
    return {centre(index) - m_barWidth * 0.5,
            m_height * 0.5 - height * 0.5,
            m_barWidth,
            height,
            m_barWidth * 0.5,
            color};
  }

 private:
  double m_slot;
  double m_height;
  double m_barWidth;
};

WaveformDrawing activeDrawing(const BarRow& row, double height, double time, float level,
                              const WaveformColors& colors) {
  const double energy = energyOf(level);
  const double minimumHeight = std::max(row.barWidth(), 2.0);
  WaveformDrawing drawing{.glowBlurRadius = std::max(height * 0.1, 2.0), .glow = {}, .bars = {}};
  const Color glowColor = colors.bright.withOpacity(energy * 0.4);
  for (int i = 0; i < barCount; ++i) {
    const double ripple = 1 + energy * 0.3 * std::sin(time * 9.0 + i * 0.7);
    const double part = energy * envelope(i) * ripple * jitter(i);
    drawing.glow.push_back(row.bar(i, part, minimumHeight, glowColor));
    drawing.bars.push_back(
        row.bar(i, part, minimumHeight, mixed(colors.edge, colors.bright, envelope(i))));
  }
  return drawing;
}

WaveformDrawing processingDrawing(const BarRow& row, double width, double height, double time,
                                  const WaveformColors& colors) {
  const double sweeps = time * 0.45;
  const double lightCentre = width * ((sweeps - std::trunc(sweeps)) * 1.4 - 0.2);
  const double lightWidth = width * 0.16;
  const double minimumHeight = std::max(height * 0.125, 1.5);
  WaveformDrawing drawing{.glowBlurRadius = std::max(height * 0.15, 2.0), .glow = {}, .bars = {}};
  for (int i = 0; i < barCount; ++i) {
    const double distance = (row.centre(i) - lightCentre) / lightWidth;
    const double light = std::exp(-distance * distance);
    const double breath = std::sin(time * 1.5 + i * 0.5) * 0.15 + 0.85;
    const double part = breath * envelope(i) * 0.5 * jitter(i);
    if (light > 0.15)
      drawing.glow.push_back(row.bar(i, part, minimumHeight, colors.bright.withOpacity(light)));
    const Color color = mixed(colors.processingRest, colors.bright, light);
    drawing.bars.push_back(row.bar(i, part, minimumHeight, color.withOpacity(0.7 + light * 0.3)));
  }
  return drawing;
}

}  // namespace

WaveformDrawing VemoWaveform::drawing(double width, double height, double time) const {
  if (!(width > 0) || !(height > 0)) return {};
  const BarRow row(width, height, barScale);
  const WaveformColors& colors = pillTheme(theme).waveform;
  if (const auto* active = std::get_if<Active>(&mode))
    return activeDrawing(row, height, time, active->level, colors);
  return processingDrawing(row, width, height, time, colors);
}

}  // namespace vemo
