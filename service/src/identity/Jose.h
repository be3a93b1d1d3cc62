// Keys and signatures of JSON Web Tokens, RS256 and nothing else, over libcjose.
//
// Values that may be shared between threads as long as nobody writes to them. Every function takes
// hostile bytes.
#pragma once

#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct _cjose_jwk_int;
struct _cjose_jws_int;

namespace vemo::service {

/// An RSA key of at least 2,048 bits: a public one as others publish it, or a pair of one's own.
class JsonWebKey {
 public:
  /// None for a key of another kind, size or use.
  static std::optional<JsonWebKey> read(std::string_view json);
  /// Takes a moment: a new pair of 2,048 bits.
  static JsonWebKey makePair(const std::string& identifier);

  const std::string& identifier() const { return m_identifier; }  ///< empty when it has none
  std::string publicJson() const;
  std::string privateJson() const;

  /// A compact signed token with this payload.
  std::string sign(const std::string& payload) const;

 private:
  friend class SignedToken;
  using Handle = std::shared_ptr<_cjose_jwk_int>;

  JsonWebKey(Handle handle, std::string identifier)
      : m_handle(std::move(handle)), m_identifier(std::move(identifier)) {}

  Handle m_handle;
  std::string m_identifier;
};

/// The usable keys of a published key set, which may hold others beside them. None when the text is
/// no key set.
std::optional<std::vector<JsonWebKey>> readKeySet(std::string_view json);

/// A token taken apart, with its signature still to be checked.
class SignedToken {
 public:
  enum class Problem {
    Malformed,  ///< not three parts of base64url with a JSON head, or too long
    Algorithm,  ///< not RS256, or with an extension that must be understood
  };

  static constexpr std::size_t largest = 16 * 1024;

  static std::expected<SignedToken, Problem> read(const std::string& compact);

  const std::string& keyIdentifier() const { return m_keyIdentifier; }  ///< empty when absent
  /// The payload, only when `key` has signed it.
  std::optional<std::string> payload(const JsonWebKey& key) const;

 private:
  std::shared_ptr<_cjose_jws_int> m_handle;
  std::string m_keyIdentifier;
};

}  // namespace vemo::service
