#include "ui/models/HomeModel.h"

#include <QVariantMap>

#include "desktop/HotkeyChoices.h"
#include "desktop/PermissionsManager.h"
#include "desktop/ShortcutNames.h"
#include "session/AppState.h"
#include "storage/Config.h"
#include "storage/SettingsKeys.h"
#include "ui/models/LanguageRows.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

HomeModel::HomeModel(With with)
    : m_with(with), m_history({with.mainThread, with.clock, with.appState, with.toast}) {
  m_observations.push_back(with.appState.changed.observe([this] { Q_EMIT changed(); }));
  m_observations.push_back(
      with.settings.changed.observe([this](const QString& name) { settingChanged(name); }));
}

void HomeModel::settingChanged(const QString& name) {
  if (name == QString::fromUtf16(keys::dictationLanguage.name)) Q_EMIT languageChanged();
  constexpr const char16_t* hotkeySettings[] = {
      keys::pushToTalkHotkeyChoice.name, keys::toggleHotkeyChoice.name,
      keys::customPushToTalkShortcutData.name, keys::customToggleShortcutData.name};
  for (const char16_t* hotkeySetting : hotkeySettings) {
    if (name == QString::fromUtf16(hotkeySetting)) Q_EMIT changed();
  }
}

QString HomeModel::keysLine() const {
  return tr("Hold %1 or tap %2 to talk into any textbox.")
      .arg(displayName(pushToTalkChoice(m_with.settings)),
           displayName(toggleChoice(m_with.settings)));
}

QString HomeModel::languageTitle() const {
  return languageMenuTitle(m_with.settings);
}

QVariantList HomeModel::languages() const {
  QVariantList rows;
  for (const auto& [code, text, isCurrent] : languageRows(m_with.settings))
    rows.append(QVariantMap{{u"code"_s, code}, {u"text"_s, text}, {u"isCurrent"_s, isCurrent}});
  return rows;
}

QString HomeModel::dictationLabel() const {
  return isRecording() ? tr("Stop Dictation") : tr("Start Dictating Now");
}

QString HomeModel::dictationSymbol() const {
  return isRecording() ? u"stop.fill"_s : u"record.circle"_s;
}

bool HomeModel::isRecording() const {
  return m_with.appState.phase() == Phase::recording();
}

bool HomeModel::canToggleDictation() const {
  return m_with.appState.isEnabled() || isRecording();
}

QString HomeModel::stateLabel() const {
  return isRecording() ? tr("Recording") : QString();
}

QString HomeModel::emptyText() const {
  return tr("Looks like you haven't dictated anything yet.\nOpen a textbox anywhere and hold %1 to "
            "get started.")
      .arg(displayName(pushToTalkChoice(m_with.settings)));
}

bool HomeModel::needsMicrophone() const {
  return m_with.permissions.micStatus() != MicStatus::Granted;
}

bool HomeModel::needsAccessibility() const {
  return !m_with.permissions.axTrusted();
}

void HomeModel::toggleDictation() {
  m_with.appState.toggleFromButton();
}

void HomeModel::chooseLanguage(const QString& code) {
  if (config::language(code).code == code) m_with.settings.set(keys::dictationLanguage, code);
}

void HomeModel::grantMicrophone() {
  m_with.permissions.requestMicrophone();
  m_with.permissions.openSettings(QString::fromUtf16(microphonePane));
}

void HomeModel::grantAccessibility() {
  m_with.permissions.promptAccessibility();
  m_with.permissions.openSettings(QString::fromUtf16(accessibilityPane));
}

}  // namespace vemo
