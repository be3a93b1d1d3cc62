// The real windows from their shared object, on a real display, with models on fakes.
#pragma once

#include <time.h>

#include <QGuiApplication>
#include <algorithm>
#include <functional>
#include <memory>
#include <span>
#include <vector>

#include "platform/quick/QuickScenes.h"
#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {

/// COUNT [--report-only], in this order.
struct BenchOptions {
  BenchOptions(int argc, char** argv, int usualCount) : count(usualCount) {
    for (const QByteArray argument : std::span(argv, std::size_t(argc)).subspan(1)) {
      if (argument == "--report-only") isReportOnly = true;
      if (argument.toInt() > 0) count = argument.toInt();
    }
  }

  int count;
  bool isReportOnly = false;
};

class BenchedWindows {
 public:
  explicit BenchedWindows(const QString& mainState = u"home-full"_s,
                          const QString& settingsState = u"settings-system"_s)
      : m_main(mainState), m_settings(settingsState) {
    scenes.modelOf = [this](Scene scene) -> QObject& {
      return scene == Scene::Main ? m_main.viewModel() : m_settings.viewModel();
    };
    // Nothing moves by itself, so that a picture that stays is the finished one.
    scenes.setLook({.isDark = false, .hasReducedMotion = true});
    QGuiApplication::setQuitOnLastWindowClosed(false);
  }

  void close(Scene scene) {
    scenes.close(scene);
    runUntil([&] { return !scenes.isOpen(scene); });
  }

  /// Runs the event loop until the condition holds; whoever makes it true wakes the loop.
  static void runUntil(const std::function<bool()>& condition) {
    while (!condition()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }

 private:
  MainWindowOnFakes m_main;
  SettingsOnFakes m_settings;

 public:
  QuickScenes scenes{{.sharedObject = QStringLiteral(VEMO_WINDOWS_IN_BUILD),
                      .symbolsFolder = QStringLiteral(VEMO_SYMBOLS_IN_SOURCE)}};
};

/// Of the processor, for all threads of this process: what other programs take of it doesn't count.
inline double processorMilliseconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
}

inline double at(std::vector<double> times, double share) {
  std::ranges::sort(times);
  return times[std::min(times.size() - 1, std::size_t(share * double(times.size())))];
}

}  // namespace vemo
