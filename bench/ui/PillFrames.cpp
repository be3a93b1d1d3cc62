// What the pill costs while it moves, and while it's hidden: frames on time, processor time of
// Vemo's part and of the X server, wake-ups, memory.
//
// Dictates over and over: the pill comes, follows a microphone, processes, shows a message, goes.
// Runs on the display that DISPLAY names:
//   tools/virtual-desktop --window-manager -- PROGRAM [SECONDS] [--composited] [--report-only]
#include <sys/resource.h>
#include <sys/socket.h>
#include <unistd.h>

#include <QFile>
#include <QTimer>
#include <cmath>
#include <cstdio>
#include <cstring>

#include "BenchedPill.h"

using namespace vemo;
using namespace std::chrono_literals;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr double onTimeLimit = 0.99;
constexpr double processorLimit = 0.05;
constexpr auto period = 1'000'000'000ns / 60;

/// The real panel, whose beats are held against a display of 60 Hz that starts with the first.
class TimedPanel : public FloatingPanel {
 public:
  TimedPanel() : m_panel(X11FloatingPanel::create()) {
    m_panel->onFrame = [this] { beat(); };
    m_panel->onRedrawNeeded = [this] { onRedrawNeeded(); };
  }

  void setFrame(const ScreenRect& frame, const Screen& screen) override {
    m_panel->setFrame(frame, screen);
  }
  void setAlpha(double alpha) override { m_panel->setAlpha(alpha); }
  void orderFrontRegardless() override { m_panel->orderFrontRegardless(); }
  void orderOut() override { m_panel->orderOut(); }
  void setAnimating(Animating animating) override {
    if (animating == Animating::No) m_start.reset();
    m_panel->setAnimating(animating);
  }
  PanelPixels pixels() override { return m_panel->pixels(); }
  void present(const PixelRect& changed) override {
    pixelCount += std::int64_t(changed.width) * changed.height;
    m_panel->present(changed);
  }
  bool isTranslucent() const override { return m_panel->isTranslucent(); }

  void resetFigures() {
    frames = missed = 0;
    drawingMicroseconds = 0;
    pixelCount = 0;
  }

  int frames = 0;  ///< that the display has shown
  int missed = 0;  ///< of those, for which nothing new was there in time
  double drawingMicroseconds = 0;
  std::int64_t pixelCount = 0;

 private:
  /// A frame is due at each multiple of the period; it's on time when it is drawn before the next
  /// is.
  void beat() {
    const auto begin = SteadyClock::now();
    onFrame();
    const auto end = SteadyClock::now();
    drawingMicroseconds += std::chrono::duration<double, std::micro>(end - begin).count();
    if (!m_start) {
      m_start = begin;
      m_lastFrame = 0;
      return;
    }
    const std::int64_t frame = (begin - *m_start + period / 2) / period;
    const std::int64_t passed = frame - m_lastFrame;
    frames += int(passed);
    missed += int(std::max<std::int64_t>(0, passed - 1));
    if (passed > 0 && end - *m_start > (frame + 1) * period) ++missed;
    m_lastFrame = frame;
  }

  std::unique_ptr<X11FloatingPanel> m_panel;
  std::optional<SteadyClock::time_point> m_start;
  std::int64_t m_lastFrame = 0;
};

double processorSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return double(time.tv_sec) + double(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

double processorSecondsOf(pid_t process) {
  QFile file(QStringLiteral("/proc/%1/stat").arg(process));
  if (!file.open(QIODevice::ReadOnly)) return 0;
  const auto fields = file.readAll().split(' ');
  return (fields.value(13).toDouble() + fields.value(14).toDouble()) / double(sysconf(_SC_CLK_TCK));
}

pid_t serverProcess() {
  const auto connection = X11Connection::create();
  ucred peer{};
  socklen_t size = sizeof peer;
  getsockopt(xcb_get_file_descriptor(connection->xcb()), SOL_SOCKET, SO_PEERCRED, &peer, &size);
  return peer.pid;
}

long statusFigure(const char* name) {
  QFile file(QStringLiteral("/proc/self/status"));
  if (!file.open(QIODevice::ReadOnly)) return -1;
  for (const auto& line : file.readAll().split('\n')) {
    if (line.startsWith(name))
      return line.sliced(qsizetype(std::strlen(name)) + 1).simplified().split(' ').front().toLong();
  }
  return -1;
}

double residentMegabytes() {
  return double(statusFigure("VmRSS")) / 1024;
}

void runFor(std::chrono::milliseconds duration) {
  QEventLoop loop;
  QTimer::singleShot(duration, Qt::PreciseTimer, &loop, [&loop] { loop.quit(); });
  loop.exec();
}

/// Speech as a level meter sees it, twenty times a second.
void speak(HUDWindowController& hud, std::chrono::milliseconds duration) {
  for (auto time = 0ms; time < duration; time += 50ms) {
    hud.setLevel(float(0.3 + 0.3 * std::sin(double(time.count()) * 0.009)));
    runFor(50ms);
  }
}

void dictate(HUDWindowController& hud) {
  hud.showRecording();
  speak(hud, 3s);
  hud.showTranscribing();
  runFor(2s);
  hud.hide();
  runFor(500ms);
}

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  const BenchOptions options(argc, argv, 60);
  const auto compositor = options.isComposited ? std::make_unique<Compositor>() : nullptr;

  const double before = residentMegabytes();
  TimedPanel* panel = nullptr;
  BenchedPill pill([&panel] {
    auto made = std::make_unique<TimedPanel>();
    panel = made.get();
    return made;
  });
  dictate(pill.hud);
  const double withPill = residentMegabytes();
  pill.hud.showError(QStringLiteral("Please sign in to dictate"));
  runFor(3s);
  const double withMessage = residentMegabytes();

  panel->resetFigures();
  const pid_t server = serverProcess();
  const double serverBefore = processorSecondsOf(server);
  const double processorBefore = processorSeconds();
  const auto start = SteadyClock::now();
  while (SteadyClock::now() - start < std::chrono::seconds(options.count)) dictate(pill.hud);
  const double elapsed = std::chrono::duration<double>(SteadyClock::now() - start).count();
  const double processor = (processorSeconds() - processorBefore) / elapsed;
  const double serverProcessor = (processorSecondsOf(server) - serverBefore) / elapsed;

  runFor(1s);
  const long wakeUpsBefore = statusFigure("voluntary_ctxt_switches");
  runFor(5s);
  const long wakeUps = statusFigure("voluntary_ctxt_switches") - wakeUpsBefore - 1;

  const double onTime = 1 - double(panel->missed) / std::max(1, panel->frames);
  std::printf("frames on time              %6.2f %%  of %d   (at least %.0f %%)\n", onTime * 100,
              panel->frames, onTimeLimit * 100);
  std::printf("a frame's drawing           %6.0f us, %.0f pixels\n",
              panel->drawingMicroseconds / std::max(1, panel->frames),
              double(panel->pixelCount) / std::max(1, panel->frames));
  std::printf("processor                   %6.2f %%  of a core   (at most %.0f %%)\n",
              processor * 100, processorLimit * 100);
  std::printf("processor of the X server   %6.2f %%  of a core\n", serverProcessor * 100);
  std::printf("wake-ups in 5 s hidden      %6ld      (none)\n", wakeUps);
  std::printf(
      "memory: program %.1f MB, with the pill +%.1f MB, once a message was shown +%.1f MB\n",
      before, withPill - before, withMessage - withPill);
  const bool isWithinLimits = onTime >= onTimeLimit && processor <= processorLimit && wakeUps <= 0;
  return isWithinLimits || options.isReportOnly ? 0 : 1;
}
