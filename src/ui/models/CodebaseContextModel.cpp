#include "ui/models/CodebaseContextModel.h"

#include <utility>

#include "integrations/WorkspaceIndexer.h"

namespace vemo {

CodebaseContextModel::CodebaseContextModel(WorkspaceIndexer& workspace,
                                           std::function<void(const QString&)> showToast)
    : m_workspace(workspace), m_showToast(std::move(showToast)) {
  m_observation = m_workspace.changed.observe([this] { Q_EMIT changed(); });
}

QString CodebaseContextModel::workspaceName() const {
  return m_workspace.activeWorkspaceName();
}

QString CodebaseContextModel::workspacePath() const {
  return m_workspace.activeWorkspacePath();
}

QString CodebaseContextModel::countText() const {
  return tr("%1 files indexed in memory for instant @file voice tagging.")
      .arg(m_workspace.indexedFiles().size());
}

bool CodebaseContextModel::isManual() const {
  return m_workspace.isManualWorkspace();
}

QString CodebaseContextModel::modeLabel() const {
  return isManual() ? tr("Manual") : tr("Auto-detect");
}

bool CodebaseContextModel::isScanning() const {
  return m_workspace.isScanning();
}

QString CodebaseContextModel::rescanLabel() const {
  return isScanning() ? tr("Scanning…") : tr("Rescan");
}

void CodebaseContextModel::chooseFolder() {
  m_workspace.chooseCustomWorkspace();
}

void CodebaseContextModel::rescan() {
  if (isScanning()) return;
  m_workspace.refreshActiveWorkspace();
  m_showToast(tr("Workspace Refreshed"));
}

void CodebaseContextModel::detectAutomatically() {
  if (!isManual()) return;
  m_workspace.clearCustomWorkspace();
  m_showToast(tr("Switched to Auto-detection"));
}

}  // namespace vemo
