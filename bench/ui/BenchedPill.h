// The real pill on a real display: controller, drawing and X11 panel, with nothing else of Vemo.
#pragma once

#include <QGuiApplication>
#include <QProcess>
#include <QTemporaryDir>
#include <span>

#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "platform/x11/X11FloatingPanel.h"
#include "platform/x11/X11Screens.h"
#include "storage/DebugLog.h"
#include "ui/HUDWindowController.h"

namespace vemo {

/// COUNT [--composited] [--report-only], in this order.
struct BenchOptions {
  BenchOptions(int argc, char** argv, int usualCount) : count(usualCount) {
    for (const QByteArray argument : std::span(argv, std::size_t(argc)).subspan(1)) {
      if (argument == "--composited") isComposited = true;
      if (argument == "--report-only") isReportOnly = true;
      if (argument.toInt() > 0) count = argument.toInt();
    }
  }

  int count;
  bool isComposited = false;
  bool isReportOnly = false;
};

/// A compositor, for as long as it lives.
class Compositor {
 public:
  Compositor() {
    m_process.start(QStringLiteral("picom"),
                    {QStringLiteral("--backend"), QStringLiteral("xrender"),
                     QStringLiteral("--config"), QStringLiteral("/dev/null")});
    const auto connection = X11Connection::create();
    const xcb_atom_t selection = connection->atom("_NET_WM_CM_S0");
    while (m_process.state() != QProcess::NotRunning) {
      const auto owner = connection->reply<xcb_get_selection_owner_reply_t>(
          xcb_get_selection_owner(connection->xcb(), selection).sequence);
      if (owner && owner->owner != XCB_WINDOW_NONE) break;
      m_process.waitForReadyRead(20);
    }
  }
  ~Compositor() {
    m_process.terminate();
    m_process.waitForFinished();
  }

 private:
  QProcess m_process;
};

class BenchedPill {
 public:
  using MakePanel = std::function<std::unique_ptr<FloatingPanel>()>;

  explicit BenchedPill(MakePanel makePanel)
      : hud({.clock = m_clock,
             .mainThread = m_mainThread,
             .settings = m_settings,
             .screens = *m_screens,
             .makePanel = std::move(makePanel)}) {}

  /// Runs the event loop until the condition holds; whoever makes it true wakes the loop.
  static void runUntil(const std::function<bool()>& condition) {
    while (!condition()) QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
  }

 private:
  QTemporaryDir m_folder;
  QtMainThread m_mainThread;
  QtClock m_clock{m_mainThread};
  DebugLog m_debugLog{m_clock, m_folder.path()};
  Settings m_settings{m_folder.filePath(QStringLiteral("settings.json")), m_debugLog};
  std::unique_ptr<X11Screens> m_screens = X11Screens::create();

 public:
  HUDWindowController hud;
};

}  // namespace vemo
