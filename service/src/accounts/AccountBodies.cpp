#include "accounts/AccountBodies.h"

#include <boost/algorithm/string/trim.hpp>

#include "http/JsonBody.h"

namespace vemo::service {

namespace {

constexpr auto noObject = "The body is not a JSON object.";

constexpr TextLimits idTokenLimits{.least = 1, .most = 16 * 1024};
constexpr TextLimits nonceLimits{.least = 1, .most = 256};
constexpr TextLimits nameLimits{.least = 1, .most = 400};
constexpr TextLimits phraseLimits{.least = 1, .most = 1000};
constexpr TextLimits replacementLimits{.least = 0, .most = 8000};

}  // namespace

std::expected<SignInBody, std::string_view> readSignIn(std::string_view body) {
  const auto object = jsonObjectIn(body);
  if (!object) return std::unexpected(noObject);
  auto idToken = textIn(*object, "idToken", idTokenLimits);
  if (!idToken) return std::unexpected("The body lacks the text idToken.");
  auto nonce = textIn(*object, "nonce", nonceLimits);
  if (!nonce && object->contains("nonce"))
    return std::unexpected("The nonce is not a text of a fitting length.");
  return SignInBody{.idToken = *std::move(idToken), .nonce = std::move(nonce)};
}

std::expected<std::string, std::string_view> readName(std::string_view body) {
  const auto object = jsonObjectIn(body);
  if (!object) return std::unexpected(noObject);
  auto name = textIn(*object, "name", nameLimits);
  if (name) boost::algorithm::trim(*name);
  if (!name || name->empty()) return std::unexpected("The body lacks a name of a fitting length.");
  return *std::move(name);
}

std::expected<DictionaryWords, std::string_view> readDictionaryWords(std::string_view body) {
  const auto object = jsonObjectIn(body);
  if (!object) return std::unexpected(noObject);
  auto phrase = textIn(*object, "phrase", phraseLimits);
  if (!phrase) return std::unexpected("The body lacks a phrase of a fitting length.");
  auto replacement = textIn(*object, "replacement", replacementLimits);
  if (!replacement) return std::unexpected("The body lacks a replacement of a fitting length.");
  return DictionaryWords{.phrase = *std::move(phrase), .replacement = *std::move(replacement)};
}

}  // namespace vemo::service
