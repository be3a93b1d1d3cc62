#include "ui/models/MenuModel.h"

#include <utility>

#include "account/AuthManager.h"
#include "desktop/PermissionsManager.h"
#include "ports/Scenes.h"
#include "session/AppState.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"
#include "ui/models/LanguageRows.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

MenuItem line(const QString& identifier, const QString& text) {
  return {.kind = MenuItem::Kind::Line, .identifier = identifier, .text = text, .isEnabled = false};
}

MenuItem button(const QString& identifier, const QString& text, std::function<void()> action) {
  return {.kind = MenuItem::Kind::Button,
          .identifier = identifier,
          .text = text,
          .action = std::move(action)};
}

MenuItem divider(const QString& identifier) {
  return {.kind = MenuItem::Kind::Divider, .identifier = identifier};
}

}  // namespace

MenuModel::MenuModel(With with) : m_with(std::move(with)) {
  const auto notify = [this] { changed.notify(); };
  m_observations = {m_with.appState.changed.observe(notify), m_with.auth.changed.observe(notify),
                    m_with.permissions.changed.observe(notify),
                    m_with.settings.changed.observe([this](const QString& name) {
                      if (name == QStringView(keys::dictationLanguage.name)) changed.notify();
                    })};
}

QString MenuModel::statusImage() const {
  switch (m_with.appState.phase().kind) {
    case Phase::Kind::Recording:
      return u"record.circle"_s;
    case Phase::Kind::Transcribing:
      return u"waveform.badge.magnifyingglass"_s;
    case Phase::Kind::Injecting:
      return u"waveform.badge.checkmark"_s;
    case Phase::Kind::Error:
      return u"waveform.badge.exclamationmark"_s;
    case Phase::Kind::Idle:
      break;
  }
  return u"vemo_icon"_s;
}

std::vector<MenuItem> MenuModel::items() const {
  const MenuUpdates updates = m_with.updates();
  std::vector<MenuItem> items;
  addReadyUpdate(items, updates);
  items.push_back(line(u"status"_s, m_with.appState.statusText()));
  addWindows(items);
  items.push_back(divider(u"after windows"_s));
  addLastTranscript(items);
  items.push_back({.kind = MenuItem::Kind::Toggle,
                   .identifier = u"enable"_s,
                   .text = tr("Enable Vemo"),
                   .isChecked = m_with.appState.isEnabled(),
                   .action = [this] { m_with.appState.setEnabled(!m_with.appState.isEnabled()); }});
  items.push_back(divider(u"after enable"_s));
  addLanguages(items);
  addPermissions(items);
  items.push_back(divider(u"after permissions"_s));
  addAccount(items);
  items.push_back(divider(u"after account"_s));
  addUpdates(items, updates);
  MenuItem quit = button(u"quit"_s, tr("Quit Vemo"), m_with.quitClosingSheets);
  quit.shortcut = u"Ctrl+Q"_s;
  items.push_back(std::move(quit));
  return items;
}

void MenuModel::addReadyUpdate(std::vector<MenuItem>& items, const MenuUpdates& updates) const {
  if (!updates.readyVersion) return;
  MenuItem restart =
      button(u"restart to update"_s, tr("Restart to Update (%1)").arg(*updates.readyVersion),
             m_with.restartToUpdate);
  restart.isEnabled = updates.canRestartNow;
  items.push_back(std::move(restart));
  items.push_back(divider(u"after restart"_s));
}

void MenuModel::addWindows(std::vector<MenuItem>& items) const {
  items.push_back(button(u"open window"_s, tr("Open Vemo Window"),
                         [this] { m_with.scenes.open(Scene::Main); }));
  items.push_back(
      button(u"settings"_s, tr("Settings"), [this] { m_with.scenes.open(Scene::Settings); }));
}

void MenuModel::addLastTranscript(std::vector<MenuItem>& items) const {
  const DictationHistory& history = m_with.appState.history();
  if (history.lastTranscript().isEmpty()) return;
  items.push_back(line(u"last"_s, tr("Last: %1").arg(history.lastTranscriptPreview())));
  // As it is at the press: a newer one may have come while the menu was open.
  MenuItem copy = button(u"copy last"_s, tr("Copy Last Transcript"), [this] {
    m_with.appState.copyTranscript(m_with.appState.history().lastTranscript());
  });
  copy.shortcut = u"Ctrl+Shift+C"_s;
  items.push_back(std::move(copy));
  items.push_back(divider(u"after last"_s));
}

void MenuModel::addLanguages(std::vector<MenuItem>& items) const {
  MenuItem languages{.kind = MenuItem::Kind::Submenu,
                     .identifier = u"language"_s,
                     .text = languageMenuTitle(m_with.settings)};
  for (const LanguageRow& row : languageRows(m_with.settings)) {
    languages.children.push_back(button(u"language "_s + row.code, row.text, [this, row] {
      m_with.settings.set(keys::dictationLanguage, row.code);
    }));
  }
  items.push_back(std::move(languages));
}

void MenuModel::addPermissions(std::vector<MenuItem>& items) const {
  if (m_with.permissions.micStatus() != MicStatus::Granted) {
    items.push_back(button(u"grant microphone"_s, tr("Grant Microphone Access…"), [this] {
      m_with.permissions.requestMicrophone();
      m_with.permissions.openSettings(QString::fromUtf16(microphonePane));
    }));
  }
  if (!m_with.permissions.axTrusted()) {
    items.push_back(button(u"grant accessibility"_s, tr("Grant Accessibility Access…"), [this] {
      m_with.permissions.promptAccessibility();
      m_with.permissions.openSettings(QString::fromUtf16(accessibilityPane));
    }));
  }
}

void MenuModel::addAccount(std::vector<MenuItem>& items) const {
  const AuthManager& auth = m_with.auth;
  if (auth.isSignedIn()) {
    items.push_back(
        line(u"signed in"_s, tr("Signed in: %1").arg(auth.email().value_or(tr("unknown")))));
    items.push_back(
        button(u"sign out"_s, tr("Sign Out"), [this] { m_with.appState.clearLocalUserData(); }));
    return;
  }
  MenuItem signIn =
      button(u"sign in"_s, auth.isWorking() ? tr("Signing in…") : tr("Sign In with Google"),
             [this] { m_with.appState.signIn(); });
  signIn.isEnabled = !auth.isWorking();
  items.push_back(std::move(signIn));
  if (const auto& error = auth.lastError()) items.push_back(line(u"account error"_s, *error));
}

void MenuModel::addUpdates(std::vector<MenuItem>& items, const MenuUpdates& updates) const {
  if (!updates.isConfigured) return;
  if (!updates.readyVersion && updates.pendingVersion) {
    items.push_back(button(u"install update"_s,
                           tr("Install Update %1").arg(*updates.pendingVersion),
                           m_with.checkForUpdates));
  }
  MenuItem check = button(u"check for updates"_s, tr("Check for Updates…"), m_with.checkForUpdates);
  check.isEnabled = updates.canCheckForUpdates;
  items.push_back(std::move(check));
}

}  // namespace vemo
