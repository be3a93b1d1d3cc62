// ID tokens of a test's own provider, right ones and forged ones.
#pragma once

#include <cjose/base64.h>
#include <openssl/evp.h>
#include <openssl/hmac.h>

#include <boost/json.hpp>
#include <cstdlib>

#include "identity/IdToken.h"

namespace vemo::service {

inline std::string base64url(std::string_view bytes) {
  char* text = nullptr;
  std::size_t length = 0;
  if (!cjose_base64url_encode(reinterpret_cast<const std::uint8_t*>(bytes.data()), bytes.size(),
                              &text, &length, nullptr))
    std::abort();
  std::string result(text, length);
  std::free(text);
  return result;
}

/// Pairs take a moment to make, so a test program makes each once.
inline const JsonWebKey& providerKey() {
  static const auto key = JsonWebKey::makePair("provider");
  return key;
}
inline const JsonWebKey& strangersKey() {
  static const auto key = JsonWebKey::makePair("provider");
  return key;
}

inline std::string keySetOf(const std::vector<JsonWebKey>& keys) {
  boost::json::array list;
  for (const auto& key : keys) list.push_back(boost::json::parse(key.publicJson()));
  return boost::json::serialize(boost::json::object{{"keys", list}});
}

/// What a provider says of somebody; a claim can be changed, or left out by a null.
struct Claims {
  boost::json::object values;

  explicit Claims(Moment now)
      : values{{"iss", "https://issuer"},
               {"aud", "our-client"},
               {"sub", "ada"},
               {"email", "ada@example.org"},
               {"name", "Ada"},
               {"picture", "https://pictures/ada"},
               {"iat", now.time_since_epoch().count()},
               {"exp", now.time_since_epoch().count() + 3600}} {}

  Claims with(std::string_view name, boost::json::value value) const {
    Claims changed = *this;
    if (value.is_null())
      changed.values.erase(name);
    else
      changed.values[name] = std::move(value);
    return changed;
  }
  std::string text() const { return boost::json::serialize(values); }
};

inline std::string unsignedToken(std::string_view head, std::string_view payload) {
  return base64url(head) + "." + base64url(payload) + ".";
}

/// The old trick: the provider's public key, which everybody has, as the secret of a symmetric
/// signature.
inline std::string symmetricToken(std::string_view payload, const std::string& secret) {
  const auto signedPart =
      base64url(R"({"alg":"HS256","kid":"provider"})") + "." + base64url(payload);
  unsigned char hash[EVP_MAX_MD_SIZE];
  unsigned length = 0;
  HMAC(EVP_sha256(), secret.data(), static_cast<int>(secret.size()),
       reinterpret_cast<const unsigned char*>(signedPart.data()), signedPart.size(), hash, &length);
  return signedPart + "." + base64url({reinterpret_cast<const char*>(hash), length});
}

}  // namespace vemo::service
