#include "http/RequestKey.h"

#include <openssl/evp.h>

#include <cstdint>
#include <cstring>
#include <memory>
#include <new>

namespace vemo::service {

RequestKey requestKey(std::initializer_list<std::string_view> parts) {
  const std::unique_ptr<EVP_MD_CTX, decltype(&EVP_MD_CTX_free)> hash(EVP_MD_CTX_new(),
                                                                     &EVP_MD_CTX_free);
  RequestKey key;
  bool good = hash && EVP_DigestInit_ex(hash.get(), EVP_sha256(), nullptr) == 1;
  for (const auto part : parts) {
    const std::uint64_t length = part.size();
    good = good && EVP_DigestUpdate(hash.get(), &length, sizeof length) == 1 &&
           EVP_DigestUpdate(hash.get(), part.data(), part.size()) == 1;
  }
  // Memory is all that it can lack.
  if (!good || EVP_DigestFinal_ex(hash.get(), key.data(), nullptr) != 1) throw std::bad_alloc();
  return key;
}

std::size_t RequestKeyHash::operator()(const RequestKey& key) const {
  std::size_t hash = 0;
  std::memcpy(&hash, key.data(), sizeof hash);
  return hash;
}

}  // namespace vemo::service
