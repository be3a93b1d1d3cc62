#include "ui/models/AccountSettingsModel.h"

#include <QStringList>
#include <utility>

#include "account/AuthManager.h"
#include "ports/Clipboard.h"
#include "session/AppState.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

ClipboardContents plainText(const QString& text) {
  return {ClipboardItem{{{QString::fromUtf16(clipboardTextType), text.toUtf8()}}}};
}

/// The first character as a person sees it, not half of one.
QString firstLetter(const QString& word) {
  if (word.isEmpty()) return {};
  const qsizetype length = word.front().isHighSurrogate() ? 2 : 1;
  return word.left(length).toUpper();
}

}  // namespace

AccountSettingsModel::AccountSettingsModel(With with)
    : m_with(std::move(with)), m_tasks(m_with.mainThread) {
  m_observation = m_with.auth.changed.observe([this] { followAccount(); });
  takeNames(m_with.auth.displayName().value_or(QString()));
}

// Who is signed in

bool AccountSettingsModel::isSignedIn() const {
  return m_with.auth.isSignedIn();
}

bool AccountSettingsModel::isSigningIn() const {
  return m_with.auth.isWorking();
}

QString AccountSettingsModel::email() const {
  return m_with.auth.email().value_or(QString());
}

QString AccountSettingsModel::initials() const {
  const QStringList words = m_accountName.split(u' ', Qt::SkipEmptyParts);
  if (words.isEmpty()) return firstLetter(email());
  const QString first = firstLetter(words.front());
  return words.size() == 1 ? first : first + firstLetter(words.back());
}

QString AccountSettingsModel::errorText() const {
  return m_with.auth.lastError().value_or(QString());
}

void AccountSettingsModel::signIn() {
  m_with.appState.signIn();
}

void AccountSettingsModel::cancelSignIn() {
  m_with.appState.cancelSignIn();
}

void AccountSettingsModel::signOut() {
  m_with.appState.clearLocalUserData();
}

void AccountSettingsModel::followAccount() {
  const QString name = m_with.auth.displayName().value_or(QString());
  const bool isUntouched = typedName() == m_accountName.simplified();
  if (!isSignedIn()) {
    m_hasSessionEnded = true;
    m_isDeleteDialogOpen = false;
    takeNames(name);
  } else if (name != m_accountName && isUntouched) {
    takeNames(name);
  }
  m_accountName = name;
  Q_EMIT changed();
}

// The profile

void AccountSettingsModel::takeNames(const QString& displayName) {
  m_accountName = displayName;
  const QString name = displayName.simplified();
  m_firstName = name.section(u' ', 0, 0);
  m_lastName = name.section(u' ', 1);
}

QString AccountSettingsModel::typedName() const {
  return (m_firstName + u' ' + m_lastName).simplified();
}

void AccountSettingsModel::setFirstName(const QString& name) {
  if (std::exchange(m_firstName, name) != name) Q_EMIT changed();
}

void AccountSettingsModel::setLastName(const QString& name) {
  if (std::exchange(m_lastName, name) != name) Q_EMIT changed();
}

bool AccountSettingsModel::canSave() const {
  const QString name = typedName();
  return isSignedIn() && !m_isSaving && !name.isEmpty() && name != m_accountName.simplified();
}

void AccountSettingsModel::save() {
  if (!canSave()) return;
  m_isSaving = true;
  m_tasks.start(
      [name = typedName(), this](std::stop_token stop) { return saveName(name, std::move(stop)); });
  Q_EMIT changed();
}

Task<> AccountSettingsModel::saveName(QString name, std::stop_token stop) {
  const bool isSaved = co_await m_with.auth.updateProfile(std::move(name), std::move(stop));
  m_isSaving = false;
  followAccount();
  if (isSaved) m_with.showToast(tr("Profile saved"));
}

void AccountSettingsModel::refreshProfile() {
  if (m_isRefreshing || !isSignedIn()) return;
  m_isRefreshing = true;
  m_tasks.start([this](std::stop_token stop) { return readProfile(std::move(stop)); });
  Q_EMIT changed();
}

Task<> AccountSettingsModel::readProfile(std::stop_token stop) {
  co_await m_with.auth.refreshProfile(std::move(stop));
  m_isRefreshing = false;
  Q_EMIT changed();
}

void AccountSettingsModel::copyEmail() {
  if (email().isEmpty()) return;
  const bool isCopied = m_with.clipboard.replace(plainText(email()));
  m_with.showToast(isCopied ? tr("Email address copied to clipboard")
                            : tr("The clipboard can't be written"));
}

// The deletion

QString AccountSettingsModel::deleteLabel() const {
  return m_isDeletingAccount ? tr("Deleting…") : tr("Delete Account…");
}

void AccountSettingsModel::askToDelete() {
  if (m_isDeletingAccount || !isSignedIn()) return;
  m_isDeleteDialogOpen = true;
  Q_EMIT changed();
}

void AccountSettingsModel::cancelDelete() {
  m_isDeleteDialogOpen = false;
  Q_EMIT changed();
}

void AccountSettingsModel::confirmDelete() {
  if (!std::exchange(m_isDeleteDialogOpen, false) || m_isDeletingAccount) return;
  m_isDeletingAccount = true;
  m_hasSessionEnded = false;
  m_tasks.start([this](std::stop_token stop) { return deleteAccount(std::move(stop)); });
  Q_EMIT changed();
}

Task<> AccountSettingsModel::deleteAccount(std::stop_token stop) {
  const auto failure = co_await m_with.auth.deleteAccount(std::move(stop));
  m_isDeletingAccount = false;
  if (failure) {
    m_alert = {tr("Your account wasn't deleted"), *failure, AfterAlert::KeepWindow};
  } else {
    if (!m_hasSessionEnded) m_with.appState.clearLocalUserData();
    m_alert = {tr("Your account was deleted"),
               tr("Thanks for trying Vemo. You can sign in again any time to start a new account."),
               AfterAlert::CloseWindow};
  }
  Q_EMIT changed();
}

void AccountSettingsModel::dismissAlert() {
  const auto alert = std::exchange(m_alert, std::nullopt);
  if (!alert) return;
  Q_EMIT changed();
  if (alert->after == AfterAlert::CloseWindow) Q_EMIT closeRequested();
}

void AccountSettingsModel::closeDialogs() {
  cancelDelete();
  dismissAlert();
}

}  // namespace vemo
