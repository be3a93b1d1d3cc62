// The sheet in which the user connects a Slack workspace, and the card that leads to it.
//
// Main thread only; one for each window that shows the sheet. What is typed stays in the sheet
// until it closes. Dismissing it ends a connection under way; what has been read so far counts.
#pragma once

#include <QObject>
#include <QString>

#include "base/Notifier.h"
#include "base/TaskScope.h"

namespace vemo {

class SlackManager;
class ToastModel;

class SlackConnectionModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isConnected READ isConnected NOTIFY changed)
  /// Who the card is connected to; empty while it isn't.
  Q_PROPERTY(QString workspace READ workspace NOTIFY changed)
  Q_PROPERTY(bool isOpen READ isOpen NOTIFY changed)
  Q_PROPERTY(QString token READ token WRITE setToken NOTIFY changed)
  Q_PROPERTY(bool isConnecting READ isConnecting NOTIFY changed)
  Q_PROPERTY(bool canConnect READ canConnect NOTIFY changed)
  Q_PROPERTY(QString connectLabel READ connectLabel NOTIFY changed)
  /// What came of the last attempt, when it failed.
  Q_PROPERTY(QString failure READ failure NOTIFY changed)

 public:
  struct With {
    MainThread& mainThread;
    SlackManager& slack;
    ToastModel& toast;
  };

  explicit SlackConnectionModel(With with);

  bool isConnected() const;
  QString workspace() const;
  bool isOpen() const { return m_isOpen; }
  const QString& token() const { return m_token; }
  void setToken(const QString& token);
  bool isConnecting() const { return m_isConnecting; }
  bool canConnect() const;
  QString connectLabel() const;
  const QString& failure() const { return m_failure; }

  Q_INVOKABLE void open();
  /// Closes the sheet when it has come to a good end, else says so in it.
  Q_INVOKABLE void connectAndSync();
  Q_INVOKABLE void dismiss();

  Q_SIGNAL void changed();

 private:
  Task<> connectWith(QString token, std::stop_token stop);

  With m_with;
  bool m_isOpen = false;
  QString m_token;
  bool m_isConnecting = false;
  QString m_failure;
  StartedTask m_connection;
  Observation m_observation;
  TaskScope m_tasks;
};

}  // namespace vemo
