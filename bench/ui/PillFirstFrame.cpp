// How long after the trigger the pill is seen on the screen, beside what X takes to show a window
// at all. Another client watches a pixel of the screen, every quarter of a millisecond or so.
//
// Runs on the display that DISPLAY names:
//   tools/virtual-desktop --window-manager -- PROGRAM [SHOWS] [--composited] [--report-only]
#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstring>
#include <thread>

#include "BenchedPill.h"

using namespace vemo;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr double limitMilliseconds = 50;
constexpr int pillTop = 10;

/// Looks at the pixel in the middle of the screen where the upper part of a pill is.
class PixelWatch {
 public:
  PixelWatch() : m_thread([this](std::stop_token stop) { watch(std::move(stop)); }) {
    BenchedPill::runUntil([this] { return m_pixel != unknown; });
  }

  std::uint32_t pixel() const { return m_pixel; }
  /// A compositor that has just started paints the screen anew.
  void awaitRest() const {
    while (SteadyClock::now() - lastChange() < std::chrono::milliseconds(500))
      QCoreApplication::processEvents(QEventLoop::AllEvents, 50);
  }
  /// When the pixel last became another.
  SteadyClock::time_point lastChange() const { return m_lastChange; }

 private:
  static constexpr std::uint32_t unknown = 0xFFFFFFFF;

  void watch(std::stop_token stop) {
    xcb_connection_t* xcb = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
    const auto middle = std::int16_t(screen->width_in_pixels / 2);
    while (!stop.stop_requested()) {
      auto* image = xcb_get_image_reply(xcb,
                                        xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root,
                                                      middle, pillTop + 5, 1, 1, ~0U),
                                        nullptr);
      if (!image) break;
      std::uint32_t now = 0;
      std::memcpy(&now, xcb_get_image_data(image), sizeof now);
      std::free(image);
      if ((now & 0xFFFFFF) != m_pixel) {
        m_lastChange = SteadyClock::now();
        m_pixel = now & 0xFFFFFF;
        QMetaObject::invokeMethod(qApp, [] {}, Qt::QueuedConnection);
      }
      std::this_thread::sleep_for(std::chrono::microseconds(250));
    }
    xcb_disconnect(xcb);
  }

  std::atomic<std::uint32_t> m_pixel = unknown;
  std::atomic<SteadyClock::time_point> m_lastChange;
  std::jthread m_thread;
};

/// The milliseconds from each show() until the screen changes; hide() takes it away again.
std::vector<double> measure(int count, PixelWatch& watch, const std::function<void()>& show,
                            const std::function<void()>& hide) {
  watch.awaitRest();
  const std::uint32_t background = watch.pixel();
  std::vector<double> times;
  for (int i = 0; i < count; ++i) {
    const auto start = SteadyClock::now();
    show();
    BenchedPill::runUntil([&] { return watch.pixel() != background; });
    times.push_back(std::chrono::duration<double, std::milli>(watch.lastChange() - start).count());
    hide();
    BenchedPill::runUntil([&] { return watch.pixel() == background; });
  }
  std::ranges::sort(times);
  return times;
}

double at(const std::vector<double>& sorted, double share) {
  return sorted[std::min(sorted.size() - 1, std::size_t(share * double(sorted.size())))];
}

void print(const char* what, const std::vector<double>& times, double ratioTo) {
  std::printf("%-26s p50 %6.1f ms   p99 %6.1f ms   max %6.1f ms   %5.1f x\n", what, at(times, 0.5),
              at(times, 0.99), times.back(), at(times, 0.5) / ratioTo);
}

/// The least that a window can be: one colour, unmanaged.
class PlainWindow {
 public:
  PlainWindow() : m_connection(X11Connection::create()), m_window(xcb_generate_id(xcb())) {
    const auto* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb())).data;
    const std::uint32_t values[] = {0x123456, 1};
    xcb_create_window(xcb(), XCB_COPY_FROM_PARENT, m_window, m_connection->root(),
                      std::int16_t(screen->width_in_pixels / 2 - 52), pillTop, 104, 38, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_BACK_PIXEL | XCB_CW_OVERRIDE_REDIRECT, values);
  }
  void show() {
    xcb_map_window(xcb(), m_window);
    m_connection->flush();
  }
  void hide() {
    xcb_unmap_window(xcb(), m_window);
    m_connection->flush();
  }

 private:
  xcb_connection_t* xcb() { return m_connection->xcb(); }

  std::unique_ptr<X11Connection> m_connection;
  xcb_window_t m_window;
};

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const BenchOptions options(argc, argv, 200);
  const auto compositor = options.isComposited ? std::make_unique<Compositor>() : nullptr;

  PixelWatch watch;
  PlainWindow plain;
  const auto floor = measure(options.count, watch, [&] { plain.show(); }, [&] { plain.hide(); });
  BenchedPill pill([] { return X11FloatingPanel::create(); });
  const auto first =
      measure(1, watch, [&] { pill.hud.showRecording(); }, [&] { pill.hud.hideNow(); });
  const auto recording =
      measure(options.count, watch, [&] { pill.hud.showRecording(); }, [&] { pill.hud.hideNow(); });
  const auto firstError = measure(
      1, watch, [&] { pill.hud.showError(QStringLiteral("Microphone access needed")); },
      [&] { pill.hud.hideNow(); });
  const auto error = measure(
      options.count, watch, [&] { pill.hud.showError(QStringLiteral("Microphone access needed")); },
      [&] { pill.hud.hideNow(); });

  const double ground = at(floor, 0.5);
  print("a plain window", floor, ground);
  print("the very first recording", first, ground);
  print("a recording", recording, ground);
  print("the very first message", firstError, ground);
  print("a message", error, ground);
  const double worst = std::max({at(recording, 0.99), at(error, 0.99), first.back()});
  std::printf("limit: p99 %.0f ms\n", limitMilliseconds);
  return worst <= limitMilliseconds || options.isReportOnly ? 0 : 1;
}
