// The active project in the integrations of the settings window: how many of its files are known,
// how it is found, and what the user can do about it.
//
// Main thread only; owned by the settings window's model.
#pragma once

#include <QObject>
#include <QString>
#include <functional>

#include "base/Notifier.h"

namespace vemo {

class WorkspaceIndexer;

class CodebaseContextModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString workspaceName READ workspaceName NOTIFY changed)
  Q_PROPERTY(QString workspacePath READ workspacePath NOTIFY changed)
  Q_PROPERTY(QString countText READ countText NOTIFY changed)
  Q_PROPERTY(bool isManual READ isManual NOTIFY changed)
  Q_PROPERTY(QString modeLabel READ modeLabel NOTIFY changed)
  Q_PROPERTY(bool isScanning READ isScanning NOTIFY changed)
  Q_PROPERTY(QString rescanLabel READ rescanLabel NOTIFY changed)

 public:
  CodebaseContextModel(WorkspaceIndexer& workspace, std::function<void(const QString&)> showToast);

  QString workspaceName() const;
  QString workspacePath() const;
  QString countText() const;
  bool isManual() const;
  QString modeLabel() const;
  bool isScanning() const;
  QString rescanLabel() const;

  Q_INVOKABLE void chooseFolder();
  /// Not while a scan runs.
  Q_INVOKABLE void rescan();
  /// Back from the chosen folder to the project that the editor has open.
  Q_INVOKABLE void detectAutomatically();

  Q_SIGNAL void changed();

 private:
  WorkspaceIndexer& m_workspace;
  const std::function<void(const QString&)> m_showToast;
  Observation m_observation;
};

}  // namespace vemo
