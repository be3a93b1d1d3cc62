// Obtains a Google ID token for the user by the authorization-code flow with PKCE (RFC 7636), as an
// installed application must: there is no client secret. Nothing of it is kept: verifier, state and
// code exist for the length of one call.
//
// Main thread only; calls share nothing. Every failure is a GoogleSignInError; nothing here shows
// or logs anything. Requesting the stop is the user's cancelling.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <expected>
#include <stop_token>

#include "base/Task.h"

namespace vemo {

class HttpSession;
class SecureRandom;
class WebAuthentication;
struct DeploymentConfiguration;
struct HttpResponse;

struct GoogleSignInError {
  enum class Kind {
    Network,
    Session,
    Google,
    NotConfigured,
    Cancelled,
    StateMismatch,
    BadRequest,
    BadResponse,
  };
  Kind kind = Kind::BadResponse;
  QString message = {};  ///< of Network, Session and Google

  /// In words for the user.
  QString description() const;

  friend bool operator==(const GoogleSignInError&, const GoogleSignInError&) = default;
};

class GoogleSignIn {
 public:
  template <typename T>
  using Result = std::expected<T, GoogleSignInError>;

  /// All of it outlives this.
  struct Neighbours {
    WebAuthentication& browser;
    HttpSession& session;
    SecureRandom& random;
    const DeploymentConfiguration& configuration;
  };

  explicit GoogleSignIn(Neighbours neighbours) : m_with(neighbours) {}

  /// The ID token.
  Task<Result<QString>> signIn(std::stop_token stop);

 private:
  struct Flow {
    QString codeVerifier;
    QString state;
  };

  QString randomText(qsizetype byteCount) const;
  QString callbackScheme() const;
  QString redirectUri() const;
  QUrl authorizationPage(const Flow& flow) const;

  Task<Result<QString>> authorize(Flow flow, std::stop_token stop);
  Task<Result<QString>> exchange(QString code, QString codeVerifier, std::stop_token stop);

  Neighbours m_with;
};

}  // namespace vemo
