#include "updates/UpdateManager.h"

#include <utility>

#include "ports/ApplicationSheets.h"
#include "storage/DebugLog.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto firstCheckDelay = 15s;
constexpr auto sheetLimit = 3s;
constexpr auto pollInterval = 100ms;

/// Whether the text has the form of an Ed25519 public key.
bool isUsableKey(const QString& text) {
  const QString key = text.trimmed();
  return key.size() == 44 &&
         QByteArray::fromBase64Encoding(key.toUtf8(), QByteArray::AbortOnBase64DecodingErrors)
                 .decodingStatus == QByteArray::Base64DecodingStatus::Ok;
}

}  // namespace

UpdateManager::UpdateManager(Neighbours neighbours)
    : m_with(std::move(neighbours)),
      m_isConfigured(isUsableKey(m_with.configuration.updateFeedPublicKey)),
      m_receivesBetaUpdates(m_with.settings.get(keys::receiveBetaUpdates, false)),
      m_tasks(m_with.mainThread) {}

void UpdateManager::start() {
  if (m_controller) return;
  if (!m_isConfigured) {
    m_with.debugLog(u"updates: SUPublicEDKey not set; in-app updates disabled"_s);
    return;
  }
  m_controller = m_with.makeUpdater(*this, *this);
  const auto mirror = [this] {
    m_tasks.start([this](std::stop_token stop) { return mirrorUpdater(std::move(stop)); });
  };
  m_mirrors = m_controller->changed.observe(mirror);
  mirror();
  m_with.debugLog(u"updates: started, feed "_s + feedUrl());
  m_tasks.start([this](std::stop_token stop) { return checkSoonAfterLaunch(std::move(stop)); });
}

/// A task, because an updater may tell of a change in the middle of it.
Task<> UpdateManager::mirrorUpdater(std::stop_token) {
  m_canCheckForUpdates = m_controller->canCheckForUpdates();
  m_lastUpdateCheckDate = m_controller->lastUpdateCheckDate();
  m_automaticallyChecksForUpdates = m_controller->automaticallyChecksForUpdates();
  m_automaticallyDownloadsUpdates = m_controller->automaticallyDownloadsUpdates();
  changed.notify();
  co_return;
}

/// A launch isn't held up by a check, and doesn't ask for what is there already.
Task<> UpdateManager::checkSoonAfterLaunch(std::stop_token stop) {
  co_await m_with.clock.sleep(firstCheckDelay, stop);
  if (m_controller->automaticallyChecksForUpdates() && m_controller->canCheckForUpdates() &&
      !m_readyUpdate)
    m_controller->checkForUpdatesInBackground();
}

bool UpdateManager::canRestartNow() const {
  return m_readyUpdate && m_with.isDictationIdle();
}

void UpdateManager::restartToUpdate() {
  if (!canRestartNow() || !m_installReadyUpdate) return;
  const QString version = m_readyUpdate->version;
  m_with.telemetry.track(TelemetryEvent::updateRestartClicked(version));
  m_with.debugLog(u"updates: restarting to install "_s + version);
  closeSheetsBefore([this] { afterDictation([this] { m_installReadyUpdate(); }); });
}

void UpdateManager::checkForUpdates() {
  if (!m_controller) return;
  m_with.telemetry.track(TelemetryEvent::updateCheckManual());
  raiseApplication();
  m_controller->checkForUpdates();
}

void UpdateManager::setReceivesBetaUpdates(bool isOn) {
  m_receivesBetaUpdates = isOn;
  m_with.settings.set(keys::receiveBetaUpdates, isOn);
  changed.notify();
  if (isOn && m_controller) m_controller->checkForUpdatesInBackground();
}

void UpdateManager::setAutomaticallyChecksForUpdates(bool isOn) {
  if (m_controller) m_controller->setAutomaticallyChecksForUpdates(isOn);
}

void UpdateManager::setAutomaticallyDownloadsUpdates(bool isOn) {
  if (m_controller) m_controller->setAutomaticallyDownloadsUpdates(isOn);
}

void UpdateManager::quitClosingSheets() {
  closeSheetsBefore(m_with.terminate);
}

/// Gives the updater's windows a place in a program that is in no task bar.
void UpdateManager::raiseApplication() {
  if (m_with.windows.activationPolicy() == ActivationPolicy::Accessory) {
    m_policyToRestore = ActivationPolicy::Accessory;
    m_with.windows.setActivationPolicy(ActivationPolicy::Regular);
  }
  m_with.windows.activate();
}

bool UpdateManager::shouldHandleShowingScheduledUpdate(const UpdateItem&,
                                                       ImmediateFocus focus) const {
  return focus == ImmediateFocus::Yes;
}

void UpdateManager::willHandleShowingUpdate(UpdateShownBy shownBy, const UpdateItem& update,
                                            UpdateCheck check) {
  if (shownBy == UpdateShownBy::Updater) {
    raiseApplication();
  } else if (check == UpdateCheck::Scheduled) {
    setPendingUpdateVersion(update.displayVersion);
  }
}

void UpdateManager::didReceiveUserAttention(const UpdateItem&) {
  setPendingUpdateVersion(std::nullopt);
}

/// The setting goes before what was: the user may have changed it meanwhile.
void UpdateManager::willFinishUpdateSession() {
  if (!m_policyToRestore) return;
  m_with.windows.setActivationPolicy(
      m_with.settings.get(keys::showInDock, true) ? ActivationPolicy::Regular : *m_policyToRestore);
  m_policyToRestore.reset();
}

QString UpdateManager::feedUrl() const {
  return m_with.configuration.api(u"desktop/updates/appcast.xml"_s).toString(QUrl::FullyEncoded);
}

QStringList UpdateManager::allowedChannels() const {
  return m_with.settings.get(keys::receiveBetaUpdates, false) ? QStringList{u"beta"_s}
                                                              : QStringList{};
}

void UpdateManager::didFindValidUpdate(const UpdateItem& update) {
  reportLater(TelemetryEvent::updateOffered(update.displayVersion, update.buildVersion.toLongLong(),
                                            update.isCritical));
}

void UpdateManager::userDidMakeChoice(UpdateChoice choice, const UpdateItem& update) {
  if (choice == UpdateChoice::Skip)
    reportLater(TelemetryEvent::updateSkipped(update.displayVersion));
  if (choice == UpdateChoice::Dismiss)
    reportLater(TelemetryEvent::updatePostponed(update.displayVersion));
}

void UpdateManager::didAbort(const UpdateError& error) {
  if (error == UpdateError{QString::fromUtf16(updaterErrorDomain), UpdateError::noUpdate}) return;
  reportLater(TelemetryEvent::updateFailed(error.domain, error.code));
}

bool UpdateManager::willInstallUpdateOnQuit(const UpdateItem& update,
                                            std::function<void()> installNow) {
  m_installReadyUpdate = std::move(installNow);
  m_readyUpdate = ReadyUpdate{.version = update.displayVersion, .notes = update.notes};
  m_pendingUpdateVersion.reset();
  changed.notify();
  m_with.debugLog(u"updates: %1 downloaded, ready to install"_s.arg(update.displayVersion));
  reportLater(TelemetryEvent::updateDownloaded(update.displayVersion));
  return true;
}

bool UpdateManager::shouldPostponeRelaunch(const UpdateItem& update,
                                           std::function<void()> relaunch) {
  if (!m_with.sheets.isAnyAttached()) return false;
  m_with.debugLog(u"updates: closing sheets before installing "_s + update.displayVersion);
  closeSheetsBefore([this, relaunch = std::move(relaunch)] { afterDictation(relaunch); });
  return true;
}

void UpdateManager::setPendingUpdateVersion(std::optional<QString> version) {
  if (m_pendingUpdateVersion == version) return;
  m_pendingUpdateVersion = std::move(version);
  changed.notify();
}

Task<> UpdateManager::report(TelemetryEvent event) {
  m_with.telemetry.track(std::move(event));
  co_return;
}

void UpdateManager::reportLater(const TelemetryEvent& event) {
  m_tasks.start([this, &event](std::stop_token) { return report(event); });
}

void UpdateManager::closeSheetsBefore(std::function<void()> next) {
  if (!m_with.sheets.isAnyAttached()) return next();
  vemoCloseAllSheets.notify();
  m_tasks.start([this, &next](std::stop_token) { return waitForSheets(std::move(next)); });
}

Task<> UpdateManager::waitForSheets(std::function<void()> next) {
  const auto deadline = m_with.clock.monotonicTime() + sheetLimit;
  while (m_with.sheets.isAnyAttached() && m_with.clock.monotonicTime() < deadline)
    co_await m_with.clock.sleep(pollInterval, {});
  if (m_with.sheets.isAnyAttached()) {
    m_with.debugLog(u"updates: a sheet was still open after %1.0 seconds; ending it directly"_s.arg(
        sheetLimit.count()));
    m_with.sheets.endAttached();
  }
  next();
}

void UpdateManager::afterDictation(std::function<void()> next) {
  if (m_with.isDictationIdle()) return next();
  m_tasks.start([this, &next](std::stop_token) { return waitForDictation(std::move(next)); });
}

Task<> UpdateManager::waitForDictation(std::function<void()> next) {
  while (!m_with.isDictationIdle()) co_await m_with.clock.sleep(pollInterval, {});
  next();
}

}  // namespace vemo
