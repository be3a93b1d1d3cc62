// The panel and the screens on an X server, as another client sees them.
#include <gtest/gtest.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <cstring>

#include "contract/x11/EventLoop.h"
#include "contract/x11/PrivateServer.h"
#include "platform/x11/X11FloatingPanel.h"
#include "platform/x11/X11Screens.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

constexpr std::uint32_t red = 0xFFFF0000;
constexpr std::uint32_t faintBlack = 0x60000000;

/// Another client on a server of the test's own.
class X11PanelTest : public testing::Test {
 protected:
  X11PanelTest() {
    xcb_xfixes_query_version(xcb(), 5, 0);
    m_other->synchronize();
  }

  xcb_connection_t* xcb() { return m_other->xcb(); }

  void place(double x = 100, double scale = 1) {
    panel->setFrame({x, 0, 200, 100}, Screen{.frame = {0, 0, 640, 480}, .scale = scale});
  }
  void fill(std::uint32_t pixel) { std::ranges::fill(panel->pixels().argb, pixel); }

  std::uint32_t rootPixel(int x, int y) {
    const auto image = m_other->reply<xcb_get_image_reply_t>(
        xcb_get_image(xcb(), XCB_IMAGE_FORMAT_Z_PIXMAP, m_other->root(), int16_t(x), int16_t(y), 1,
                      1, ~0U)
            .sequence);
    std::uint32_t pixel = 0;
    if (image) std::memcpy(&pixel, xcb_get_image_data(image.get()), sizeof pixel);
    return pixel & 0xFFFFFF;
  }
  bool showsAt(int x, int y, std::uint32_t pixel) {
    return EventLoop::runUntil([&] { return rootPixel(x, y) == (pixel & 0xFFFFFF); });
  }
  /// The window that a click at this place would go to.
  xcb_window_t windowUnder(int x, int y) {
    xcb_warp_pointer(xcb(), XCB_NONE, m_other->root(), 0, 0, 0, 0, int16_t(x), int16_t(y));
    const auto pointer = m_other->reply<xcb_query_pointer_reply_t>(
        xcb_query_pointer(xcb(), m_other->root()).sequence);
    return pointer ? pointer->child : XCB_NONE;
  }
  xcb_window_t makeWindow(int x, int y, int width, int height) {
    const xcb_window_t window = xcb_generate_id(xcb());
    const std::uint32_t values[] = {0x0000FF, 1};
    xcb_create_window(xcb(), XCB_COPY_FROM_PARENT, window, m_other->root(), int16_t(x), int16_t(y),
                      uint16_t(width), uint16_t(height), 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
    xcb_map_window(xcb(), window);
    m_other->synchronize();
    return window;
  }
  void raise(xcb_window_t window) {
    const std::uint32_t above = XCB_STACK_MODE_ABOVE;
    xcb_configure_window(xcb(), window, XCB_CONFIG_WINDOW_STACK_MODE, &above);
    m_other->synchronize();
  }
  Screen screen() {
    const auto all = screens->screens();
    return all.size() == 1 ? all.front() : Screen{.frame = {}, .topStripThickness = -1};
  }
  /// A client that says it composites, and doesn't.
  void claimCompositing(bool isCompositing) {
    xcb_set_selection_owner(xcb(), isCompositing ? m_other->window() : XCB_NONE,
                            m_other->atom("_NET_WM_CM_S0"), XCB_CURRENT_TIME);
    m_other->synchronize();
  }
  void setRootNumbers(const QByteArray& name, const std::vector<std::uint32_t>& numbers) {
    xcb_change_property(xcb(), XCB_PROP_MODE_REPLACE, m_other->root(), m_other->atom(name),
                        XCB_ATOM_CARDINAL, 32, std::uint32_t(numbers.size()), numbers.data());
    m_other->synchronize();
  }
  void setResources(const QByteArray& text) {
    xcb_change_property(xcb(), XCB_PROP_MODE_REPLACE, m_other->root(), XCB_ATOM_RESOURCE_MANAGER,
                        XCB_ATOM_STRING, 8, std::uint32_t(text.size()), text.constData());
    m_other->synchronize();
  }

 private:
  EventLoop m_loop;

 protected:
  PrivateServer server;

 private:
  std::unique_ptr<X11Connection> m_other = X11Connection::create(server.display());

 protected:
  std::unique_ptr<X11FloatingPanel> panel = X11FloatingPanel::create(server.display());
  std::unique_ptr<X11Screens> screens = X11Screens::create(server.display());
};

TEST_F(X11PanelTest, ShownItIsWhereItsFrameSaysAndHiddenItIsGone) {
  place();
  fill(red);
  panel->orderFrontRegardless();
  EXPECT_TRUE(showsAt(100, 0, red));
  EXPECT_TRUE(showsAt(299, 99, red));
  EXPECT_NE(rootPixel(99, 0), red & 0xFFFFFF);
  panel->orderOut();
  EXPECT_TRUE(EventLoop::runUntil([&] { return rootPixel(150, 50) != (red & 0xFFFFFF); }));
}

TEST_F(X11PanelTest, AtTwiceTheScaleItIsTwiceAsFarAndAsLarge) {
  place(50, 2);
  fill(red);
  panel->orderFrontRegardless();
  EXPECT_TRUE(showsAt(100, 0, red));
  EXPECT_TRUE(showsAt(499, 199, red));
  EXPECT_NE(rootPixel(500, 100), red & 0xFFFFFF);
}

TEST_F(X11PanelTest, OnlyThePresentedPartChanges) {
  place();
  fill(red);
  panel->orderFrontRegardless();
  fill(0xFF0000FF);
  ASSERT_TRUE(showsAt(150, 50, 0x0000FF)) << "a window that has just come is exposed";
  fill(0xFF00FF00);
  panel->present({10, 10, 20, 20});
  EXPECT_TRUE(showsAt(115, 15, 0x00FF00));
  EXPECT_EQ(rootPixel(150, 50), 0x0000FFU);
}

TEST_F(X11PanelTest, APartThatReachesBeyondThePanelIsCut) {
  place();
  fill(red);
  panel->orderFrontRegardless();
  panel->present({-50, -50, 4000, 4000});
  panel->present({500, 500, 10, 10});
  EXPECT_TRUE(showsAt(299, 99, red));
}

TEST_F(X11PanelTest, WithoutACompositorItIsShapedToWhatIsAtLeastHalfOpaque) {
  const xcb_window_t below = makeWindow(0, 0, 640, 480);
  place();
  const PanelPixels pixels = panel->pixels();
  for (int y = 0; y < pixels.height; ++y)
    for (int x = 0; x < pixels.width; ++x)
      pixels.argb[std::size_t(y) * pixels.width + x] = x < 50    ? 0x7F7F0000
                                                       : x < 100 ? 0x80800000
                                                                 : faintBlack;
  panel->orderFrontRegardless();
  EXPECT_FALSE(panel->isTranslucent());
  // Half transparent red is shown as the red that it is half of.
  EXPECT_TRUE(showsAt(150, 50, red));
  EXPECT_EQ(rootPixel(149, 50), 0x0000FFU);
  EXPECT_EQ(rootPixel(200, 50), 0x0000FFU);
  EXPECT_EQ(windowUnder(170, 50), below);
}

TEST_F(X11PanelTest, ACompositorThatComesAndGoesIsFollowed) {
  int redraws = 0;
  panel->onRedrawNeeded = [&] { ++redraws; };
  place();
  fill(faintBlack);
  panel->orderFrontRegardless();
  claimCompositing(true);
  EXPECT_TRUE(EventLoop::runUntil([&] { return redraws == 1; }));
  EXPECT_TRUE(panel->isTranslucent());
  panel->present({0, 0, 200, 100});
  // Nobody composites here: the faint black is shown as if it were opaque, in the whole window.
  EXPECT_TRUE(showsAt(250, 50, 0));
  claimCompositing(false);
  EXPECT_TRUE(EventLoop::runUntil([&] { return redraws == 2; }));
  EXPECT_FALSE(panel->isTranslucent());
}

TEST_F(X11PanelTest, ACompositorThatIsThereFromTheStartIsFound) {
  claimCompositing(true);
  EXPECT_TRUE(X11FloatingPanel::create(server.display())->isTranslucent());
}

TEST_F(X11PanelTest, ThePointerPassesThrough) {
  const xcb_window_t below = makeWindow(0, 0, 640, 480);
  place();
  fill(red);
  panel->orderFrontRegardless();
  ASSERT_TRUE(showsAt(150, 50, red));
  EXPECT_EQ(windowUnder(150, 50), below);
}

TEST_F(X11PanelTest, ItComesBackAboveAWindowThatIsMappedOrRaisedLater) {
  const xcb_window_t first = makeWindow(0, 0, 640, 480);
  place();
  fill(red);
  panel->orderFrontRegardless();
  ASSERT_TRUE(showsAt(150, 50, red));
  raise(first);
  EXPECT_TRUE(showsAt(150, 50, red));
  makeWindow(0, 0, 640, 480);
  EXPECT_TRUE(showsAt(150, 50, red));
}

TEST_F(X11PanelTest, AWindowThatAlwaysWantsToBeOnTopIsNotContendedWithForEver) {
  const xcb_window_t rival = makeWindow(0, 0, 640, 480);
  place();
  fill(red);
  panel->orderFrontRegardless();
  // As long as the panel contends, it is above again once it has heard of the rival.
  EXPECT_TRUE(EventLoop::runUntil([&] {
    raise(rival);
    return !EventLoop::runUntil([&] { return rootPixel(150, 50) == (red & 0xFFFFFF); }, 500ms);
  }));
  panel->orderOut();
  panel->orderFrontRegardless();
  EXPECT_TRUE(showsAt(150, 50, red));
}

TEST_F(X11PanelTest, AServerThatDiesLeavesAPanelThatDoesNothing) {
  place();
  panel->orderFrontRegardless();
  server.kill();
  int frames = 0;
  panel->onFrame = [&] { ++frames; };
  panel->setAnimating(Animating::Yes);
  EXPECT_TRUE(EventLoop::runUntil([&] {
    panel->present({0, 0, 200, 100});
    return frames > 3;
  }));
  place(300, 2);
  panel->orderOut();
  panel->orderFrontRegardless();
  EXPECT_FALSE(screens->mainScreen());
  EXPECT_TRUE(screens->screens().empty());
}

TEST_F(X11PanelTest, WithoutAServerThereIsNeitherPanelNorScreens) {
  EXPECT_EQ(X11FloatingPanel::create(":4711"), nullptr);
  EXPECT_EQ(X11Screens::create(":4711"), nullptr);
}

TEST_F(X11PanelTest, TheStripIsWhatTheWorkAreaLeavesAtTheTop) {
  EXPECT_EQ(screen().topStripThickness, 0);
  setRootNumbers("_NET_CURRENT_DESKTOP", {1});
  setRootNumbers("_NET_WORKAREA", {0, 0, 640, 480, 0, 27, 640, 453});
  EXPECT_EQ(screen().topStripThickness, 27);
}

TEST_F(X11PanelTest, AWorkAreaOfEachMonitorGoesBeforeThatOfAll) {
  setRootNumbers("_NET_WORKAREA", {0, 27, 640, 453});
  setRootNumbers("_GTK_WORKAREAS_D0", {0, 32, 640, 448});
  EXPECT_EQ(screen().topStripThickness, 32);
}

TEST_F(X11PanelTest, HintsThatMakeNoSenseAreBounded) {
  for (const std::vector<std::uint32_t>& numbers :
       {std::vector<std::uint32_t>{}, {0, 5}, {0, 0xFFFFFFF0, 640, 480}, {0, 9999, 640, 480}}) {
    setRootNumbers("_NET_WORKAREA", numbers);
    const double strip = screen().topStripThickness;
    EXPECT_TRUE(strip >= 0 && strip <= 480) << strip;
  }
  setRootNumbers("_NET_CURRENT_DESKTOP", {0xFFFFFFFF});
  EXPECT_EQ(screen().topStripThickness, 0);
}

TEST_F(X11PanelTest, TheScaleIsThatOfTheResourceXftDpiWithinBounds) {
  EXPECT_EQ(screen().scale, 1);
  const std::pair<QByteArray, double> cases[] = {
      {"Xft.dpi:\t192\n", 2},  {"Xcursor.size:24\nXft.dpi: 144", 1.5},
      {"Xft.dpi:\t72\n", 1},   {"Xft.dpi:\t100000\n", 4},
      {"Xft.dpi:\tmany\n", 1}, {"Xft.dpi:", 1}};
  for (const auto& [resources, scale] : cases) {
    setResources(resources);
    EXPECT_EQ(screen().scale, scale) << resources.toStdString();
  }
  setResources("Xft.dpi:\t192\n");
  EXPECT_EQ(screen().frame, (ScreenRect{0, 0, 320, 240}));
}

}  // namespace
}  // namespace vemo
