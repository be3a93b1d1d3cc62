#include "ui/PillLayout.h"

#include <algorithm>
#include <cmath>

namespace vemo {

namespace {

using Kind = HUDModel::State::Kind;

constexpr double horizontalPadding = 16;
constexpr double verticalPadding = 10;
constexpr double stackSpacing = 6;
constexpr double rowSpacing = 8;

/// Even, so that the sides of a pill in the middle of its panel lie between pixels.
double evenWidth(double width) {
  return 2 * std::ceil(width / 2);
}

PillLayout waveformLayout(const QString& liveText, const PillTextMetrics& metrics) {
  PillSize content = waveformSize;
  PillSize text;
  if (!liveText.isEmpty()) {
    text = metrics.liveTextSize(liveText);
    content.width = std::max(content.width, text.width);
    content.height += stackSpacing + text.height;
  }
  const double middle = horizontalPadding + content.width / 2;
  PillLayout layout;
  layout.size = {evenWidth(content.width + 2 * horizontalPadding),
                 content.height + 2 * verticalPadding};
  layout.waveform = {middle - waveformSize.width / 2, verticalPadding, waveformSize.width,
                     waveformSize.height};
  if (!liveText.isEmpty())
    layout.liveText = {middle - text.width / 2,
                       verticalPadding + waveformSize.height + stackSpacing, text.width,
                       text.height};
  return layout;
}

PillLayout errorLayout(const QString& message, const PillTextMetrics& metrics) {
  const PillSize text = metrics.messageSize(message);
  const double height = std::max(symbolSize.height, text.height);
  const double middle = verticalPadding + height / 2;
  PillLayout layout;
  layout.size = {evenWidth(symbolSize.width + rowSpacing + text.width + 2 * horizontalPadding),
                 height + 2 * verticalPadding};
  layout.symbol = {horizontalPadding, middle - symbolSize.height / 2, symbolSize.width,
                   symbolSize.height};
  layout.message = {horizontalPadding + symbolSize.width + rowSpacing, middle - text.height / 2,
                    text.width, text.height};
  return layout;
}

}  // namespace

PillLayout pillLayout(const HUDModel::State& state, const QString& liveText,
                      const PillTextMetrics& metrics) {
  switch (state.kind) {
    case Kind::Idle:
      return {.size = {2 * horizontalPadding, 2 * verticalPadding},
              .waveform = {},
              .liveText = {},
              .symbol = {},
              .message = {}};
    case Kind::Recording:
    case Kind::Transcribing:
      return waveformLayout(liveText, metrics);
    case Kind::Error:
      return errorLayout(state.message, metrics);
  }
  return {};
}

double pillTopPadding(double topInset, bool hasNotch) {
  return hasNotch ? std::max(topInset + 4, 4.0) : std::max(topInset + 10, 8.0);
}

double pillCornerRadius(const QString& liveText) {
  return liveText.isEmpty() ? 100 : 16;
}

PillTransition pillTransition(bool hasNotch) {
  return hasNotch ? PillTransition{.scale = 0.75, .offset = -40}
                  : PillTransition{.scale = 0.88, .offset = -12};
}

}  // namespace vemo
