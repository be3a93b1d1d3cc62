// The system tab of the settings window: the settings of the program, each written at once.
//
// Main thread only; owned by the settings window's model. It follows the settings, whoever writes
// them. A switch stays as the user set it, also when the desktop refuses what it asks for. Whether
// the program starts at login is asked of the desktop when the window opens: nothing is arranged
// before the user moves the switch, and the desktop has settings of its own for this.
#pragma once

#include <QObject>
#include <QString>
#include <QVariantList>
#include <vector>

#include "base/Notifier.h"
#include "storage/SettingsKeys.h"

namespace vemo {

class ApplicationWindows;
class DebugLog;
class LoginItem;
class PermissionsManager;
class Telemetry;
struct CustomKeyShortcut;
struct DeploymentConfiguration;

class SystemSettingsModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString selectedLanguage READ selectedLanguage WRITE setSelectedLanguage NOTIFY
                 languageChanged)
  Q_PROPERTY(QString languageName READ languageName NOTIFY languageChanged)
  /// Rows of `code`, `text` and `isCurrent`.
  Q_PROPERTY(QVariantList languages READ languages NOTIFY languageChanged)
  Q_PROPERTY(QString selectedDictateMode READ selectedDictateMode WRITE setSelectedDictateMode
                 NOTIFY modeChanged)
  Q_PROPERTY(QString modeLabel READ modeLabel NOTIFY modeChanged)
  /// Rows of `code`, `text` and `isCurrent`.
  Q_PROPERTY(QVariantList modes READ modes NOTIFY modeChanged)
  Q_PROPERTY(QString selectedPTTHotkey READ selectedPTTHotkey NOTIFY changed)
  Q_PROPERTY(QString selectedToggleHotkey READ selectedToggleHotkey NOTIFY changed)
  Q_PROPERTY(bool launchAtLogin READ launchAtLogin WRITE setLaunchAtLogin NOTIFY changed)
  Q_PROPERTY(bool showInDock READ showInDock WRITE setShowInDock NOTIFY changed)
  Q_PROPERTY(
      QString dictationPillColor READ dictationPillColor WRITE setDictationPillColor NOTIFY changed)
  /// Rows of `value`, `name`, `fill`, `stroke` and `wave`, the last three as colours.
  Q_PROPERTY(QVariantList pillColors READ pillColors CONSTANT)
  Q_PROPERTY(bool dictationSounds READ dictationSounds WRITE setDictationSounds NOTIFY changed)
  Q_PROPERTY(
      bool integrationVSCode READ integrationVSCode WRITE setIntegrationVSCode NOTIFY changed)
  Q_PROPERTY(bool integrationSlack READ integrationSlack WRITE setIntegrationSlack NOTIFY changed)
  Q_PROPERTY(bool isMicrophoneGranted READ isMicrophoneGranted NOTIFY changed)
  Q_PROPERTY(bool isAccessibilityGranted READ isAccessibilityGranted NOTIFY changed)
  Q_PROPERTY(bool shareUsageStatistics READ shareUsageStatistics WRITE setShareUsageStatistics
                 NOTIFY changed)
  /// In Markdown.
  Q_PROPERTY(QString privacyNote READ privacyNote CONSTANT)

 public:
  struct With {
    Settings& settings;
    DebugLog& debugLog;
    Telemetry& telemetry;
    PermissionsManager& permissions;
    LoginItem& loginItem;
    ApplicationWindows& windows;
    const DeploymentConfiguration& configuration;
  };

  explicit SystemSettingsModel(With with);

  void windowOpened();

  QString selectedLanguage() const;
  void setSelectedLanguage(const QString& code);
  QString languageName() const;
  QVariantList languages() const;

  QString selectedDictateMode() const;
  void setSelectedDictateMode(const QString& value);
  QString modeLabel() const;
  QVariantList modes() const;

  QString selectedPTTHotkey() const;
  QString selectedToggleHotkey() const;

  bool launchAtLogin() const { return m_launchAtLogin; }
  void setLaunchAtLogin(bool isOn);
  bool showInDock() const { return isOn(keys::showInDock); }
  void setShowInDock(bool isOn);

  QString dictationPillColor() const;
  void setDictationPillColor(const QString& value);
  QVariantList pillColors() const;

  bool dictationSounds() const { return isOn(keys::dictationSounds); }
  void setDictationSounds(bool isOn);
  bool integrationVSCode() const { return isOn(keys::integrationVSCode); }
  void setIntegrationVSCode(bool isOn);
  bool integrationSlack() const { return isOn(keys::integrationSlack); }
  void setIntegrationSlack(bool isOn);

  bool isMicrophoneGranted() const;
  bool isAccessibilityGranted() const;
  Q_INVOKABLE void grantMicrophone();
  Q_INVOKABLE void grantAccessibility();

  bool shareUsageStatistics() const { return isOn(keys::shareUsageStatistics); }
  void setShareUsageStatistics(bool isOn);
  QString privacyNote() const;

  Q_SIGNAL void changed();
  Q_SIGNAL void languageChanged();
  Q_SIGNAL void modeChanged();

 private:
  bool isOn(const keys::Bool& key) const;
  QString hotkeyName(const CustomKeyShortcut& shortcut) const;
  void settingChanged(const QString& name);

  With m_with;
  bool m_launchAtLogin;
  std::vector<Observation> m_observations;
};

}  // namespace vemo
