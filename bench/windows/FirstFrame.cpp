// How long after the click a window is seen on the screen, finished: the first time in a process
// (cold: the shared object and Qt Quick are loaded, fonts are looked for) and after it was closed
// (warm: the engine is made anew). Another client watches a pixel in the middle of the window.
//
// Runs on the display that DISPLAY names:
//   tools/virtual-desktop --window-manager -- PROGRAM [PROCESSES] [--report-only]
#include <xcb/xcb.h>

#include <QProcess>
#include <cstdio>
#include <cstring>
#include <mutex>
#include <thread>

#include "BenchedWindows.h"

using namespace vemo;
using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr double limitMilliseconds = 300;
constexpr auto rest = 400ms;
constexpr auto figures = "opened";

/// Notes when the pixel in the middle of the screen, where windows open, became another.
class PixelWatch {
 public:
  struct Change {
    SteadyClock::time_point time;
    std::uint32_t pixel;
    double processor;  ///< processorMilliseconds() at the time
  };

  std::vector<Change> changes() {
    const std::lock_guard lock(m_mutex);
    return m_changes;
  }

  /// What there was since `start`, when nothing has changed for a while after something did.
  std::vector<Change> awaitPicture(SteadyClock::time_point start) {
    const auto isNew = [start](const Change& change) { return change.time > start; };
    BenchedWindows::runUntil([&] { return isNew(lastChange()); });
    while (SteadyClock::now() - lastChange().time < rest)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
    auto all = changes();
    std::erase_if(all, [&](const Change& change) { return !isNew(change); });
    return all;
  }

  void awaitRest() {
    BenchedWindows::runUntil([this] { return !changes().empty(); });
    while (SteadyClock::now() - lastChange().time < rest)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
  }

 private:
  Change lastChange() {
    const std::lock_guard lock(m_mutex);
    return m_changes.empty() ? Change{} : m_changes.back();
  }

  void watch(const std::stop_token& stop) {
    xcb_connection_t* xcb = xcb_connect(nullptr, nullptr);
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(xcb)).data;
    const auto x = std::int16_t(screen->width_in_pixels / 2);
    const auto y = std::int16_t(screen->height_in_pixels / 2);
    while (!stop.stop_requested()) {
      auto* image = xcb_get_image_reply(
          xcb, xcb_get_image(xcb, XCB_IMAGE_FORMAT_Z_PIXMAP, screen->root, x, y, 1, 1, ~0U),
          nullptr);
      if (!image) break;
      std::uint32_t now = 0;
      std::memcpy(&now, xcb_get_image_data(image), sizeof now);
      std::free(image);
      note(now & 0xFFFFFF);
      std::this_thread::sleep_for(500us);
    }
    xcb_disconnect(xcb);
  }

  void note(std::uint32_t pixel) {
    const std::lock_guard lock(m_mutex);
    if (!m_changes.empty() && m_changes.back().pixel == pixel) return;
    m_changes.push_back({SteadyClock::now(), pixel, processorMilliseconds()});
    QMetaObject::invokeMethod(qApp, [] {}, Qt::QueuedConnection);
  }

  std::mutex m_mutex;
  std::vector<Change> m_changes;
  std::jthread m_thread{[this](const std::stop_token& stop) { watch(stop); }};
};

struct Times {
  std::vector<double> wall;
  std::vector<double> processor;

  void add(double wallTime, double processorTime) {
    wall.push_back(wallTime);
    processor.push_back(processorTime);
  }
};

/// Until the pixel first was what it stayed.
Times measure(BenchedWindows& windows, PixelWatch& watch, Scene scene) {
  watch.awaitRest();
  const double processorBefore = processorMilliseconds();
  const auto start = SteadyClock::now();
  windows.scenes.open(scene);
  const auto changes = watch.awaitPicture(start);
  const auto first = std::ranges::find(changes, changes.back().pixel, &PixelWatch::Change::pixel);
  Times times;
  times.add(std::chrono::duration<double, std::milli>(first->time - start).count(),
            first->processor - processorBefore);
  return times;
}

void print(const Times& times) {
  std::printf("%s %f %f\n", figures, times.wall.front(), times.processor.front());
}

/// In a process of its own: one line for the first opening, one for the second.
int openTwice(Scene scene) {
  BenchedWindows windows;
  PixelWatch watch;
  for (int round = 0; round < 2; ++round) {
    print(measure(windows, watch, scene));
    windows.close(scene);
  }
  return 0;
}

void addFromProcess(const QString& name, Times& cold, Times& warm) {
  QProcess process;
  process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
  process.start(QCoreApplication::applicationFilePath(), {name});
  if (!process.waitForFinished(-1) || process.exitCode() != 0)
    qFatal("A process that opens a window has failed.");
  int opening = 0;
  for (const auto& line : process.readAllStandardOutput().split('\n')) {
    const auto words = line.split(' ');
    if (words.value(0) != figures) continue;
    (opening++ == 0 ? cold : warm).add(words.value(1).toDouble(), words.value(2).toDouble());
  }
}

double report(const char* what, const Times& times) {
  std::printf("%-16s p50 %6.1f ms   p90 %6.1f ms   max %6.1f ms   processor p50 %6.1f ms\n", what,
              at(times.wall, 0.5), at(times.wall, 0.9), at(times.wall, 1),
              at(times.processor, 0.5));
  std::fflush(stdout);
  return at(times.wall, 0.9);
}

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const QByteArray wanted(argc > 1 ? argv[1] : "");
  if (wanted == "main") return openTwice(Scene::Main);
  if (wanted == "settings") return openTwice(Scene::Settings);

  const BenchOptions options(argc, argv, 20);
  double worst = 0;
  for (const auto& name : {QStringLiteral("main"), QStringLiteral("settings")}) {
    Times cold;
    Times warm;
    for (int i = 0; i < options.count; ++i) addFromProcess(name, cold, warm);
    worst = std::max(worst, report(qPrintable(name + u", cold"_s), cold));
    worst = std::max(worst, report(qPrintable(name + u", warm"_s), warm));
  }
  std::printf("limit: p90 %.0f ms\n", limitMilliseconds);
  return worst <= limitMilliseconds || options.isReportOnly ? 0 : 1;
}
