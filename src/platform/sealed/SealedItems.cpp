#include "platform/sealed/SealedItems.h"

#include <sodium.h>

#include <QCborMap>
#include <QCborValue>
#include <algorithm>
#include <cassert>

namespace vemo {

namespace {

constexpr QByteArrayView magic("VemoSeal\x01", 9);
constexpr qsizetype headSize = magic.size() + crypto_secretbox_NONCEBYTES;

static_assert(std::tuple_size_v<SealingKey> == crypto_secretbox_KEYBYTES);
static_assert(crypto_secretbox_KEYBYTES == crypto_generichash_KEYBYTES);

unsigned char* bytesOf(QByteArray& array) {
  return reinterpret_cast<unsigned char*>(array.data());
}
const unsigned char* bytesOf(const QByteArray& array) {
  return reinterpret_cast<const unsigned char*>(array.constData());
}

/// The library may be used from any thread once this has run.
void prepare() {
  [[maybe_unused]] static const int outcome = sodium_init();
  assert(outcome >= 0);
}

void wipe(QByteArray& content) {
  sodium_memzero(content.data(), static_cast<std::size_t>(content.size()));
}

}  // namespace

std::optional<SealingKey> deriveSealingKey(const QByteArray& randomKey, const QByteArray& machine) {
  prepare();
  if (randomKey.size() != crypto_generichash_KEYBYTES) return std::nullopt;
  const QByteArray text = "vemo sealed secrets 1\n" + machine;
  SealingKey key;
  crypto_generichash(key.data(), key.size(), bytesOf(text),
                     static_cast<unsigned long long>(text.size()), bytesOf(randomKey),
                     static_cast<std::size_t>(randomKey.size()));
  return key;
}

QByteArray makeRandomKey() {
  prepare();
  QByteArray key(crypto_generichash_KEYBYTES, Qt::Uninitialized);
  randombytes_buf(key.data(), static_cast<std::size_t>(key.size()));
  return key;
}

QByteArray seal(const SealedItems& items, const SealingKey& key) {
  prepare();
  QByteArray content = encodeItems(items);
  QByteArray sealed(headSize + crypto_secretbox_MACBYTES + content.size(), Qt::Uninitialized);
  std::ranges::copy(magic, sealed.begin());
  unsigned char* nonce = bytesOf(sealed) + magic.size();
  randombytes_buf(nonce, crypto_secretbox_NONCEBYTES);
  crypto_secretbox_easy(bytesOf(sealed) + headSize, bytesOf(content),
                        static_cast<unsigned long long>(content.size()), nonce, key.data());
  wipe(content);
  return sealed;
}

std::optional<SealedItems> unseal(const QByteArray& sealed, const SealingKey& key) {
  prepare();
  const qsizetype boxSize = sealed.size() - headSize;
  if (boxSize < qsizetype{crypto_secretbox_MACBYTES} || !sealed.startsWith(magic))
    return std::nullopt;
  QByteArray content(boxSize - crypto_secretbox_MACBYTES, Qt::Uninitialized);
  if (crypto_secretbox_open_easy(bytesOf(content), bytesOf(sealed) + headSize,
                                 static_cast<unsigned long long>(boxSize),
                                 bytesOf(sealed) + magic.size(), key.data()) != 0)
    return std::nullopt;
  auto items = decodeItems(content);
  wipe(content);
  return items;
}

QByteArray encodeItems(const SealedItems& items) {
  std::map<QString, QCborMap> services;
  for (const auto& [name, secret] : items) services[name.first].insert(name.second, secret);
  QCborMap content;
  for (const auto& [service, accounts] : services) content.insert(service, accounts);
  return QCborValue(content).toCbor();
}

std::optional<SealedItems> decodeItems(const QByteArray& content) {
  QCborParserError error;
  const QCborValue value = QCborValue::fromCbor(content, &error);
  if (error.error != QCborError::NoError || error.offset != content.size() || !value.isMap())
    return std::nullopt;
  SealedItems items;
  for (const auto [service, accounts] : value.toMap()) {
    if (!service.isString() || !accounts.isMap()) return std::nullopt;
    for (const auto [account, secret] : accounts.toMap()) {
      if (!account.isString() || !secret.isByteArray()) return std::nullopt;
      items[{service.toString(), account.toString()}] = secret.toByteArray();
    }
  }
  return items;
}

}  // namespace vemo
