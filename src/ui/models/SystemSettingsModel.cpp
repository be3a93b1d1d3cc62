#include "ui/models/SystemSettingsModel.h"

#include <QVariantMap>
#include <algorithm>
#include <cmath>
#include <utility>

#include "desktop/HotkeyChoices.h"
#include "desktop/PermissionsManager.h"
#include "desktop/ShortcutNames.h"
#include "ports/ApplicationWindows.h"
#include "ports/LoginItem.h"
#include "storage/Config.h"
#include "storage/DebugLog.h"
#include "telemetry/Telemetry.h"
#include "ui/PillColors.h"
#include "ui/models/LanguageRows.h"
#include "ui/models/LegalPages.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// As the windows write colours: #AARRGGBB.
QString colorName(const Color& color) {
  QString name = u"#"_s;
  for (const double channel : {color.opacity, color.red, color.green, color.blue})
    name += u"%1"_s.arg(std::lround(channel * 255), 2, 16, QChar(u'0'));
  return name;
}

}  // namespace

SystemSettingsModel::SystemSettingsModel(With with)
    : m_with(std::move(with)), m_launchAtLogin(m_with.loginItem.isRegistered()) {
  m_observations.push_back(
      m_with.settings.changed.observe([this](const QString& name) { settingChanged(name); }));
  m_observations.push_back(m_with.permissions.changed.observe([this] { Q_EMIT changed(); }));
}

void SystemSettingsModel::settingChanged(const QString& name) {
  if (name == QString::fromUtf16(keys::dictationLanguage.name)) Q_EMIT languageChanged();
  if (name == QString::fromUtf16(keys::dictateOutputMode.name)) Q_EMIT modeChanged();
  Q_EMIT changed();
}

bool SystemSettingsModel::isOn(const keys::Bool& key) const {
  return m_with.settings.get(key, true);
}

// Speech

QString SystemSettingsModel::selectedLanguage() const {
  return m_with.settings.get(keys::dictationLanguage, u"en"_s);
}

void SystemSettingsModel::setSelectedLanguage(const QString& code) {
  const bool isKnown = std::ranges::any_of(
      config::languages(), [&](const DictationLanguage& row) { return row.code == code; });
  if (isKnown) m_with.settings.set(keys::dictationLanguage, code);
}

QString SystemSettingsModel::languageName() const {
  return config::currentLanguage(m_with.settings).name;
}

QVariantList SystemSettingsModel::languages() const {
  QVariantList rows;
  for (const LanguageRow& row : languageRows(m_with.settings)) {
    rows.append(
        QVariantMap{{u"code"_s, row.code}, {u"text"_s, row.text}, {u"isCurrent"_s, row.isCurrent}});
  }
  return rows;
}

QString SystemSettingsModel::selectedDictateMode() const {
  return config::displayedOutputMode(m_with.settings);
}

void SystemSettingsModel::setSelectedDictateMode(const QString& value) {
  const bool isKnown = std::ranges::any_of(
      config::outputModes(), [&](const OutputMode& mode) { return mode.value == value; });
  if (isKnown) m_with.settings.set(keys::dictateOutputMode, value);
}

QString SystemSettingsModel::modeLabel() const {
  return config::outputModeShortLabel(selectedDictateMode());
}

QVariantList SystemSettingsModel::modes() const {
  QVariantList rows;
  for (const OutputMode& mode : config::outputModes()) {
    const bool isCurrent = mode.value == selectedDictateMode();
    rows.append(QVariantMap{{u"code"_s, mode.value},
                            {u"text"_s, isCurrent ? mode.selectedRow : mode.unselectedRow},
                            {u"isCurrent"_s, isCurrent}});
  }
  return rows;
}

// Hotkeys

QString SystemSettingsModel::hotkeyName(const CustomKeyShortcut& shortcut) const {
  const QString name = displayName(shortcut);
  return shortcut.presetId ? name : tr("Custom: %1").arg(name);
}

QString SystemSettingsModel::selectedPTTHotkey() const {
  return hotkeyName(pushToTalkChoice(m_with.settings));
}

QString SystemSettingsModel::selectedToggleHotkey() const {
  return hotkeyName(toggleChoice(m_with.settings));
}

// The program on the desktop

void SystemSettingsModel::windowOpened() {
  m_launchAtLogin = m_with.loginItem.isRegistered();
  Q_EMIT changed();
}

void SystemSettingsModel::setLaunchAtLogin(bool isOn) {
  m_launchAtLogin = isOn;
  m_with.settings.set(keys::launchAtLogin, isOn);
  const auto done = isOn ? m_with.loginItem.registerItem() : m_with.loginItem.unregisterItem();
  if (!done) m_with.debugLog(u"Failed to update SMAppService: "_s + done.error());
  Q_EMIT changed();
}

void SystemSettingsModel::setShowInDock(bool isOn) {
  m_with.settings.set(keys::showInDock, isOn);
  m_with.windows.setActivationPolicy(isOn ? ActivationPolicy::Regular
                                          : ActivationPolicy::Accessory);
  // The change pulls the window away otherwise.
  if (isOn) m_with.windows.activate();
}

// Appearance, sound, integrations

QString SystemSettingsModel::dictationPillColor() const {
  return m_with.settings.get(keys::dictationPillColor, u"dark"_s);
}

void SystemSettingsModel::setDictationPillColor(const QString& value) {
  for (const QVariant& row : pillColors()) {
    if (row.toMap().value(u"value"_s) == value)
      m_with.settings.set(keys::dictationPillColor, value);
  }
}

QVariantList SystemSettingsModel::pillColors() const {
  QVariantList rows;
  const std::pair<QString, QString> names[] = {
      {u"dark"_s, tr("Dark")}, {u"light"_s, tr("Light")}, {u"teal"_s, tr("Teal")}};
  for (const auto& [value, name] : names) {
    const PillTheme& theme = pillTheme(value);
    rows.append(QVariantMap{{u"value"_s, value},
                            {u"name"_s, name},
                            {u"fill"_s, colorName(theme.pill.fill)},
                            {u"stroke"_s, colorName(theme.pill.stroke)},
                            {u"wave"_s, colorName(theme.waveform.bright)}});
  }
  return rows;
}

void SystemSettingsModel::setDictationSounds(bool isOn) {
  m_with.settings.set(keys::dictationSounds, isOn);
}

void SystemSettingsModel::setIntegrationVSCode(bool isOn) {
  m_with.settings.set(keys::integrationVSCode, isOn);
}

void SystemSettingsModel::setIntegrationSlack(bool isOn) {
  m_with.settings.set(keys::integrationSlack, isOn);
}

// Permissions

bool SystemSettingsModel::isMicrophoneGranted() const {
  return m_with.permissions.micStatus() == MicStatus::Granted;
}

bool SystemSettingsModel::isAccessibilityGranted() const {
  return m_with.permissions.axTrusted();
}

void SystemSettingsModel::grantMicrophone() {
  m_with.permissions.requestMicrophone();
  m_with.permissions.openSettings(QString::fromUtf16(microphonePane));
}

void SystemSettingsModel::grantAccessibility() {
  m_with.permissions.promptAccessibility();
  m_with.permissions.openSettings(QString::fromUtf16(accessibilityPane));
}

// Privacy

void SystemSettingsModel::setShareUsageStatistics(bool isOn) {
  m_with.telemetry.setShareUsageStatistics(isOn);
}

QString SystemSettingsModel::privacyNote() const {
  return tr("Counts of how you use Vemo (features, timings, your Mac's model and language "
            "settings) help us improve it. Never what you say or type. Errors, crashes and update "
            "results are always sent so Vemo keeps working. [Privacy Policy](%1)")
      .arg(privacyPage(m_with.configuration).toString(QUrl::FullyEncoded));
}

}  // namespace vemo
