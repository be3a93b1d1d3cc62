#include "ui/models/MainWindowModel.h"

#include <QVariantMap>
#include <utility>

#include "account/AuthManager.h"
#include "session/AppState.h"
#include "session/DictionaryList.h"
#include "session/ShortcutList.h"
#include "telemetry/Telemetry.h"
#include "ui/models/LegalPages.h"
#include "ui/models/MenuRows.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

MainWindowModel::MainWindowModel(With with)
    : m_with(std::move(with)),
      m_toast(m_with.clock, m_with.mainThread),
      m_home({.mainThread = m_with.mainThread,
              .clock = m_with.clock,
              .settings = m_with.settings,
              .appState = m_with.appState,
              .permissions = m_with.permissions,
              .toast = m_toast}),
      m_stats({.mainThread = m_with.mainThread,
               .clock = m_with.clock,
               .auth = m_with.auth,
               .locale = m_with.locale}),
      m_dictionary(m_with.dictionary),
      m_shortcuts(m_with.shortcuts),
      m_slack({.mainThread = m_with.mainThread, .slack = m_with.slack, .toast = m_toast}),
      m_observation(m_with.auth.changed.observe([this] { accountChanged(); })) {}

void MainWindowModel::accountChanged() {
  if (!isSignedIn()) closeSheets();
  Q_EMIT changed();
}

bool MainWindowModel::isSignedIn() const {
  return m_with.auth.isSignedIn();
}

bool MainWindowModel::isSigningIn() const {
  return m_with.auth.isWorking();
}

QString MainWindowModel::signInLabel() const {
  return isSigningIn() ? tr("Signing in…") : tr("Continue with Google");
}

QString MainWindowModel::errorText() const {
  return m_with.auth.lastError().value_or(QString());
}

QString MainWindowModel::agreement() const {
  return tr("By continuing you agree to the [Terms](%1) and [Privacy Policy](%2)")
      .arg(termsPage(m_with.configuration).toString(QUrl::FullyEncoded),
           privacyPage(m_with.configuration).toString(QUrl::FullyEncoded));
}

QVariantList MainWindowModel::tabs() const {
  QVariantList rows;
  for (const auto tab : navigationTabs)
    rows.append(
        QVariantMap{{u"name"_s, name(tab)}, {u"label"_s, label(tab)}, {u"symbol"_s, symbol(tab)}});
  return rows;
}

QString MainWindowModel::tab() const {
  return name(m_tab);
}

void MainWindowModel::signIn() {
  m_with.appState.signIn();
}

void MainWindowModel::cancelSignIn() {
  m_with.appState.cancelSignIn();
}

void MainWindowModel::selectTab(const QString& wanted) {
  for (const auto tab : navigationTabs) {
    if (name(tab) != wanted || tab == m_tab) continue;
    m_tab = tab;
    m_with.telemetry.track(TelemetryEvent::tabOpened(wanted));
    Q_EMIT tabChanged();
    return;
  }
}

/// Without what would bring up the window that is there.
QVariantList MainWindowModel::menu() const {
  auto items = m_with.menu();
  std::erase_if(items, [](const MenuItem& item) { return item.identifier == u"open window"; });
  return menuRows(items);
}

void MainWindowModel::pressMenuRow(const QString& identifier) {
  vemo::pressMenuRow(m_with.menu(), identifier);
}

void MainWindowModel::openSettings() {
  m_with.openSettings();
}

void MainWindowModel::windowShown() {
  m_home.history()->setShown(true);
  m_with.dictionary.load();
  m_with.shortcuts.load();
}

void MainWindowModel::windowHidden() {
  m_home.history()->setShown(false);
  closeSheets();
}

bool MainWindowModel::hasOpenSheet() const {
  return m_dictionary.sheet().isOpen() || m_shortcuts.sheet().isOpen() || m_slack.isOpen();
}

void MainWindowModel::closeSheets() {
  m_dictionary.sheet()->dismiss();
  m_shortcuts.sheet()->dismiss();
  if (m_slack.isOpen()) m_slack.dismiss();
}

}  // namespace vemo
