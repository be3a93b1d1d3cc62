// The pill by itself: the real controller, drawing and X11 panel, told by the lines of the standard
// input what to show. The time that the waveform sees stands still, so that pictures can be
// compared.
//
//   recording LEVEL | transcribing | error MESSAGE | live TEXT | color NAME | hide | hide-now |
//   quit
//
// Answers each line with "ok".

#include <QGuiApplication>
#include <QSocketNotifier>
#include <QTemporaryDir>
#include <iostream>

#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "platform/x11/X11FloatingPanel.h"
#include "platform/x11/X11Screens.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"
#include "ui/HUDWindowController.h"

namespace {

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

/// Its day never goes on, while everything that waits goes on waiting as usual.
class FrozenClock : public QtClock {
 public:
  using QtClock::QtClock;
  WallTime wallTime() const override {
    return std::chrono::sys_days{std::chrono::year{2026} / 3 / 14} +
           std::chrono::milliseconds(1234);
  }
};

class Stage {
 public:
  explicit Stage(X11Screens& screens)
      : m_hud({.clock = m_clock,
               .mainThread = m_mainThread,
               .settings = m_settings,
               .screens = screens,
               .makePanel = [] { return X11FloatingPanel::create(); }}) {}

  void obey(const QString& line) {
    const QString command = line.section(u' ', 0, 0);
    const QString argument = line.section(u' ', 1);
    if (command == u"recording") {
      m_hud.showRecording();
      m_hud.setLevel(argument.toFloat());
    } else if (command == u"transcribing") {
      m_hud.showTranscribing();
    } else if (command == u"error") {
      m_hud.showError(argument);
    } else if (command == u"live") {
      m_hud.model().liveText = argument;
      m_hud.model().changed.notify({});
    } else if (command == u"color") {
      m_settings.set(keys::dictationPillColor, argument);
    } else if (command == u"hide") {
      m_hud.hide();
    } else if (command == u"hide-now") {
      m_hud.hideNow();
    } else {
      QCoreApplication::quit();
    }
  }

 private:
  QTemporaryDir m_folder;
  QtMainThread m_mainThread;
  FrozenClock m_clock{m_mainThread};
  DebugLog m_debugLog{m_clock, m_folder.path()};
  Settings m_settings{m_folder.filePath(u"settings.json"_s), m_debugLog};
  HUDWindowController m_hud;
};

}  // namespace

int main(int argc, char** argv) {
  const QGuiApplication application(argc, argv);
  QGuiApplication::setQuitOnLastWindowClosed(false);
  const auto screens = X11Screens::create();
  if (!screens) return 1;
  Stage stage(*screens);
  QSocketNotifier input(0, QSocketNotifier::Read);
  QObject::connect(&input, &QSocketNotifier::activated, &input, [&stage] {
    std::string line;
    if (!std::getline(std::cin, line)) line = "quit";
    stage.obey(QString::fromStdString(line));
    std::cout << "ok" << std::endl;
  });
  return QGuiApplication::exec();
}
