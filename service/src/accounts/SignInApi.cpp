#include "accounts/SignInApi.h"

#include "accounts/AccountAnswers.h"
#include "accounts/BearerTokens.h"
#include "accounts/RateLimit.h"
#include "accounts/SignInGuard.h"
#include "http/DatabaseAnswer.h"
#include "http/NetworkSource.h"

namespace vemo::service {

namespace {

constexpr std::size_t signInBody = 32 * 1024;
constexpr std::chrono::seconds minute{60};

Answer refused() {
  return errorAnswer(401, "The sign-in was not accepted. Try to sign in again.");
}

}  // namespace

SignInApi::SignInApi(const Configuration& configuration, DatabaseWorkers& database,
                     IdTokenChecks& checks, Now now, std::function<void(std::string_view)> report)
    : m_configuration(configuration),
      m_database(database),
      m_checks(checks),
      m_now(std::move(now)),
      m_report(std::move(report)) {}

void SignInApi::addTo(Router& router) {
  router.add({boost::beast::http::verb::post, "/desktop/auth/google", Access::Everybody, signInBody,
              [this](const Request& request, std::stop_token, AnswerCompletion done) {
                signIn(request, std::move(done));
              }});
}

void SignInApi::signIn(const Request& request, AnswerCompletion done) {
  auto body = readSignIn(request.body);
  if (!body) return done(errorAnswer(400, body.error()));
  m_database.ask([source = "sign-in from " + networkOf(request, m_configuration.behindProxy),
                  limit = m_configuration.accounts.signInsAMinute, now = m_now()](
                     Database& database) { return RateLimit(database).allow(source, limit, now); },
                 [this, body = *std::move(body), done = std::move(done)](auto allowed) mutable {
                   if (!allowed) return done(unavailableAnswer());
                   if (*allowed) return check(std::move(body), std::move(done));
                   auto answer = errorAnswer(429, "Too many sign-ins. Try again in a minute.");
                   answer.retryAfter = minute;
                   done(std::move(answer));
                 });
}

void SignInApi::check(SignInBody body, AnswerCompletion done) {
  m_checks.check(body.idToken, body.nonce, m_now(),
                 [this, compact = body.idToken, done = std::move(done)](auto idToken) mutable {
                   if (!idToken) return done(refusal(idToken.error()));
                   admit(compact, *idToken, std::move(done));
                 });
}

Answer SignInApi::refusal(const IdTokenChecks::Failure& failure) const {
  if (failure.kind != IdTokenChecks::Failure::Kind::Refused) {
    if (failure.kind == IdTokenChecks::Failure::Kind::KeysUnavailable)
      m_report("the identity provider's keys cannot be fetched");
    return errorAnswer(503, "Sign-ins cannot be checked now. Try again in a moment.");
  }
  m_report("a sign-in was refused: " + std::string(failure.reason));
  return refused();
}

void SignInApi::admit(const std::string& compact, const IdToken& idToken, AnswerCompletion done) {
  answerFrom(
      m_database,
      [compact, idToken, now = m_now()](Database& database) {
        return database.inTransaction([&] {
          if (!SignInGuard(database).useOnce(compact, idToken.expires)) return refused();
          const auto account = Accounts(database).signIn(idToken.identity, now);
          return signInAnswer(BearerTokens(database).issue(account.id, now).value(), account);
        });
      },
      std::move(done));
}

}  // namespace vemo::service
