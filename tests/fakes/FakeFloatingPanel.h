// A panel whose pixels lie in memory. Remembers what it was told, and beats when a test says so.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <string>
#include <vector>

#include "ports/FloatingPanel.h"

namespace vemo {

class FakeFloatingPanel : public FloatingPanel {
 public:
  /// `calls` outlives the panel, which the code under test owns.
  explicit FakeFloatingPanel(std::vector<std::string>& calls) : m_calls(calls) {}

  void setFrame(const ScreenRect& newFrame, const Screen& screen) override {
    m_calls.emplace_back("setFrame");
    frame = newFrame;
    scale = screen.scale;
    const int newWidth = int(std::lround(frame.width * scale));
    const int newHeight = int(std::lround(frame.height * scale));
    if (newWidth != m_width || newHeight != m_height)
      m_pixels.assign(std::size_t(newWidth) * newHeight, 0);
    m_width = newWidth;
    m_height = newHeight;
  }
  void setAlpha(double alpha) override {
    m_calls.emplace_back("setAlpha " + std::to_string(int(alpha)));
  }
  void orderFrontRegardless() override {
    m_calls.emplace_back("orderFrontRegardless");
    isShown = true;
  }
  void orderOut() override {
    m_calls.emplace_back("orderOut");
    isShown = false;
  }
  void setAnimating(Animating animating) override { isAnimating = animating == Animating::Yes; }
  PanelPixels pixels() override { return {m_pixels, m_width, m_height, scale}; }
  void present(const PixelRect& changed) override {
    EXPECT_FALSE(changed.isEmpty());
    EXPECT_TRUE(changed.x >= 0 && changed.y >= 0 && changed.x + changed.width <= m_width &&
                changed.y + changed.height <= m_height);
    presented.push_back(changed);
  }
  bool isTranslucent() const override { return translucent; }

  /// A frame, if one is due.
  void beat() {
    if (isAnimating) onFrame();
  }
  /// Beats until nothing moves; `pass` lets a frame's time pass. Returns the number of frames.
  template <typename Pass>
  int beatUntilStill(Pass pass, int limit = 600) {
    int frames = 0;
    for (; isAnimating && frames < limit; ++frames) {
      beat();
      pass();
    }
    return frames;
  }
  void setTranslucent(bool isTranslucentNow) {
    translucent = isTranslucentNow;
    onRedrawNeeded();
  }
  std::uint32_t pixel(int x, int y) const { return m_pixels.at(std::size_t(y) * m_width + x); }

  ScreenRect frame;
  double scale = 1;
  bool isShown = false;
  bool isAnimating = false;
  bool translucent = true;
  std::vector<PixelRect> presented;

 private:
  std::vector<std::string>& m_calls;
  std::vector<std::uint32_t> m_pixels;
  int m_width = 0;
  int m_height = 0;
};

}  // namespace vemo
