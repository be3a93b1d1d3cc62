#include "accounts/Secrets.h"

#include <cjose/base64.h>
#include <openssl/crypto.h>
#include <openssl/rand.h>
#include <openssl/sha.h>

#include <array>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <new>
#include <span>
#include <stdexcept>

namespace vemo::service {

namespace {

std::string base64url(std::span<const unsigned char> bytes) {
  char* text = nullptr;
  std::size_t length = 0;
  if (!cjose_base64url_encode(bytes.data(), bytes.size(), &text, &length, nullptr))
    throw std::bad_alloc();
  const std::unique_ptr<char, decltype(&std::free)> owner(text, &std::free);
  return {text, length};
}

void fillRandom(std::span<unsigned char> bytes) {
  if (RAND_bytes(bytes.data(), static_cast<int>(bytes.size())) != 1)
    throw std::runtime_error("the system gives no random numbers");
}

}  // namespace

std::string randomSecret() {
  std::array<unsigned char, 32> bytes;
  fillRandom(bytes);
  return base64url(bytes);
}

std::int64_t randomIdentifier() {
  std::array<unsigned char, sizeof(std::int64_t)> bytes;
  std::int64_t number = 0;
  do {
    fillRandom(bytes);
    std::memcpy(&number, bytes.data(), sizeof number);
    number &= INT64_MAX;
  } while (number == 0);
  return number;
}

std::string secretHash(std::string_view secret) {
  std::array<unsigned char, SHA256_DIGEST_LENGTH> hash;
  SHA256(reinterpret_cast<const unsigned char*>(secret.data()), secret.size(), hash.data());
  return base64url(hash);
}

bool equalSecrets(std::string_view left, std::string_view right) {
  return left.size() == right.size() && CRYPTO_memcmp(left.data(), right.data(), left.size()) == 0;
}

}  // namespace vemo::service
