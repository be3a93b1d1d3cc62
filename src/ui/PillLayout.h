// The geometry of the pill: pure functions of what it shows and of how large its texts are. Points.
#pragma once

#include "ports/Screens.h"
#include "ui/HUDModel.h"

namespace vemo {

struct PillSize {
  double width = 0;
  double height = 0;

  friend bool operator==(const PillSize&, const PillSize&) = default;
};

/// Tells how large a text is when drawn within the pill's limits.
class PillTextMetrics {
 public:
  static constexpr double messageFontSize = 12;
  static constexpr double liveTextFontSize = 11;
  static constexpr double maximumMessageWidth = 300;
  static constexpr double maximumLiveTextWidth = 360;

  virtual ~PillTextMetrics() = default;
  /// One line, truncated at the tail.
  virtual PillSize messageSize(const QString& message) const = 0;
  /// At most two lines, truncated at the head.
  virtual PillSize liveTextSize(const QString& text) const = 0;
};

inline constexpr PillSize panelSize{460, 160};
inline constexpr PillSize waveformSize{72, 18};
inline constexpr PillSize symbolSize{15, 13};

/// The pill and what stands in it, from its top left corner. What isn't shown is empty.
struct PillLayout {
  PillSize size;
  ScreenRect waveform;
  ScreenRect liveText;
  ScreenRect symbol;
  ScreenRect message;

  friend bool operator==(const PillLayout&, const PillLayout&) = default;
};

PillLayout pillLayout(const HUDModel::State& state, const QString& liveText,
                      const PillTextMetrics& metrics);

/// From the screen's top edge to the pill.
double pillTopPadding(double topInset, bool hasNotch);

/// A capsule until text appears under the bars.
double pillCornerRadius(const QString& liveText);

/// Where the pill comes from, and goes to: its scale, anchored at its top, and its way down.
struct PillTransition {
  double scale;
  double offset;
};
PillTransition pillTransition(bool hasNotch);

}  // namespace vemo
