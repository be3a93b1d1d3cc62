// The updates of the system tab: the three switches, what is known of updates, and the button.
//
// Main thread only; owned by the settings window's model. Without updates in this build the
// switches are inactive.
#pragma once

#include <QLocale>
#include <QObject>
#include <QString>
#include <vector>

#include "base/Notifier.h"

namespace vemo {

class AppState;
class UpdateManager;

class UpdateSettingsModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool isConfigured READ isConfigured NOTIFY changed)
  Q_PROPERTY(
      bool checksAutomatically READ checksAutomatically WRITE setChecksAutomatically NOTIFY changed)
  Q_PROPERTY(bool downloadsAutomatically READ downloadsAutomatically WRITE setDownloadsAutomatically
                 NOTIFY changed)
  Q_PROPERTY(
      bool receivesBetaUpdates READ receivesBetaUpdates WRITE setReceivesBetaUpdates NOTIFY changed)
  Q_PROPERTY(QString statusLine READ statusLine NOTIFY changed)
  Q_PROPERTY(QString buttonLabel READ buttonLabel NOTIFY changed)
  Q_PROPERTY(bool isButtonEnabled READ isButtonEnabled NOTIFY changed)
  /// Of the button; empty when it says it all.
  Q_PROPERTY(QString tooltip READ tooltip NOTIFY changed)

 public:
  struct With {
    UpdateManager& updates;
    AppState& appState;
    QLocale locale = QLocale::system();
  };

  explicit UpdateSettingsModel(With with);

  bool isConfigured() const;
  bool checksAutomatically() const;
  void setChecksAutomatically(bool isOn);
  bool downloadsAutomatically() const;
  void setDownloadsAutomatically(bool isOn);
  bool receivesBetaUpdates() const;
  void setReceivesBetaUpdates(bool isOn);

  QString statusLine() const;
  QString buttonLabel() const;
  bool isButtonEnabled() const;
  QString tooltip() const;

  /// Restarts to install the update that is ready, or else looks for one.
  Q_INVOKABLE void press();

  Q_SIGNAL void changed();

 private:
  bool isUpdateReady() const;

  With m_with;
  std::vector<Observation> m_observations;
};

}  // namespace vemo
