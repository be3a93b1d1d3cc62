// Texts of a known size: each character is as wide as half of its font is high.
#pragma once

#include <algorithm>

#include "ui/PillLayout.h"

namespace vemo {

class FixedTextMetrics : public PillTextMetrics {
 public:
  PillSize messageSize(const QString& message) const override {
    return {std::min(maximumMessageWidth, message.size() * 6.0), 14};
  }
  PillSize liveTextSize(const QString& text) const override {
    const double width = text.size() * 5.5;
    return {std::min(maximumLiveTextWidth, width), width > maximumLiveTextWidth ? 26.0 : 13.0};
  }
};

}  // namespace vemo
