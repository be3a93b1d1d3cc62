#include "provider/LocalProvider.h"

#include <unistd.h>

#include <algorithm>
#include <array>
#include <boost/json.hpp>
#include <boost/url.hpp>

#include "accounts/Secrets.h"
#include "provider/ProviderPages.h"

namespace vemo::service {

namespace {

namespace http = boost::beast::http;
namespace json = boost::json;
using Answer = LocalProvider::Answer;
using Request = LocalProvider::Request;

constexpr std::string_view authorizePath = "/authorize";
constexpr std::string_view consentPath = "/consent";
constexpr std::string_view tokenPath = "/token";
constexpr std::string_view keysPath = "/jwks";
constexpr auto paths = std::to_array({authorizePath, consentPath, tokenPath, keysPath});

constexpr std::size_t challengeLength = 43;
constexpr std::size_t longestState = 512;

std::string_view pathOf(const Request& request) {
  const std::string_view target = request.target();
  return target.substr(0, target.find('?'));
}

std::string_view queryOf(const Request& request) {
  const std::string_view target = request.target();
  const auto mark = target.find('?');
  return mark == std::string_view::npos ? std::string_view() : target.substr(mark + 1);
}

std::optional<FormFields> formOf(const Request& request) {
  std::string_view type = request[http::field::content_type];
  type = type.substr(0, type.find(';'));
  if (!boost::beast::iequals(type, "application/x-www-form-urlencoded")) return std::nullopt;
  return FormFields::read(request.body());
}

bool isPrintable(std::string_view text) {
  return std::ranges::all_of(text, [](char letter) { return letter >= ' ' && letter <= '~'; });
}

bool isUnreserved(std::string_view text) {
  return std::ranges::all_of(text, [](unsigned char letter) {
    return std::isalnum(letter) || letter == '-' || letter == '.' || letter == '_' || letter == '~';
  });
}

/// What is wrong with the rest, once client and redirect are known to be right; none when nothing.
std::optional<std::string_view> problemWith(const FormFields& fields) {
  if (fields.value("response_type") != "code") return "unsupported_response_type";
  const auto scope = " " + fields.value("scope") + " ";
  if (!scope.contains(" openid ")) return "invalid_scope";
  const auto challenge = fields.value("code_challenge");
  if (fields.value("code_challenge_method") != "S256" || challenge.size() != challengeLength ||
      !isUnreserved(challenge))
    return "invalid_request";
  for (const auto* name : {"state", "nonce"}) {
    const auto value = fields.value(name);
    if (value.size() > longestState || !isPrintable(value)) return "invalid_request";
  }
  return std::nullopt;
}

Answer plainAnswer(unsigned status, std::string_view contentType, std::string body) {
  Answer answer(static_cast<http::status>(status), 11);
  answer.set(http::field::content_type, contentType);
  answer.set(http::field::cache_control, "no-store");
  answer.set("X-Content-Type-Options", "nosniff");
  answer.set("Cross-Origin-Resource-Policy", "same-origin");
  answer.body() = std::move(body);
  return answer;
}

Answer tokenFailure(std::string_view error, std::string_view description) {
  return plainAnswer(
      400, "application/json",
      json::serialize(json::object{{"error", error}, {"error_description", description}}));
}

/// What the question is answered with; one answer for every trouble with the database.
template <typename Result, typename Answering>
auto answering(LocalProvider::Completion completion, Answer unavailable, Answering answer) {
  return [completion = std::move(completion), unavailable = std::move(unavailable),
          answer = std::move(answer)](std::expected<Result, DatabaseFailure> result) mutable {
    completion(result ? answer(*std::move(result)) : std::move(unavailable));
  };
}

constexpr std::string_view unavailableText = "The service can’t remember sign-ins at the moment.";

}  // namespace

LocalProvider::LocalProvider(ProviderSettings settings, JsonWebKey key, DatabaseWorkers& workers,
                             std::function<Moment()> now)
    : m_settings(std::move(settings)),
      m_key(std::move(key)),
      m_workers(workers),
      m_now(std::move(now)) {}

std::string_view LocalProvider::knownPath(const Request& request) {
  const auto* path = std::ranges::find(paths, pathOf(request));
  return path == paths.end() ? "-" : *path;
}

void LocalProvider::answer(const Request& request, Completion completion) {
  if (!isForThisHost(request))
    return completion(failurePage(421, "This page is only for programs of this computer."));
  const auto path = pathOf(request);
  const auto wanted =
      path == authorizePath || path == keysPath ? http::verb::get : http::verb::post;
  if (knownPath(request) == "-") return completion(failurePage(404, "There is nothing here."));
  if (request.method() != wanted) {
    auto refusal = failurePage(405, "This address doesn’t take that method.");
    refusal.set(http::field::allow, http::to_string(wanted));
    return completion(std::move(refusal));
  }
  if (path == keysPath) return completion(keys());
  if (path == tokenPath) return token(request, std::move(completion));
  if (!isFromOwnPage(request))
    return completion(failurePage(403, "Another page asked for this. Start in Vemo."));
  path == authorizePath ? authorize(request, std::move(completion))
                        : consent(request, std::move(completion));
}

/// A name that an attacker's server gives out for this address would open the page to its scripts.
bool LocalProvider::isForThisHost(const Request& request) const {
  const auto port = ":" + std::to_string(m_settings.port);
  const std::string_view host = request[http::field::host];
  return request.count(http::field::host) == 1 &&
         (host == "127.0.0.1" + port || host == "localhost" + port || host == "[::1]" + port ||
          host == m_settings.address + port);
}

/// Vemo and the address bar count as no page at all. Browsers that don't say where a request comes
/// from say at least whose form it is.
bool LocalProvider::isFromOwnPage(const Request& request) const {
  const std::string_view site = request["Sec-Fetch-Site"];
  if (!site.empty() && site != "none" && site != "same-origin") return false;
  const std::string_view origin = request[http::field::origin];
  return origin.empty() || origin == "http://" + std::string(request[http::field::host]);
}

void LocalProvider::authorize(const Request& request, Completion completion) {
  const auto fields = FormFields::read(queryOf(request));
  if (!fields) return completion(failurePage(400, "The address of this page can’t be read."));
  if (fields->value("client_id") != m_settings.clientIdentifier)
    return completion(failurePage(400, "An unknown program asked for this sign-in."));
  if (fields->value("redirect_uri") != m_settings.redirectUri())
    return completion(failurePage(400, "This sign-in would lead to an unknown place."));
  const auto state = fields->value("state");
  if (const auto problem = problemWith(*fields))
    return completion(redirect("error=" + std::string(*problem), state));

  const auto ticket = randomSecret();
  auto keep = [ticket, now = m_now(),
               kept = SignInCodes::Request{.challenge = fields->value("code_challenge"),
                                           .state = state,
                                           .nonce = fields->value("nonce")}](Database& database) {
    SignInCodes(database).keepRequest(ticket, kept, now);
    return true;
  };
  m_workers.ask(std::move(keep),
                answering<bool>(std::move(completion), failurePage(503, unavailableText),
                                [this, ticket](bool) {
                                  const auto nonce = randomSecret();
                                  return page(200,
                                              written(ConsentPage{.name = m_settings.name,
                                                                  .email = m_settings.email,
                                                                  .ticket = ticket,
                                                                  .styleNonce = nonce}),
                                              nonce);
                                }));
}

void LocalProvider::consent(const Request& request, Completion completion) {
  const auto fields = formOf(request);
  const auto decision = fields ? fields->value("decision") : "";
  if (decision != "continue" && decision != "cancel")
    return completion(failurePage(400, "What this page sent can’t be read."));

  const auto code = decision == "continue" ? randomSecret() : std::string();
  auto decide = [ticket = fields->value("ticket"), code, now = m_now()](Database& database) {
    return database.inTransaction([&] {
      SignInCodes codes(database);
      const auto asked = codes.takeRequest(ticket, now);
      if (asked && !code.empty()) codes.keepCode(code, *asked, now);
      return asked;
    });
  };
  using Asked = std::optional<SignInCodes::Request>;
  m_workers.ask(
      std::move(decide),
      answering<Asked>(std::move(completion), failurePage(503, unavailableText),
                       [this, code](const Asked& asked) {
                         if (!asked)
                           return failurePage(
                               400, "This page has been used, or is too old. Start again in Vemo.");
                         return redirect(code.empty() ? "error=access_denied" : "code=" + code,
                                         asked->state);
                       }));
}

void LocalProvider::token(const Request& request, Completion completion) {
  const auto fields = formOf(request);
  if (!fields) return completion(tokenFailure("invalid_request", "The form can’t be read."));
  if (fields->value("grant_type") != "authorization_code")
    return completion(tokenFailure("unsupported_grant_type", "Only codes are exchanged here."));
  if (fields->value("client_id") != m_settings.clientIdentifier)
    return completion(tokenFailure("invalid_client", "This program isn’t known here."));

  auto take = [code = fields->value("code"), now = m_now()](Database& database) {
    return SignInCodes(database).takeCode(code, now);
  };
  // A code that came with a wrong verifier is used up as well: whoever has stolen it gets one try.
  const bool isOurRedirect = fields->value("redirect_uri") == m_settings.redirectUri();
  using Taken = std::optional<SignInCodes::Request>;
  m_workers.ask(
      std::move(take),
      answering<Taken>(
          std::move(completion), tokenFailure("temporarily_unavailable", unavailableText),
          [this, isOurRedirect, verifier = fields->value("code_verifier")](const Taken& taken) {
            if (!taken)
              return tokenFailure("invalid_grant", "This sign-in was used before, or is too old.");
            if (!isOurRedirect || !equalSecrets(secretHash(verifier), taken->challenge))
              return tokenFailure("invalid_grant", "Another program asked for this sign-in.");
            return plainAnswer(200, "application/json",
                               json::serialize(json::object{
                                   {"id_token", idToken(taken->nonce)},
                                   // Required by the protocol; it opens nothing here.
                                   {"access_token", randomSecret()},
                                   {"token_type", "Bearer"},
                                   {"expires_in", std::chrono::seconds(tokenLifetime).count()}}));
          }));
}

LocalProvider::Answer LocalProvider::keys() const {
  const json::object set{{"keys", json::array{json::parse(m_key.publicJson())}}};
  auto answer = plainAnswer(200, "application/json", json::serialize(set));
  answer.set(http::field::cache_control, "max-age=300");
  return answer;
}

std::string LocalProvider::idToken(const std::string& nonce) const {
  const auto now = m_now();
  json::object claims{{"iss", localIssuer},
                      {"aud", m_settings.clientIdentifier},
                      {"sub", subject()},
                      {"iat", now.time_since_epoch().count()},
                      {"exp", (now + tokenLifetime).time_since_epoch().count()},
                      // Two of the same second are still two.
                      {"jti", randomSecret()},
                      {"name", m_settings.name},
                      {"email", m_settings.email}};
  if (!nonce.empty()) claims["nonce"] = nonce;
  return m_key.sign(json::serialize(claims));
}

/// Of this key's owner alone: two machines that share a database have different people.
std::string LocalProvider::subject() const {
  return secretHash(m_key.publicJson() + " " + std::to_string(::getuid()));
}

LocalProvider::Answer LocalProvider::page(unsigned status, const std::string& html,
                                          const std::string& styleNonce) const {
  auto answer = plainAnswer(status, "text/html; charset=utf-8", html);
  // The scheme stands there because the form's answer leads to it.
  answer.set("Content-Security-Policy", "default-src 'none'; style-src 'nonce-" + styleNonce +
                                            "'; form-action 'self' " + m_settings.redirectScheme() +
                                            ":; frame-ancestors 'none'; base-uri 'none'");
  answer.set("X-Frame-Options", "DENY");
  answer.set("Referrer-Policy", "same-origin");
  answer.set("Cross-Origin-Opener-Policy", "same-origin");
  return answer;
}

LocalProvider::Answer LocalProvider::failurePage(unsigned status, std::string_view message) const {
  const auto nonce = randomSecret();
  return page(status, errorPage(message, nonce), nonce);
}

LocalProvider::Answer LocalProvider::redirect(std::string_view parameters,
                                              const std::string& state) const {
  auto location = m_settings.redirectUri() + "?" + std::string(parameters);
  if (!state.empty())
    location += "&state=" + boost::urls::encode(state, boost::urls::unreserved_chars);
  auto answer = plainAnswer(303, "text/plain", "");
  answer.set(http::field::location, location);
  return answer;
}

}  // namespace vemo::service
