#include "session/AppDelegate.h"

#include <utility>

#include "ports/ApplicationWindows.h"
#include "ports/CriticalAlert.h"
#include "ports/Scenes.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// What the autostart entry starts the program with.
constexpr auto loginArgument = u"--launched-at-login";

AlertText moveAlert() {
  return {
      .message = AppDelegate::tr("Move Vemo to your Applications folder"),
      .informative = AppDelegate::tr(
          "Vemo is running from the disk image it was downloaded in.\n\nmacOS ties the "
          "Accessibility permission Vemo needs to the app's location. Granting it here would stop "
          "working as soon as you eject this disk image, and the hotkey would fail with no visible "
          "reason.\n\nDrag Vemo to the Applications folder shown beside it, then open it from "
          "there."),
      .button = AppDelegate::tr("Quit")};
}

}  // namespace

AppDelegate::AppDelegate(Neighbours neighbours)
    : m_with(std::move(neighbours)), m_tasks(m_with.mainThread) {}

void AppDelegate::applicationWillFinishLaunching(const QStringList& arguments) {
  m_launchedAtLogin = arguments.contains(QStringView(loginArgument));
}

void AppDelegate::applicationDidFinishLaunching() {
  if (refusesLocation()) return;
  m_hasLaunched = true;
  m_with.debugLog.purgeLegacyLogIfNeeded(m_with.settings);
  config::migrateToggleHotkeyIfNeeded(m_with.settings, m_with.debugLog);
  setDockPresence();
  m_with.windows.activate();
  m_with.services.bootstrapDictation();
  m_with.services.startUpdates();
  m_with.services.startTelemetry(m_launchedAtLogin);
  m_with.mainThread.post([this] {
    restyleWindows();
    m_with.windows.activate();
  });
}

bool AppDelegate::refusesLocation() {
  if (!m_with.location.path.startsWith(u"/Volumes/") && !m_with.location.isOnRemovableMedium)
    return false;
  m_with.windows.setActivationPolicy(ActivationPolicy::Regular);
  m_with.windows.activate();
  m_with.alert.show(moveAlert(), [this] { m_with.services.terminate(); });
  return true;
}

void AppDelegate::setDockPresence() {
  if (!m_with.settings.contains(keys::showInDock)) m_with.settings.set(keys::showInDock, true);
  const bool isShown = m_with.settings.get(keys::showInDock, true);
  m_with.windows.setActivationPolicy(isShown ? ActivationPolicy::Regular
                                             : ActivationPolicy::Accessory);
}

/// The main window is the one that is always there to come back.
void AppDelegate::restyleWindows() {
  m_with.scenes.open(Scene::Main);
}

bool AppDelegate::hasOpenWindow() const {
  return m_with.scenes.isOpen(Scene::Main) || m_with.scenes.isOpen(Scene::Settings);
}

void AppDelegate::applicationWillTerminate() {
  if (m_hasLaunched) m_with.services.endTelemetry();
}

bool AppDelegate::applicationShouldHandleReopen(bool hasVisibleWindows) {
  if (!m_hasLaunched) return true;
  if (!hasVisibleWindows) restyleWindows();
  m_with.windows.activate();
  return true;
}

void AppDelegate::applicationOpenURLs(const QList<QUrl>& urls) {
  for (const QUrl& url : urls) {
    // The redirect of a sign-in has secrets behind its path.
    const QString safe =
        url.toString(QUrl::RemoveQuery | QUrl::RemoveFragment | QUrl::RemoveUserInfo);
    m_with.debugLog(u"appDelegate: opened URL "_s + safe);
    m_with.debugLog(u"app: onOpenURL "_s + safe);
    if (url.scheme() != u"vemo" || !m_hasLaunched) continue;
    m_with.mainThread.post([this] {
      if (!hasOpenWindow()) restyleWindows();
      m_with.windows.activate();
      m_with.windows.bringForward();
    });
    m_tasks.start(
        [this](std::stop_token stop) { return m_with.services.refreshProfile(std::move(stop)); });
  }
}

}  // namespace vemo
