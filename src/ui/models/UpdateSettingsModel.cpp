#include "ui/models/UpdateSettingsModel.h"

#include <utility>

#include "session/AppState.h"
#include "updates/UpdateManager.h"

namespace vemo {

UpdateSettingsModel::UpdateSettingsModel(With with) : m_with(std::move(with)) {
  m_observations.push_back(m_with.updates.changed.observe([this] { Q_EMIT changed(); }));
  // Whether a restart is possible goes with the dictation.
  m_observations.push_back(m_with.appState.changed.observe([this] { Q_EMIT changed(); }));
}

bool UpdateSettingsModel::isConfigured() const {
  return m_with.updates.isConfigured();
}

bool UpdateSettingsModel::checksAutomatically() const {
  return m_with.updates.automaticallyChecksForUpdates();
}

void UpdateSettingsModel::setChecksAutomatically(bool isOn) {
  m_with.updates.setAutomaticallyChecksForUpdates(isOn);
}

bool UpdateSettingsModel::downloadsAutomatically() const {
  return m_with.updates.automaticallyDownloadsUpdates();
}

void UpdateSettingsModel::setDownloadsAutomatically(bool isOn) {
  m_with.updates.setAutomaticallyDownloadsUpdates(isOn);
}

bool UpdateSettingsModel::receivesBetaUpdates() const {
  return m_with.updates.receivesBetaUpdates();
}

void UpdateSettingsModel::setReceivesBetaUpdates(bool isOn) {
  m_with.updates.setReceivesBetaUpdates(isOn);
}

bool UpdateSettingsModel::isUpdateReady() const {
  return isConfigured() && m_with.updates.readyUpdate();
}

QString UpdateSettingsModel::statusLine() const {
  if (!isConfigured()) return tr("In-app updates aren't set up in this build.");
  if (const auto& ready = m_with.updates.readyUpdate())
    return tr("Vemo %1 is downloaded and ready to install").arg(ready->version);
  const auto& date = m_with.updates.lastUpdateCheckDate();
  if (!date) return tr("Not checked yet");
  return tr("Last checked %1")
      .arg(m_with.locale.toString(date->toLocalTime(), QLocale::ShortFormat));
}

QString UpdateSettingsModel::buttonLabel() const {
  return isUpdateReady() ? tr("Restart to Update") : tr("Check for Updates");
}

bool UpdateSettingsModel::isButtonEnabled() const {
  return isUpdateReady() ? m_with.updates.canRestartNow() : m_with.updates.canCheckForUpdates();
}

QString UpdateSettingsModel::tooltip() const {
  if (!isUpdateReady()) return {};
  return m_with.updates.canRestartNow() ? tr("Quit Vemo, install the update and open it again")
                                        : tr("Available when dictation finishes");
}

void UpdateSettingsModel::press() {
  isUpdateReady() ? m_with.updates.restartToUpdate() : m_with.updates.checkForUpdates();
}

}  // namespace vemo
