// Secrets by service and account, and the sealed form that they have on disk:
//
//   "VemoSeal" 1   nonce (24 bytes)   secretbox of a CBOR map: service to (account to bytes)
//
// Whoever changes a byte of it has a file that can't be opened. Any thread; any bytes may come in.
#pragma once

#include <QByteArray>
#include <QString>
#include <array>
#include <map>
#include <optional>
#include <utility>

namespace vemo {

/// Service and account, and the secret.
using SealedItems = std::map<std::pair<QString, QString>, QByteArray>;

using SealingKey = std::array<unsigned char, 32>;

inline constexpr qsizetype maximumSealedSize = 1024 * 1024;

/// The key that a random one of 32 bytes becomes on this machine; nothing when it has another size.
std::optional<SealingKey> deriveSealingKey(const QByteArray& randomKey, const QByteArray& machine);

/// A random key of 32 bytes.
QByteArray makeRandomKey();

QByteArray seal(const SealedItems& items, const SealingKey& key);

/// Nothing when the bytes weren't sealed with this key, or were changed since.
std::optional<SealedItems> unseal(const QByteArray& sealed, const SealingKey& key);

/// The content of the box, before it is sealed.
QByteArray encodeItems(const SealedItems& items);
std::optional<SealedItems> decodeItems(const QByteArray& content);

}  // namespace vemo
