// What every floating panel and every set of screens keeps: run on the fakes and on X11's.
#include <gtest/gtest.h>

#include "contract/x11/EventLoop.h"
#include "fakes/FakeFloatingPanel.h"
#include "fakes/FakeScreens.h"
#include "platform/x11/X11FloatingPanel.h"
#include "platform/x11/X11Screens.h"

namespace vemo {
namespace {

class FakeSubject {
 public:
  FloatingPanel& panel() { return m_panel; }
  Screens& screens() { return m_screens; }
  /// Lets time pass until the condition holds.
  bool runUntil(const std::function<bool()>& condition) {
    for (int i = 0; i < 100 && !condition(); ++i) m_panel.beat();
    return condition();
  }

 private:
  std::vector<std::string> m_calls;
  FakeFloatingPanel m_panel{m_calls};
  FakeScreens m_screens;
};

class X11Subject {
 public:
  FloatingPanel& panel() { return *m_panel; }
  Screens& screens() { return *m_screens; }
  bool runUntil(const std::function<bool()>& condition) { return EventLoop::runUntil(condition); }

 private:
  EventLoop m_loop;
  std::unique_ptr<X11FloatingPanel> m_panel = X11FloatingPanel::create();
  std::unique_ptr<X11Screens> m_screens = X11Screens::create();
};

template <typename Subject>
class FloatingPanelContract : public testing::Test {
 private:
  Subject m_subject;

 protected:
  bool runUntil(const std::function<bool()>& condition) { return m_subject.runUntil(condition); }
  void place(double scale = 1) {
    panel.setFrame({10, 20, 460, 160}, Screen{.frame = {0, 0, 1280, 800}, .scale = scale});
  }

  FloatingPanel& panel = m_subject.panel();
  Screens& screens = m_subject.screens();
};

using Subjects = testing::Types<FakeSubject, X11Subject>;
TYPED_TEST_SUITE(FloatingPanelContract, Subjects);

TYPED_TEST(FloatingPanelContract, ItsPixelsAreThoseOfItsFrameAtTheScreensScale) {
  for (const double scale : {1.0, 1.5, 2.0}) {
    this->place(scale);
    const PanelPixels pixels = this->panel.pixels();
    EXPECT_EQ(pixels.width, 460 * scale);
    EXPECT_EQ(pixels.height, 160 * scale);
    EXPECT_EQ(pixels.scale, scale);
    EXPECT_EQ(pixels.argb.size(), std::size_t(pixels.width) * pixels.height);
  }
}

TYPED_TEST(FloatingPanelContract, ItsPixelsStayWhenItOnlyMoves) {
  this->place();
  this->panel.pixels().argb[77] = 0x12345678;
  this->panel.setFrame({100, 0, 460, 160}, Screen{.frame = {0, 0, 1280, 800}});
  EXPECT_EQ(this->panel.pixels().argb[77], 0x12345678U);
}

TYPED_TEST(FloatingPanelContract, FramesComeFromTheEventLoopWhileItAnimatesAndNotAfterwards) {
  int frames = 0;
  this->place();
  this->panel.onFrame = [&] { ++frames; };
  this->panel.setAnimating(Animating::Yes);
  this->panel.setAnimating(Animating::Yes);
  EXPECT_EQ(frames, 0);
  EXPECT_TRUE(this->runUntil([&] { return frames >= 3; }));
  this->panel.setAnimating(Animating::No);
  this->panel.setAnimating(Animating::No);
  const int framesAtTheEnd = frames;
  int turns = 0;
  this->runUntil([&] { return ++turns > 20; });
  EXPECT_EQ(frames, framesAtTheEnd);
}

TYPED_TEST(FloatingPanelContract, AFrameMayEndTheFrames) {
  int frames = 0;
  this->panel.onFrame = [&] {
    ++frames;
    this->panel.setAnimating(Animating::No);
  };
  this->panel.setAnimating(Animating::Yes);
  EXPECT_TRUE(this->runUntil([&] { return frames == 1; }));
  this->panel.setAnimating(Animating::Yes);
  EXPECT_TRUE(this->runUntil([&] { return frames == 2; }));
}

TYPED_TEST(FloatingPanelContract, ItTakesAnyOrderOfShowsAndHides) {
  this->panel.orderOut();
  this->place();
  this->panel.present({0, 0, 1, 1});
  this->panel.setAlpha(0);
  this->panel.orderFrontRegardless();
  this->panel.orderFrontRegardless();
  this->panel.setAlpha(1);
  this->panel.present({0, 0, 460, 160});
  this->panel.orderOut();
  this->panel.orderOut();
  this->panel.present({459, 159, 1, 1});
}

TYPED_TEST(FloatingPanelContract, EachScreenHasAnAreaAndARateAndTheMainOneIsAmongThem) {
  const auto all = this->screens.screens();
  ASSERT_FALSE(all.empty());
  for (const Screen& screen : all) {
    EXPECT_GT(screen.frame.width, 0);
    EXPECT_GT(screen.frame.height, 0);
    EXPECT_GE(screen.scale, 1);
    EXPECT_GE(screen.refreshRate, 20);
    EXPECT_EQ(screen.safeAreaTop, 0);
    EXPECT_GE(screen.topStripThickness, 0);
  }
  if (const auto main = this->screens.mainScreen())
    EXPECT_NE(std::ranges::find(all, *main), all.end());
}

}  // namespace
}  // namespace vemo
