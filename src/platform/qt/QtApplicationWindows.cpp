#include "platform/qt/QtApplicationWindows.h"

#include <QGuiApplication>
#include <QWindow>

namespace vemo {

namespace {

/// Menus, the pill and other helpers are windows to Qt, too.
bool canBecomeMain(const QWindow& window) {
  const auto unfit = Qt::WindowDoesNotAcceptFocus | Qt::BypassWindowManagerHint;
  return window.type() == Qt::Window && !(window.flags() & unfit);
}

}  // namespace

void QtApplicationWindows::bringForward() {
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    if (!canBecomeMain(*window)) continue;
    window->setWindowStates(window->windowStates() & ~Qt::WindowMinimized);
    window->setVisible(true);
    window->raise();
    window->requestActivate();
  }
}

/// The window that was active last, where Qt still knows it.
void QtApplicationWindows::activate() {
  QWindow* toActivate = QGuiApplication::focusWindow();
  for (QWindow* window : QGuiApplication::topLevelWindows()) {
    if (!toActivate && canBecomeMain(*window) && window->isVisible()) toActivate = window;
  }
  if (!toActivate) return;
  toActivate->setWindowStates(toActivate->windowStates() & ~Qt::WindowMinimized);
  toActivate->raise();
  toActivate->requestActivate();
}

void QtApplicationWindows::setActivationPolicy(ActivationPolicy policy) {
  m_policy = policy;
  if (onPolicyChanged) onPolicyChanged(policy);
}

}  // namespace vemo
