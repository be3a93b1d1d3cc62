#include "account/GoogleSignIn.h"

#include <QCoreApplication>
#include <QCryptographicHash>
#include <QRandomGenerator>
#include <algorithm>
#include <initializer_list>
#include <utility>

#include "account/SignInAnswers.h"
#include "ports/HttpSession.h"
#include "ports/SecureRandom.h"
#include "ports/WebAuthentication.h"
#include "storage/DeploymentConfiguration.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

using Kind = GoogleSignInError::Kind;

constexpr qsizetype verifierBytes = 64;
constexpr qsizetype stateBytes = 32;
constexpr auto tokenTimeout = 60s;

QString urlSafeBase64(const QByteArray& bytes) {
  return QString::fromLatin1(
      bytes.toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
}

std::unexpected<GoogleSignInError> failure(Kind kind, const QString& message = {}) {
  return std::unexpected(GoogleSignInError{kind, message});
}

using QueryItems = std::initializer_list<std::pair<QByteArray, QString>>;

QByteArray queryOf(QueryItems items) {
  QByteArray query;
  for (const auto& [name, value] : items) {
    if (!query.isEmpty()) query += '&';
    query += name + '=' + QUrl::toPercentEncoding(value);
  }
  return query;
}

GoogleSignInError errorOf(const WebAuthenticationError& error) {
  switch (error.kind) {
    case WebAuthenticationError::Kind::CannotOpen:
      return {Kind::Session,
              QCoreApplication::translate("Account", "Couldn't open the sign-in window")};
    case WebAuthenticationError::Kind::Cancelled:
      return {Kind::Cancelled};
    case WebAuthenticationError::Kind::Failed:
      break;
  }
  return {Kind::Session, error.description};
}

}  // namespace

QString GoogleSignInError::description() const {
  switch (kind) {
    case Kind::Network:
      return QCoreApplication::translate("Account", "Can't reach Google — %1").arg(message);
    case Kind::Session:
    case Kind::Google:
      return message;
    case Kind::NotConfigured:
      return QCoreApplication::translate("Account", "Google sign-in isn't configured");
    case Kind::Cancelled:
      return QCoreApplication::translate("Account", "Sign-in cancelled");
    case Kind::StateMismatch:
      return QCoreApplication::translate("Account", "Sign-in failed a security check");
    case Kind::BadRequest:
      return QCoreApplication::translate("Account", "Couldn't build the sign-in request");
    case Kind::BadResponse:
      return QCoreApplication::translate("Account", "Unexpected response from Google");
  }
  std::unreachable();
}

Task<GoogleSignIn::Result<QString>> GoogleSignIn::signIn(std::stop_token stop) {
  if (m_with.configuration.googleClientId.isEmpty()) co_return failure(Kind::NotConfigured);
  const Flow flow{.codeVerifier = randomText(verifierBytes), .state = randomText(stateBytes)};
  const auto code = co_await authorize(flow, stop);
  if (!code) co_return std::unexpected(code.error());
  co_return co_await exchange(*code, flow.codeVerifier, stop);
}

QString GoogleSignIn::randomText(qsizetype byteCount) const {
  auto bytes = m_with.random.bytes(byteCount);
  if (!bytes) {
    bytes.emplace(byteCount, '\0');
    std::ranges::generate(
        *bytes, [] { return static_cast<char>(QRandomGenerator::global()->generate64() & 0xFF); });
  }
  return urlSafeBase64(*bytes);
}

QString GoogleSignIn::callbackScheme() const {
  QStringList parts = m_with.configuration.googleClientId.split(u'.');
  std::ranges::reverse(parts);
  return parts.join(u'.');
}

QString GoogleSignIn::redirectUri() const {
  return callbackScheme() + u":/oauth2redirect"_s;
}

QUrl GoogleSignIn::authorizationPage(const Flow& flow) const {
  const QByteArray challenge =
      QCryptographicHash::hash(flow.codeVerifier.toUtf8(), QCryptographicHash::Sha256);
  QUrl page = m_with.configuration.googleAuthorizationEndpoint;
  page.setQuery(QString::fromLatin1(queryOf({
      {"client_id", m_with.configuration.googleClientId},
      {"redirect_uri", redirectUri()},
      {"response_type", u"code"_s},
      {"scope", u"openid email profile"_s},
      {"code_challenge", urlSafeBase64(challenge)},
      {"code_challenge_method", u"S256"_s},
      {"state", flow.state},
  })));
  return page;
}

Task<GoogleSignIn::Result<QString>> GoogleSignIn::authorize(Flow flow, std::stop_token stop) {
  const QUrl page = authorizationPage(flow);
  if (!page.isValid() || page.isRelative()) co_return failure(Kind::BadRequest);
  const auto redirect =
      co_await m_with.browser.authenticate(page, callbackScheme(), std::move(stop));
  if (!redirect) co_return std::unexpected(errorOf(redirect.error()));
  if (!*redirect) co_return failure(Kind::BadResponse);
  co_return authorizationCodeIn(**redirect, flow.state);
}

Task<GoogleSignIn::Result<QString>> GoogleSignIn::exchange(QString code, QString codeVerifier,
                                                           std::stop_token stop) {
  const HttpRequest request{
      .method = "POST"_ba,
      .url = m_with.configuration.googleTokenEndpoint,
      .headers = {{"Content-Type"_ba, "application/x-www-form-urlencoded"_ba}},
      .body = queryOf({{"client_id", m_with.configuration.googleClientId},
                       {"code", code},
                       {"code_verifier", codeVerifier},
                       {"grant_type", u"authorization_code"_s},
                       {"redirect_uri", redirectUri()}}),
      .timeout = tokenTimeout};
  const auto answer = co_await m_with.session.send(request, stop);
  if (answer) co_return idTokenIn(*answer);
  if (stop.stop_requested()) co_return failure(Kind::Cancelled);
  co_return failure(Kind::Network, answer.error().description);
}

}  // namespace vemo
