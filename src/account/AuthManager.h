// The client's view of the signed-in account, and the owner of the session token's life.
//
// Two things end a session: signOut(), and an answer of 401 from the profile or a dictation. A
// network that fails never does. What the user sees of failures is lastError() and what
// deleteAccount() returns; everything else is a line in the log, with the last good values kept.
//
// Observable. Main thread only; network waits suspend. Operations that need a token read it when
// they are called; without one they do nothing, and make no request. There is no guard against two
// of one operation at once: whichever answer lands last wins. Requesting a stop ends the request
// under way, which counts as a failed one; that of signInWithGoogle() is the user's cancelling.
#pragma once

#include <QString>
#include <QUrl>
#include <optional>
#include <stop_token>
#include <vector>

#include "account/AccountRecords.h"
#include "account/AccountRequests.h"
#include "account/GoogleSignIn.h"
#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/Task.h"
#include "base/TaskScope.h"

namespace vemo {

class DebugLog;
class SecureTokenStore;
class Settings;
class Telemetry;

class AuthManager {
 public:
  /// What it works with; all of it outlives the manager.
  struct Neighbours {
    MainThread& mainThread;
    Clock& clock;
    SecureTokenStore& tokens;
    Settings& settings;
    DebugLog& debugLog;
    Telemetry& telemetry;
    HttpSession& session;
    GoogleSignIn& googleSignIn;
    const DeploymentConfiguration& configuration;
    const SystemInformation& system;
  };

  /// Brings an older version's token into the token store; signed in from the start when there is
  /// one. Reads profile and languages on a later turn of the main queue. All of that happens later,
  /// in tokenArrived(), when the token store expects the token.
  explicit AuthManager(Neighbours neighbours);

  /// The token store has its first answer, or another one than before.
  void tokenArrived();

  bool isSignedIn() const { return m_isSignedIn; }

  /// Whether the token store has no answer yet; isSignedIn() is false until then.
  bool isSessionUnknown() const;

  const std::optional<QString>& email() const { return m_email; }
  const std::optional<QString>& displayName() const { return m_displayName; }
  const std::optional<QUrl>& photoURL() const { return m_photoURL; }
  const std::optional<UserConsumption>& consumption() const { return m_consumption; }
  bool isBetaTester() const { return m_isBetaTester; }
  const std::vector<LanguageDto>& fetchedLanguages() const { return m_fetchedLanguages; }
  bool isWorking() const { return m_isWorking; }

  /// The last failure of sign-in or session, in words for the user.
  const std::optional<QString>& lastError() const { return m_lastError; }
  void setLastError(std::optional<QString> message);

  Notifier<> changed;

  Task<> signInWithGoogle(std::stop_token stop);

  /// Drops the session token and what the settings hold of the account, on this machine alone.
  void signOut();

  Task<> refreshProfile(std::stop_token stop);
  Task<> fetchLanguages(std::stop_token stop);

  /// True when the service has taken the name.
  Task<bool> updateProfile(QString name, std::stop_token stop);

  /// Absent on success, else the message to show. Changes nothing on this machine.
  Task<std::optional<QString>> deleteAccount(std::stop_token stop);

  /// The account's dictionary; empty on any failure.
  Task<std::vector<DictionaryItemDto>> fetchDictionary(std::stop_token stop);
  /// The entry that the service has made; absent on any failure.
  Task<std::optional<DictionaryItemDto>> addDictionaryItem(QString phrase, QString replacement,
                                                           std::stop_token stop);
  Task<bool> deleteDictionaryItem(QString id, std::stop_token stop);

 private:
  void migrateLegacyToken();
  void findSession();
  Task<> readAccount(std::stop_token stop);
  QString token() const;
  void logError(const QString& operation, const QString& description);

  Task<> exchangeIdToken(QString idToken, std::stop_token stop);
  Task<> acceptSignIn(AuthSuccess success, std::stop_token stop);
  void signInUnanswered(const QString& description);
  void signInRefused(int status, const QByteArray& body);
  void flowFailed(const GoogleSignInError& error);
  void takeProfile(const UserProfile& profile);
  void setPhoto(const std::optional<QString>& avatarUrl);

  Neighbours m_with;
  const AccountRequests m_requests;
  bool m_isSignedIn = false;
  std::optional<QString> m_email;
  std::optional<QString> m_displayName;
  std::optional<QUrl> m_photoURL;
  std::optional<UserConsumption> m_consumption;
  bool m_isBetaTester = false;
  std::vector<LanguageDto> m_fetchedLanguages;
  std::optional<QString> m_lastError;
  bool m_isWorking = false;
  TaskScope m_tasks;
};

}  // namespace vemo
