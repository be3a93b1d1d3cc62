// How long after a key goes down Vemo hears of it while 1,000 keys a second are typed, and whether
// typing takes longer when Vemo listens.
//
// A typist posts a letter each millisecond and measures how long it takes to the typist's own
// window: with nobody listening, and with Vemo's hotkeys. Then every 20 letters the right Alt key
// is tapped, which is push-to-talk, and last each letter is timed by a listener. Times begin before
// the key is sent to the server, so they hold the way there too.
//
// Runs on the X server that DISPLAY names. On a busy machine give server and typist the right of
// way: chrt -r 20 tools/virtual-desktop --x11 -- PROGRAM [SECONDS A ROUND]
#include <xcb/xtest.h>

#include <QCoreApplication>
#include <QTemporaryDir>
#include <algorithm>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <thread>
#include <vector>

#include "desktop/HotkeyManager.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "platform/x11/X11KeyEventSource.h"
#include "platform/x11/X11KeyPoster.h"
#include "platform/x11/X11LoneModifier.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;
using SteadyClock = std::chrono::steady_clock;

namespace {

constexpr int rounds = 5;
constexpr int lettersATap = 20;
constexpr std::chrono::milliseconds interval{1};
constexpr xcb_keycode_t firstLetter = 24;  // Q, and nine more to its right
constexpr int letterCount = 10;
constexpr xcb_keycode_t rightAlt = 108;

double milliseconds(SteadyClock::duration duration) {
  return std::chrono::duration<double, std::milli>(duration).count();
}

struct Spread {
  explicit Spread(std::vector<double> times) : count(times.size()) {
    std::ranges::sort(times);
    if (times.empty()) return;
    median = times[count / 2];
    p99 = times[count * 99 / 100];
    worst = times.back();
  }
  std::size_t count;
  double median = 0, p99 = 0, worst = 0;
};

void print(const char* what, const Spread& spread) {
  std::printf("%-34s %7zu keys  median %.3f ms  p99 %.3f ms  worst %.3f ms\n", what, spread.count,
              spread.median, spread.p99, spread.worst);
}

/// When keys of each kind were sent, for who hears them in the same order.
class SentTimes {
 public:
  void note(SteadyClock::time_point time) { m_times[m_sent.fetch_add(1)] = time; }
  double ageOfNext(SteadyClock::time_point now) { return milliseconds(now - m_times[m_heard++]); }
  std::size_t unheard() const { return m_sent - m_heard; }

 private:
  std::vector<SteadyClock::time_point> m_times = std::vector<SteadyClock::time_point>(1 << 20);
  std::atomic<std::size_t> m_sent = 0;
  std::size_t m_heard = 0;
};

class Typist {
 public:
  Typist() : m_connection(xcb_connect(nullptr, nullptr)) {
    const auto screen = xcb_setup_roots_iterator(xcb_get_setup(m_connection)).data;
    m_root = screen->root;
    const auto window = xcb_generate_id(m_connection);
    const std::uint32_t values[] = {1, XCB_EVENT_MASK_KEY_PRESS};
    xcb_create_window(m_connection, XCB_COPY_FROM_PARENT, window, m_root, 0, 0, 100, 100, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                      XCB_CW_OVERRIDE_REDIRECT | XCB_CW_EVENT_MASK, values);
    xcb_map_window(m_connection, window);
    xcb_set_input_focus(m_connection, XCB_INPUT_FOCUS_PARENT, window, XCB_CURRENT_TIME);
    std::free(xcb_get_input_focus_reply(m_connection, xcb_get_input_focus(m_connection), nullptr));
  }
  ~Typist() { xcb_disconnect(m_connection); }

  /// Returns how long each letter took to the window.
  std::vector<double> type(SteadyClock::duration duration, SentTimes* letters, SentTimes* taps) {
    std::vector<double> times;
    const auto start = SteadyClock::now();
    for (int count = 0; SteadyClock::now() - start < duration; ++count) {
      std::this_thread::sleep_until(start + count * interval);
      if (taps && count % lettersATap == lettersATap - 1) {
        taps->note(SteadyClock::now());
        strike(rightAlt);
      }
      const auto sent = SteadyClock::now();
      if (letters) letters->note(sent);
      const auto code = static_cast<xcb_keycode_t>(firstLetter + count % letterCount);
      strike(code);
      awaitLetter(code);
      times.push_back(milliseconds(SteadyClock::now() - sent));
    }
    return times;
  }

 private:
  void strike(xcb_keycode_t code) {
    for (const int event : {XCB_KEY_PRESS, XCB_KEY_RELEASE})
      xcb_test_fake_input(m_connection, event, code, XCB_CURRENT_TIME, m_root, 0, 0, 0);
    xcb_flush(m_connection);
  }

  void awaitLetter(xcb_keycode_t code) {
    while (xcb_generic_event_t* event = xcb_wait_for_event(m_connection)) {
      const bool isIt = event->response_type == XCB_KEY_PRESS &&
                        reinterpret_cast<xcb_key_press_event_t*>(event)->detail == code;
      std::free(event);
      if (isIt) return;
    }
  }

  xcb_connection_t* m_connection;
  xcb_window_t m_root;
};

/// Runs the event loop here while the typist types elsewhere, until everything is heard.
std::vector<double> typeWhileListening(Typist& typist, SteadyClock::duration duration,
                                       SentTimes* letters, SentTimes* taps) {
  std::atomic<bool> isDone = false;
  std::vector<double> times;
  std::thread hand([&] {
    times = typist.type(duration, letters, taps);
    isDone = true;
    QMetaObject::invokeMethod(qApp, [] {}, Qt::QueuedConnection);
  });
  const auto isHeard = [](const SentTimes* sent) { return !sent || sent->unheard() == 0; };
  while (!isDone || !isHeard(letters) || !isHeard(taps))
    QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  hand.join();
  return times;
}

void append(std::vector<double>& all, const std::vector<double>& more) {
  all.insert(all.end(), more.begin(), more.end());
}

}  // namespace

int main(int argc, char** argv) {
  QCoreApplication application(argc, argv);
  const std::chrono::seconds duration(argc > 1 ? std::max(1, std::atoi(argv[1])) : 5);
  Typist typist;
  const auto poster = X11KeyPoster::create();
  if (!poster) {
    std::fprintf(stderr, "There is no X server.\n");
    return 1;
  }

  // What every key costs until the source tells of it.
  X11KeyEventSource plainSource;
  SentTimes letters;
  std::vector<double> untilTold;
  plainSource.onEvent = [&](const KeyEvent& event) {
    if (event.type == KeyEvent::Type::KeyDown)
      untilTold.push_back(letters.ageOfNext(SteadyClock::now()));
  };

  // What push-to-talk costs until the hotkeys call back.
  QtMainThread mainThread;
  QtClock clock(mainThread);
  QTemporaryDir folder;
  DebugLog debugLog(clock, folder.path());
  Settings settings(folder.filePath(u"settings.json"_s), debugLog);
  X11KeyEventSource source(poster->keyboard()->connection().window());
  X11LoneModifier loneModifier(poster->keyboard());
  HotkeyManager hotkeys(source, loneModifier, clock, mainThread, settings, debugLog);
  SentTimes taps;
  std::vector<double> untilCalled;
  hotkeys.onPushToTalkDown = [&] { untilCalled.push_back(taps.ageOfNext(SteadyClock::now())); };

  std::vector<double> typingAlone;
  std::vector<double> typingHeard;
  for (int round = 0; round < rounds; ++round) {
    append(typingAlone, typeWhileListening(typist, duration, nullptr, nullptr));
    hotkeys.installTap();
    append(typingHeard, typeWhileListening(typist, duration, nullptr, nullptr));
    typeWhileListening(typist, duration, nullptr, &taps);
    hotkeys.removeTap();
    plainSource.start();
    typeWhileListening(typist, duration, &letters, nullptr);
    plainSource.stop();
  }

  print("key sent to told by the source", Spread(untilTold));
  print("right Alt sent to push-to-talk", Spread(untilCalled));
  const Spread alone(typingAlone);
  const Spread heard(typingHeard);
  print("typing, Vemo off", alone);
  print("typing, Vemo on", heard);
  std::printf("typing on / off: median %.3f, p99 %.3f\n", heard.median / alone.median,
              heard.p99 / alone.p99);
  return 0;
}
