// Whether 5,000 rows of the dictionary scroll without a dropped frame, drawn by software: at each
// beat of the display the list moves, and the frame counts as dropped when it isn't on the screen
// before the next beat.
//
// The list is read (as the wheel moves it, a few rows a frame) and dragged through by its bar, from
// the first row to the last, with other rows in each frame. Of the slowest frame it's told which it
// was and what the processor took for it: the rest is waiting, for the display or for the
// processor.
//
// Runs on the display that DISPLAY names:
//   tools/virtual-desktop --window-manager -- PROGRAM [FRAMES] [--report-only]
#include <xcb/xcb.h>

#include <QQuickItem>
#include <QQuickWindow>
#include <cstdio>

#include "BenchedWindows.h"

using namespace vemo;
using SteadyClock = std::chrono::steady_clock;
using Milliseconds = std::chrono::duration<double, std::milli>;

namespace {

constexpr double limitHz = 30;
constexpr double wheelStep = 120;

class BenchedList {
 public:
  BenchedList() {
    m_windows.scenes.open(Scene::Main);
    for (QWindow* window : QGuiApplication::topLevelWindows())
      if (auto* quick = qobject_cast<QQuickWindow*>(window)) m_window = quick;
    m_list = find(*m_window->contentItem());
    QObject::connect(m_window, &QQuickWindow::frameSwapped, [this] { ++m_frames; });
    BenchedWindows::runUntil([this] { return m_frames > 0; });
  }

  double height() const { return m_list->property("contentHeight").toDouble() - m_list->height(); }

  /// The milliseconds until the display has drawn the list at this place.
  double moveTo(double contentY) {
    const auto start = SteadyClock::now();
    const int before = m_frames;
    m_list->setProperty("contentY", m_list->property("originY").toDouble() + contentY);
    BenchedWindows::runUntil([&] { return m_frames > before; });
    awaitDisplay();
    return Milliseconds(SteadyClock::now() - start).count();
  }

 private:
  static QQuickItem* find(QQuickItem& item) {
    if (item.inherits("QQuickListView") && item.property("count").toInt() >= 5000) return &item;
    for (QQuickItem* child : item.childItems())
      if (QQuickItem* found = find(*child)) return found;
    return nullptr;
  }

  /// An answer that comes after everything that was asked before.
  static void awaitDisplay() {
    xcb_connection_t* xcb =
        qApp->nativeInterface<QNativeInterface::QX11Application>()->connection();
    std::free(xcb_get_input_focus_reply(xcb, xcb_get_input_focus(xcb), nullptr));
  }

  BenchedWindows m_windows{u"dictionary-5000"_s};
  QQuickWindow* m_window = nullptr;
  QQuickItem* m_list = nullptr;
  int m_frames = 0;
};

/// True when no frame came late.
bool scroll(BenchedList& list, const char* how, double hertz, int frames, double step) {
  const Milliseconds period(1000 / hertz);
  std::vector<double> times;
  std::vector<double> processor;
  int dropped = 0;
  auto beat = SteadyClock::now();
  for (int frame = 1; frame <= frames; ++frame) {
    const double before = processorMilliseconds();
    times.push_back(list.moveTo(std::min(list.height(), frame * step)));
    processor.push_back(processorMilliseconds() - before);
    dropped += int(times.back() / period.count());
    beat += std::chrono::duration_cast<SteadyClock::duration>(period);
    beat = std::max(beat, SteadyClock::now());
    while (SteadyClock::now() < beat) QCoreApplication::processEvents(QEventLoop::AllEvents, 1);
  }
  const auto slowest = std::size_t(std::ranges::max_element(times) - times.begin());
  std::printf(
      "%-10s at %2.0f Hz: %d of %d frames dropped   p50 %5.1f ms   p99 %5.1f ms   "
      "max %5.1f ms (frame %zu, processor %.1f ms)   processor p50 %5.1f ms, max %5.1f ms\n",
      how, hertz, dropped, frames, at(times, 0.5), at(times, 0.99), at(times, 1), slowest + 1,
      processor[slowest], at(processor, 0.5), at(processor, 1));
  std::fflush(stdout);
  return dropped == 0;
}

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const BenchOptions options(argc, argv, 300);
  BenchedList list;
  bool isFast = true;
  for (const double hertz : {limitHz, 2 * limitHz}) {
    const bool wasRead = scroll(list, "read", hertz, options.count, wheelStep);
    const bool wasDragged =
        scroll(list, "dragged", hertz, options.count, list.height() / options.count);
    if (hertz == limitHz) isFast = wasRead && wasDragged;
  }
  return isFast || options.isReportOnly ? 0 : 1;
}
