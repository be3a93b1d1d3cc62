#include "app/Face.h"

#include <QGuiApplication>
#include <QPalette>

#include "app/Desktop.h"
#include "app/Foundation.h"
#include "app/Program.h"
#include "platform/qt/QtTaskBar.h"

namespace vemo {

Face::Face(Foundation& foundation, Desktop& desktop, Program& program)
    : m_foundation(foundation),
      m_desktop(desktop),
      m_program(program),
      m_missingPanel(
          {.mainThread = foundation.mainThread,
           .clock = foundation.clock,
           .item = desktop.statusItem,
           .scenes = desktop.scenes,
           .log = [&foundation](const QString& line) { foundation.debugLog(line); },
           .showToast =
               [&program](const QString& text) { program.mainWindow.toast()->show(text); }}),
      m_tasks(foundation.mainThread) {
  connectWindows();
  connectStatusItem();
}

Face::~Face() {
  m_desktop.scenes.onChanged = {};
  m_desktop.scenes.closeAll();
  m_desktop.statusItem.onActivated = {};
  m_desktop.statusItem.onHostKnown = {};
  m_desktop.statusItem.setMenu({});
  m_desktop.appearance.onChanged = {};
}

void Face::connectWindows() {
  QuickScenes& scenes = m_desktop.scenes;
  scenes.modelOf = [this](Scene scene) -> QObject& {
    if (scene == Scene::Settings) return m_program.settingsWindow;
    return m_program.mainWindow;
  };
  scenes.onChanged = [this] {
    m_missingPanel.windowsChanged();
    m_tasks.start([this](std::stop_token stop) { return lookWhereTheFocusWent(std::move(stop)); });
  };
  scenes.applyPolicy = applyTaskBarPolicy;
  m_desktop.windows.onPolicyChanged = [&scenes](ActivationPolicy policy) {
    scenes.setActivationPolicy(policy);
  };
  scenes.setActivationPolicy(m_desktop.windows.activationPolicy());
  m_desktop.appearance.onChanged = [this] { showLook(); };
  showLook();
}

/// The window manager and the next program take a moment to pass the focus on.
Task<> Face::lookWhereTheFocusWent(std::stop_token stop) {
  co_await m_foundation.clock.sleep(std::chrono::milliseconds(300), stop);
  if (!stop.stop_requested()) m_desktop.secureInput.lookAgain();
}

void Face::connectStatusItem() {
  m_desktop.statusItem.onActivated = [this] { m_desktop.scenes.open(Scene::Main); };
  m_desktop.statusItem.onHostKnown = [this] { m_missingPanel.hostKnown(); };
  m_observations.push_back(m_program.menu.changed.observe([this] { showMenu(); }));
  showMenu();
}

void Face::showMenu() {
  m_desktop.statusItem.setMenu(m_program.menu.items());
  m_desktop.statusItem.setImage(m_program.menu.statusImage());
}

/// Where no portal tells, the desktop's palette does.
void Face::showLook() {
  const auto told = m_desktop.appearance.name();
  const bool isPaletteDark = QGuiApplication::palette().window().color().lightness() < 128;
  m_desktop.scenes.setLook({.isDark = told ? *told == u"dark" : isPaletteDark,
                            .hasReducedMotion = m_desktop.appearance.hasReducedMotion(),
                            .accent = m_desktop.appearance.accent()});
}

}  // namespace vemo
