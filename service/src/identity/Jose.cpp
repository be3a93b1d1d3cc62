#include "identity/Jose.h"

#include <cjose/cjose.h>

#include <boost/json.hpp>
#include <cstdlib>
#include <new>

namespace vemo::service {

namespace {

namespace json = boost::json;

constexpr std::size_t smallestKeyBits = 2048;

using Text = std::unique_ptr<char, decltype(&std::free)>;
using Header = std::unique_ptr<cjose_header_t, decltype(&cjose_header_release)>;

std::shared_ptr<cjose_jwk_t> owned(cjose_jwk_t* key) {
  if (!key) throw std::bad_alloc();
  return {key, &cjose_jwk_release};
}

std::string textOf(const json::object& object, std::string_view name) {
  const auto* value = object.if_contains(name);
  return value && value->is_string() ? std::string(value->get_string()) : std::string();
}

bool isAbsentOr(const json::object& object, std::string_view name, std::string_view wanted) {
  const auto* value = object.if_contains(name);
  return !value || (value->is_string() && value->get_string() == wanted);
}

std::string jsonOf(const std::shared_ptr<cjose_jwk_t>& key, bool withPrivatePart) {
  const Text text(cjose_jwk_to_json(key.get(), withPrivatePart, nullptr), &std::free);
  if (!text) throw std::bad_alloc();
  return text.get();
}

/// What the first part says, none when it isn't a JSON object.
std::optional<json::object> headOf(const std::string& compact) {
  const auto end = compact.find('.');
  if (end == std::string::npos) return std::nullopt;
  std::uint8_t* bytes = nullptr;
  std::size_t length = 0;
  if (!cjose_base64url_decode(compact.data(), end, &bytes, &length, nullptr)) return std::nullopt;
  const std::unique_ptr<std::uint8_t, decltype(&std::free)> owner(bytes, &std::free);
  boost::system::error_code error;
  auto head = json::parse({reinterpret_cast<const char*>(bytes), length}, error);
  if (error || !head.is_object()) return std::nullopt;
  return std::move(head.as_object());
}

}  // namespace

std::optional<JsonWebKey> JsonWebKey::read(std::string_view text) {
  boost::system::error_code error;
  const auto parsed = json::parse({text.data(), text.size()}, error);
  const auto* object = error ? nullptr : parsed.if_object();
  if (!object || textOf(*object, "kty") != "RSA" || !isAbsentOr(*object, "use", "sig") ||
      !isAbsentOr(*object, "alg", "RS256"))
    return std::nullopt;
  auto* handle = cjose_jwk_import(text.data(), text.size(), nullptr);
  if (!handle) return std::nullopt;
  JsonWebKey key(owned(handle), textOf(*object, "kid"));
  if (cjose_jwk_get_keysize(handle, nullptr) < smallestKeyBits) return std::nullopt;
  return key;
}

JsonWebKey JsonWebKey::makePair(const std::string& identifier) {
  constexpr std::uint8_t exponent[] = {1, 0, 1};
  auto key =
      owned(cjose_jwk_create_RSA_random(smallestKeyBits, exponent, sizeof exponent, nullptr));
  if (!cjose_jwk_set_kid(key.get(), identifier.data(), identifier.size(), nullptr))
    throw std::bad_alloc();
  return {std::move(key), identifier};
}

std::string JsonWebKey::publicJson() const {
  return jsonOf(m_handle, false);
}

std::string JsonWebKey::privateJson() const {
  return jsonOf(m_handle, true);
}

std::string JsonWebKey::sign(const std::string& payload) const {
  const Header header(cjose_header_new(nullptr), &cjose_header_release);
  if (!header || !cjose_header_set(header.get(), CJOSE_HDR_ALG, CJOSE_HDR_ALG_RS256, nullptr) ||
      !cjose_header_set(header.get(), CJOSE_HDR_KID, m_identifier.c_str(), nullptr))
    throw std::bad_alloc();
  const std::unique_ptr<cjose_jws_t, decltype(&cjose_jws_release)> token(
      cjose_jws_sign(m_handle.get(), header.get(),
                     reinterpret_cast<const std::uint8_t*>(payload.data()), payload.size(),
                     nullptr),
      &cjose_jws_release);
  const char* compact = nullptr;
  if (!token || !cjose_jws_export(token.get(), &compact, nullptr)) throw std::bad_alloc();
  return compact;
}

std::optional<std::vector<JsonWebKey>> readKeySet(std::string_view text) {
  boost::system::error_code error;
  const auto parsed = json::parse({text.data(), text.size()}, error);
  const auto* object = error ? nullptr : parsed.if_object();
  const auto* list = object ? object->if_contains("keys") : nullptr;
  if (!list || !list->is_array()) return std::nullopt;
  std::vector<JsonWebKey> keys;
  for (const auto& entry : list->get_array())
    if (auto key = JsonWebKey::read(json::serialize(entry))) keys.push_back(*std::move(key));
  return keys;
}

std::expected<SignedToken, SignedToken::Problem> SignedToken::read(const std::string& compact) {
  // The library takes the token by C strings in places.
  if (compact.size() > largest || compact.find('\0') != std::string::npos)
    return std::unexpected(Problem::Malformed);
  const auto head = headOf(compact);
  if (!head) return std::unexpected(Problem::Malformed);
  // Decided before the token meets a key: whoever sends it must not choose how it is checked.
  if (textOf(*head, "alg") != "RS256" || head->contains("crit") || head->contains("b64"))
    return std::unexpected(Problem::Algorithm);
  auto* handle = cjose_jws_import(compact.data(), compact.size(), nullptr);
  if (!handle) return std::unexpected(Problem::Malformed);
  SignedToken token;
  token.m_handle.reset(handle, &cjose_jws_release);
  token.m_keyIdentifier = textOf(*head, "kid");
  return token;
}

std::optional<std::string> SignedToken::payload(const JsonWebKey& key) const {
  std::uint8_t* bytes = nullptr;
  std::size_t length = 0;
  if (!cjose_jws_verify(m_handle.get(), key.m_handle.get(), nullptr) ||
      !cjose_jws_get_plaintext(m_handle.get(), &bytes, &length, nullptr))
    return std::nullopt;
  return std::string(reinterpret_cast<const char*>(bytes), length);
}

}  // namespace vemo::service
