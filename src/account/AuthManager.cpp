#include "account/AuthManager.h"

#include <QCoreApplication>

#include "storage/DebugLog.h"
#include "storage/SecureTokenStore.h"
#include "storage/SettingsKeys.h"
#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString unreadableAnswer = u"the answer isn't what was expected"_s;

const QString& tokenAccount() {
  static const QString account = QString::fromUtf16(authTokenAccount);
  return account;
}

bool isSuccess(const HttpResponse& response) {
  return response.status && *response.status >= 200 && *response.status < 300;
}

std::optional<QUrl> parsedUrl(const QString& text) {
  const QUrl url(text, QUrl::StrictMode);
  return url.isValid() && !url.isEmpty() ? std::optional(url) : std::nullopt;
}

}  // namespace

AuthManager::AuthManager(Neighbours neighbours)
    : m_with(neighbours),
      m_requests(neighbours.configuration, neighbours.system),
      m_tasks(neighbours.mainThread) {
  m_email = m_with.settings.get(keys::authEmail);
  m_displayName = m_with.settings.get(keys::authDisplayName);
  m_photoURL = parsedUrl(m_with.settings.get(keys::authPhotoURL, QString()));
  if (!m_with.tokens.isExpected(tokenAccount())) findSession();
}

void AuthManager::findSession() {
  migrateLegacyToken();
  m_isSignedIn = m_with.tokens.read(tokenAccount()).has_value();
  m_tasks.start([&](std::stop_token stop) { return readAccount(std::move(stop)); });
}

void AuthManager::tokenArrived() {
  if (m_isSignedIn) return;
  findSession();
  // What the start has tried without a token.
  if (m_isSignedIn) m_with.telemetry.sendDeviceReport(Urgency::IfDue);
  changed.notify();
}

bool AuthManager::isSessionUnknown() const {
  return !m_isSignedIn && m_with.tokens.isExpected(tokenAccount());
}

/// A write that fails loses the old token, and the user signs in again.
void AuthManager::migrateLegacyToken() {
  const QString legacyToken = m_with.settings.get(keys::authToken, QString());
  if (legacyToken.isEmpty()) return;
  if (!m_with.tokens.read(tokenAccount())) m_with.tokens.write(legacyToken, tokenAccount());
  m_with.settings.remove(keys::authToken);
  m_with.debugLog(u"auth: migrated legacy UserDefaults token into the Keychain"_s);
}

Task<> AuthManager::readAccount(std::stop_token stop) {
  if (m_isSignedIn) co_await refreshProfile(stop);
  co_await fetchLanguages(stop);
}

QString AuthManager::token() const {
  return m_with.tokens.read(tokenAccount()).value_or(QString());
}

void AuthManager::logError(const QString& operation, const QString& description) {
  m_with.debugLog(u"auth: %1 error — %2"_s.arg(operation, description));
}

void AuthManager::setLastError(std::optional<QString> message) {
  m_lastError = std::move(message);
  changed.notify();
}

Task<> AuthManager::signInWithGoogle(std::stop_token stop) {
  m_isWorking = true;
  setLastError({});
  m_with.telemetry.track(TelemetryEvent::signInStarted());
  const auto idToken = co_await m_with.googleSignIn.signIn(stop);
  if (idToken) {
    co_await exchangeIdToken(*idToken, stop);
  } else {
    flowFailed(idToken.error());
  }
  m_isWorking = false;
  changed.notify();
}

void AuthManager::flowFailed(const GoogleSignInError& error) {
  if (error.kind == GoogleSignInError::Kind::Cancelled) {
    m_with.telemetry.track(TelemetryEvent::signInFailed(u"cancelled"));
    return;
  }
  setLastError(error.description());
  m_with.debugLog(u"auth: google flow FAILED — "_s + error.description());
  m_with.telemetry.track(TelemetryEvent::signInFailed(u"google"));
}

Task<> AuthManager::exchangeIdToken(QString idToken, std::stop_token stop) {
  const auto endpoint = u"auth/google"_s;
  const auto startedAt = m_with.clock.monotonicTime();
  const auto answer =
      co_await m_with.session.send(m_requests.signIn(idToken, m_with.telemetry.installId()), stop);
  if (!answer) {
    signInUnanswered(answer.error().description);
    m_with.telemetry.reportRequestResult(endpoint, {}, startedAt, answer.error());
  } else if (!answer->status) {
    setLastError(QCoreApplication::translate("Account", "Unexpected server response"));
  } else if (*answer->status != 200) {
    signInRefused(*answer->status, answer->body);
    m_with.telemetry.reportRequestResult(endpoint, answer->status, startedAt, {});
  } else if (auto success = decodeAuthSuccess(answer->body)) {
    co_await acceptSignIn(*std::move(success), stop);
  } else {
    signInUnanswered(unreadableAnswer);
    m_with.telemetry.reportUnreadableAnswer(endpoint, startedAt);
  }
}

void AuthManager::signInUnanswered(const QString& description) {
  setLastError(QCoreApplication::translate("Account", "Can't reach the server"));
  m_with.debugLog(u"auth: sign-in FAILED — "_s + description);
  m_with.telemetry.track(TelemetryEvent::signInFailed(u"network"));
}

void AuthManager::signInRefused(int status, const QByteArray& body) {
  const QString fallback =
      status == 401
          ? QCoreApplication::translate("Account",
                                        "Backend rejected the Google token (client ID not allowed)")
          : QCoreApplication::translate("Account", "Sign-in failed (HTTP %1)").arg(status);
  const QString message = decodeAuthError(body).value_or(fallback);
  setLastError(message);
  m_with.debugLog(u"auth: sign-in FAILED — HTTP %1: %2"_s.arg(status).arg(message));
  m_with.telemetry.track(TelemetryEvent::signInRefused(status));
}

Task<> AuthManager::acceptSignIn(AuthSuccess success, std::stop_token stop) {
  if (!m_with.tokens.write(success.token, tokenAccount())) {
    setLastError(
        QCoreApplication::translate("Account", "Couldn't save the sign-in token to the Keychain"));
    m_with.debugLog(u"auth: keychain write FAILED"_s);
    co_return;
  }
  const AuthUser& user = success.user;
  m_email = user.email;
  m_displayName = user.name;
  setPhoto(user.avatarUrl);
  if (user.email) m_with.settings.set(keys::authEmail, *user.email);
  if (user.name) m_with.settings.set(keys::authDisplayName, *user.name);
  m_isSignedIn = true;
  m_with.debugLog(u"auth: signed in successfully"_s);
  m_with.telemetry.track(TelemetryEvent::signInCompleted());
  m_with.telemetry.sendDeviceReport(Urgency::Forced);
  m_with.telemetry.flush();
  changed.notify();
  co_await refreshProfile(stop);
  co_await fetchLanguages(stop);
}

/// An address that can't be read leaves the last good one.
void AuthManager::setPhoto(const std::optional<QString>& avatarUrl) {
  const auto url = avatarUrl ? parsedUrl(*avatarUrl) : std::nullopt;
  if (!url) return;
  m_photoURL = url;
  m_with.settings.set(keys::authPhotoURL, *avatarUrl);
}

void AuthManager::signOut() {
  m_with.telemetry.drainForAccountChange();
  m_with.tokens.remove(tokenAccount());
  m_with.settings.remove(keys::authEmail);
  m_with.settings.remove(keys::authDisplayName);
  m_with.settings.remove(keys::authPhotoURL);
  m_with.settings.remove(keys::recentDictations);
  m_with.settings.remove(keys::customDictionaryEntries);
  m_with.settings.remove(keys::customShortcutEntries);
  m_email.reset();
  m_displayName.reset();
  m_photoURL.reset();
  m_consumption.reset();
  m_isSignedIn = false;
  m_lastError.reset();
  changed.notify();
}

Task<> AuthManager::refreshProfile(std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty()) co_return;
  const auto answer = co_await m_with.session.send(m_requests.profile(sessionToken), stop);
  if (!answer) {
    m_with.debugLog(u"auth: refreshProfile non-fatal error — "_s + answer.error().description);
  } else if (answer->status == 401) {
    if (!m_isSignedIn) co_return;
    signOut();
    setLastError(QCoreApplication::translate("Account", "Session expired — sign in again"));
  } else if (isSuccess(*answer)) {
    if (const auto profile = decodeProfileResponse(answer->body))
      takeProfile(*profile);
    else
      m_with.debugLog(u"auth: refreshProfile non-fatal error — "_s + unreadableAnswer);
  }
}

void AuthManager::takeProfile(const UserProfile& profile) {
  if (profile.user.email) {
    m_email = profile.user.email;
    m_with.settings.set(keys::authEmail, *m_email);
  }
  if (profile.user.name) {
    m_displayName = profile.user.name;
    m_with.settings.set(keys::authDisplayName, *m_displayName);
  }
  setPhoto(profile.user.avatarUrl);
  m_consumption = profile.consumption;
  m_isBetaTester = profile.betaEligible == true;
  changed.notify();
}

Task<> AuthManager::fetchLanguages(std::stop_token stop) {
  const auto answer = co_await m_with.session.send(m_requests.languages(token()), stop);
  if (!answer) {
    logError(u"fetchLanguages"_s, answer.error().description);
  } else if (isSuccess(*answer)) {
    if (auto languages = decodeLanguagesResponse(answer->body)) {
      m_fetchedLanguages = *std::move(languages);
      changed.notify();
    } else {
      logError(u"fetchLanguages"_s, unreadableAnswer);
    }
  }
}

Task<bool> AuthManager::updateProfile(QString name, std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty()) co_return false;
  const auto answer = co_await m_with.session.send(m_requests.nameChange(name, sessionToken), stop);
  if (!answer) {
    logError(u"updateProfile"_s, answer.error().description);
    co_return false;
  }
  if (!isSuccess(*answer)) co_return false;
  m_displayName = name;
  m_with.settings.set(keys::authDisplayName, name);
  changed.notify();
  co_return true;
}

Task<std::optional<QString>> AuthManager::deleteAccount(std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty())
    co_return QCoreApplication::translate("Account", "You're not signed in.");
  const auto answer = co_await m_with.session.send(m_requests.accountDeletion(sessionToken), stop);
  if (!answer) {
    logError(u"deleteAccount"_s, answer.error().description);
    co_return QCoreApplication::translate(
        "Account", "Couldn't reach Vemo. Check your connection and try again.");
  }
  if (!answer->status)
    co_return QCoreApplication::translate("Account", "Something went wrong. Please try again.");
  if (!isSuccess(*answer)) {
    m_with.debugLog(u"auth: deleteAccount HTTP %1"_s.arg(*answer->status));
    co_return decodeAuthError(answer->body)
        .value_or(QCoreApplication::translate(
            "Account", "We couldn't delete your account. Please try again or email us."));
  }
  m_with.debugLog(u"auth: account deleted"_s);
  co_return std::nullopt;
}

Task<std::vector<DictionaryItemDto>> AuthManager::fetchDictionary(std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty()) co_return std::vector<DictionaryItemDto>();
  const auto answer = co_await m_with.session.send(m_requests.dictionary(sessionToken), stop);
  if (!answer) {
    logError(u"fetchDictionary"_s, answer.error().description);
  } else if (isSuccess(*answer)) {
    if (auto items = decodeDictionaryResponse(answer->body)) co_return *std::move(items);
    logError(u"fetchDictionary"_s, unreadableAnswer);
  }
  co_return std::vector<DictionaryItemDto>();
}

Task<std::optional<DictionaryItemDto>> AuthManager::addDictionaryItem(QString phrase,
                                                                      QString replacement,
                                                                      std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty()) co_return std::nullopt;
  const auto answer = co_await m_with.session.send(
      m_requests.dictionaryAddition(phrase, replacement, sessionToken), stop);
  if (!answer) {
    logError(u"addDictionaryItem"_s, answer.error().description);
  } else if (isSuccess(*answer)) {
    if (auto item = decodeDictionaryAddResponse(answer->body)) co_return item;
    logError(u"addDictionaryItem"_s, unreadableAnswer);
  }
  co_return std::nullopt;
}

Task<bool> AuthManager::deleteDictionaryItem(QString id, std::stop_token stop) {
  const QString sessionToken = token();
  if (sessionToken.isEmpty()) co_return false;
  const auto answer =
      co_await m_with.session.send(m_requests.dictionaryDeletion(id, sessionToken), stop);
  if (!answer) logError(u"deleteDictionaryItem"_s, answer.error().description);
  co_return answer&& isSuccess(*answer);
}

}  // namespace vemo
