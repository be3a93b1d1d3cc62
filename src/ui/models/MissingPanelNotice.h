// Tells a person whose desktop has no panel for Vemo's icon that the menu is in the main window.
//
// Main thread only; owned by what brings together the panel's item and the windows. The log is told
// when the grace time is over, the person, once a run, as soon as the main window is open to say it
// in. Nothing else waits for a panel: the windows, the hotkeys and the menu in the window are there
// without one.
#pragma once

#include <QCoreApplication>
#include <QString>
#include <chrono>
#include <functional>

#include "base/Clock.h"
#include "base/TaskScope.h"

namespace vemo {

class Scenes;
class StatusItem;

class MissingPanelNotice {
  Q_DECLARE_TR_FUNCTIONS(MissingPanelNotice)

 public:
  /// Desktops start their panel beside the programs of a login, and a panel that has crashed anew:
  /// on a slow disk, either takes seconds. Who has no panel misses nothing meanwhile.
  static constexpr auto graceTime = std::chrono::seconds(10);

  /// What it works with; all of it outlives the notice.
  struct With {
    MainThread& mainThread;
    Clock& clock;
    const StatusItem& item;
    const Scenes& scenes;
    std::function<void(const QString&)> log;
    std::function<void(const QString&)> showToast;  ///< over the main window
  };

  explicit MissingPanelNotice(With with);

  /// The item's hasHost() is known, or reads differently.
  void hostKnown();
  /// A window has opened or closed.
  void windowsChanged() { tell(); }

 private:
  Task<> waitForPanel(std::stop_token stop);
  void tell();

  With m_with;
  bool m_isKnownMissing = false;
  bool m_isToBeTold = false;
  StartedTask m_waiting;
  TaskScope m_tasks;
};

}  // namespace vemo
