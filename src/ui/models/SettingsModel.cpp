#include "ui/models/SettingsModel.h"

#include <utility>

namespace vemo {

SettingsModel::SettingsModel(With with)
    : m_folderChooser(with.folderChooser),
      m_quit(std::move(with.quit)),
      m_toast(with.clock, with.mainThread),
      m_navigation(with.telemetry),
      m_account({.mainThread = with.mainThread,
                 .appState = with.appState,
                 .auth = with.auth,
                 .clipboard = with.clipboard,
                 .showToast = showToast()}),
      m_system({.settings = with.settings,
                .debugLog = with.debugLog,
                .telemetry = with.telemetry,
                .permissions = with.permissions,
                .loginItem = with.loginItem,
                .windows = with.windows,
                .configuration = with.configuration}),
      m_codebase(with.workspaceIndexer, showToast()),
      m_slack({.mainThread = with.mainThread, .slack = with.slackManager, .toast = m_toast}),
      m_updates({.updates = with.updates, .appState = with.appState, .locale = with.locale}),
      m_recorder({.mainThread = with.mainThread,
                  .clock = with.clock,
                  .settings = with.settings,
                  .hotkey = with.hotkey,
                  .keys = with.localKeyMonitor,
                  .showToast = showToast()}) {
  QObject::connect(&m_account, &AccountSettingsModel::closeRequested, this,
                   &SettingsModel::closeRequested);
}

std::function<void(const QString&)> SettingsModel::showToast() {
  return [this](const QString& message) { m_toast.show(message); };
}

bool SettingsModel::hasOpenSheet() const {
  return m_recorder.isOpen() || m_slack.isOpen() || m_account.isDeleteDialogOpen() ||
         m_account.isAlertOpen() || m_folderChooser.isOpen();
}

void SettingsModel::closeSheets() {
  m_recorder.cancel();
  m_account.closeDialogs();
  m_folderChooser.reject();
  if (m_slack.isOpen()) m_slack.dismiss();
}

}  // namespace vemo
