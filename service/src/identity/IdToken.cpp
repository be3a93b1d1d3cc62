#include "identity/IdToken.h"

#include <algorithm>
#include <boost/json.hpp>

#include "accounts/Secrets.h"

namespace vemo::service {

namespace {

namespace json = boost::json;
using namespace std::chrono_literals;

/// How far two clocks may be apart.
constexpr auto leeway = 60s;

/// The provider promises no more than 255.
constexpr std::size_t longestSubject = 255;

constexpr std::size_t longestText = 1024;

std::optional<std::string> text(const json::object& claims, std::string_view name) {
  const auto* value = claims.if_contains(name);
  if (!value || !value->is_string()) return std::nullopt;
  return std::string(value->get_string());
}

/// What is worth keeping of a claim that only describes the person.
std::optional<std::string> description(const json::object& claims, std::string_view name) {
  auto value = text(claims, name);
  if (!value || value->empty() || value->size() > longestText || value->contains('\0'))
    return std::nullopt;
  return value;
}

std::optional<Moment> moment(const json::object& claims, std::string_view name) {
  const auto* value = claims.if_contains(name);
  boost::system::error_code error;
  const auto seconds = value ? value->to_number<std::int64_t>(error) : 0;
  // Far enough on both sides for sums with it to stay numbers.
  constexpr std::int64_t farAway = std::int64_t{1} << 40;
  if (!value || error || seconds < 0 || seconds > farAway) return std::nullopt;
  return Moment(std::chrono::seconds(seconds));
}

bool isForUs(const json::object& claims, const std::vector<std::string>& audiences) {
  const auto isOurs = [&audiences](const json::value& name) {
    return name.is_string() &&
           std::ranges::find(audiences, std::string_view(name.get_string())) != audiences.end();
  };
  const auto* audience = claims.if_contains("aud");
  const auto* party = claims.if_contains("azp");
  if (party && !isOurs(*party)) return false;
  if (!audience) return false;
  const auto* several = audience->if_array();
  if (!several) return isOurs(*audience);
  return std::ranges::any_of(*several, isOurs) && (several->size() == 1 || party);
}

bool hasNonce(const json::object& claims, const std::optional<std::string>& nonce) {
  if (!nonce) return !claims.contains("nonce");
  const auto told = text(claims, "nonce");
  return told && equalSecrets(*told, *nonce);
}

std::expected<std::string, IdTokenProblem> verifiedPayload(const std::string& compact,
                                                           const KeyFinder& keys) {
  const auto token = SignedToken::read(compact);
  if (!token)
    return std::unexpected(token.error() == SignedToken::Problem::Algorithm
                               ? IdTokenProblem::Algorithm
                               : IdTokenProblem::Malformed);
  const auto candidates = keys(token->keyIdentifier());
  if (candidates.empty()) return std::unexpected(IdTokenProblem::UnknownKey);
  for (const auto& key : candidates)
    if (auto payload = token->payload(key)) return *std::move(payload);
  return std::unexpected(IdTokenProblem::Signature);
}

}  // namespace

std::string_view nameOf(IdTokenProblem problem) {
  switch (problem) {
    case IdTokenProblem::Malformed:
      return "malformed";
    case IdTokenProblem::Algorithm:
      return "wrong algorithm";
    case IdTokenProblem::UnknownKey:
      return "unknown key";
    case IdTokenProblem::Signature:
      return "wrong signature";
    case IdTokenProblem::Issuer:
      return "wrong issuer";
    case IdTokenProblem::Audience:
      return "wrong audience";
    case IdTokenProblem::Expired:
      return "expired";
    case IdTokenProblem::NotYetValid:
      return "not yet valid";
    case IdTokenProblem::Nonce:
      return "wrong nonce";
  }
  return "unknown";
}

std::expected<IdToken, IdTokenProblem> checkIdToken(const std::string& compact,
                                                    const KeyFinder& keys,
                                                    const IdTokenRules& rules,
                                                    const std::optional<std::string>& nonce,
                                                    Moment now) {
  const auto payload = verifiedPayload(compact, keys);
  if (!payload) return std::unexpected(payload.error());
  boost::system::error_code error;
  const auto parsed = json::parse(*payload, error);
  const auto* claims = error ? nullptr : parsed.if_object();
  if (!claims) return std::unexpected(IdTokenProblem::Malformed);

  const auto issuer = text(*claims, "iss");
  if (!issuer || std::ranges::find(rules.issuers, *issuer) == rules.issuers.end())
    return std::unexpected(IdTokenProblem::Issuer);
  if (!isForUs(*claims, rules.audiences)) return std::unexpected(IdTokenProblem::Audience);
  const auto subject = text(*claims, "sub");
  const auto expires = moment(*claims, "exp");
  const auto issued = moment(*claims, "iat");
  if (!subject || subject->empty() || subject->size() > longestSubject || !expires || !issued)
    return std::unexpected(IdTokenProblem::Malformed);
  if (now >= *expires + leeway) return std::unexpected(IdTokenProblem::Expired);
  const auto notBefore = moment(*claims, "nbf").value_or(*issued);
  if (std::max(*issued, notBefore) > now + leeway)
    return std::unexpected(IdTokenProblem::NotYetValid);
  if (!hasNonce(*claims, nonce)) return std::unexpected(IdTokenProblem::Nonce);

  auto avatar = description(*claims, "picture");
  if (avatar && !avatar->starts_with("https://")) avatar.reset();
  return IdToken{.identity = {.issuer = *issuer,
                              .subject = *subject,
                              .email = description(*claims, "email"),
                              .name = description(*claims, "name"),
                              .avatar = std::move(avatar)},
                 .expires = *expires + leeway};
}

}  // namespace vemo::service
