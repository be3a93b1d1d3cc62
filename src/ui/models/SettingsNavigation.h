// Which tab of the settings window is shown: shared, so that other windows can open a given one.
//
// Main thread only. The selection outlives the window.
#pragma once

#include <QObject>
#include <QString>

namespace vemo {

class Telemetry;

enum class SettingsTab { Account, System };

class SettingsNavigation : public QObject {
  Q_OBJECT
  /// "account" or "system"; anything else that is written changes nothing.
  Q_PROPERTY(QString tab READ tabName WRITE setTabName NOTIFY changed)

 public:
  explicit SettingsNavigation(Telemetry& telemetry) : m_telemetry(telemetry) {}

  SettingsTab tab() const { return m_tab; }
  void setTab(SettingsTab tab);

  QString tabName() const;
  void setTabName(const QString& name);

  /// Tells of the tab that a window shows which has just opened.
  void windowOpened();

  Q_SIGNAL void changed();

 private:
  Telemetry& m_telemetry;
  SettingsTab m_tab = SettingsTab::Account;
};

}  // namespace vemo
