#include "account/SignInAnswers.h"

#include <QCoreApplication>
#include <QUrlQuery>

#include "base/Json.h"
#include "ports/HttpSession.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

using Kind = GoogleSignInError::Kind;

std::unexpected<GoogleSignInError> failure(Kind kind, const QString& message = {}) {
  return std::unexpected(GoogleSignInError{kind, message});
}

std::optional<QString> firstItem(const QUrlQuery& query, const QString& name) {
  if (!query.hasQueryItem(name)) return std::nullopt;
  return query.queryItemValue(name, QUrl::FullyDecoded);
}

}  // namespace

GoogleSignIn::Result<QString> authorizationCodeIn(const QUrl& redirect,
                                                  const QString& expectedState) {
  const QUrlQuery query(redirect);
  if (const auto error = firstItem(query, u"error"_s)) {
    return *error == u"access_denied"_s ? failure(Kind::Cancelled) : failure(Kind::Google, *error);
  }
  if (firstItem(query, u"state"_s) != expectedState) return failure(Kind::StateMismatch);
  const auto code = firstItem(query, u"code"_s);
  if (!code) return failure(Kind::BadResponse);
  return *code;
}

GoogleSignIn::Result<QString> idTokenIn(const HttpResponse& response) {
  if (!response.status) return failure(Kind::BadResponse);
  const auto answer = parseJsonObject(response.body);
  if (*response.status >= 200 && *response.status < 300) {
    const auto token = answer ? stringIn(*answer, u"id_token") : std::nullopt;
    if (!token) return failure(Kind::BadResponse);
    return *token;
  }
  if (const auto words = answer ? stringIn(*answer, u"error_description") : std::nullopt)
    return failure(Kind::Google, *words);
  return failure(Kind::Google,
                 QCoreApplication::translate("Account", "Token exchange failed (HTTP %1)")
                     .arg(*response.status));
}

}  // namespace vemo
