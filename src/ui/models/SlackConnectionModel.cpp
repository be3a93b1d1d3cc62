#include "ui/models/SlackConnectionModel.h"

#include "base/Text.h"
#include "integrations/SlackManager.h"
#include "ui/models/ToastModel.h"

namespace vemo {

SlackConnectionModel::SlackConnectionModel(With with)
    : m_with(with),
      m_observation(with.slack.changed.observe([this] { Q_EMIT changed(); })),
      m_tasks(with.mainThread) {}

bool SlackConnectionModel::isConnected() const {
  return m_with.slack.isConnected();
}

QString SlackConnectionModel::workspace() const {
  return isConnected() ? m_with.slack.workspaceName() : QString();
}

void SlackConnectionModel::setToken(const QString& token) {
  if (token == m_token) return;
  m_token = token;
  m_failure.clear();
  Q_EMIT changed();
}

bool SlackConnectionModel::canConnect() const {
  return !m_isConnecting && !trimmed(m_token).isEmpty();
}

QString SlackConnectionModel::connectLabel() const {
  return m_isConnecting ? tr("Connecting...") : tr("Connect & Sync");
}

void SlackConnectionModel::open() {
  m_isOpen = true;
  Q_EMIT changed();
}

void SlackConnectionModel::connectAndSync() {
  if (!canConnect()) return;
  m_isConnecting = true;
  m_failure.clear();
  m_connection =
      m_tasks.start([this](std::stop_token stop) { return connectWith(m_token, std::move(stop)); });
  Q_EMIT changed();
}

void SlackConnectionModel::dismiss() {
  m_connection.cancel();
  m_isConnecting = false;
  m_isOpen = false;
  m_token.clear();
  m_failure.clear();
  Q_EMIT changed();
}

/// A sheet that was dismissed meanwhile has nothing to say, and may be open anew.
Task<> SlackConnectionModel::connectWith(QString token, std::stop_token stop) {
  const bool isSynced = co_await m_with.slack.connect(token, stop);
  if (stop.stop_requested()) co_return;
  if (isSynced) {
    dismiss();
    m_with.toast.show(tr("Slack Workspace Synced!"));
    co_return;
  }
  m_isConnecting = false;
  m_failure = tr("Failed to sync Slack. Check token.");
  Q_EMIT changed();
}

}  // namespace vemo
