// What is signed for updates, and how it is checked: feeds, archives and the change of a key.
//
// Ed25519 throughout. Each kind of text is signed under a name of its own, so that no signature
// holds for another kind. Plain functions; any thread.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <expected>
#include <optional>

namespace vemo {

struct SigningKeys {
  QByteArray publicKey;  ///< 32 bytes
  QByteArray secretKey;  ///< 64 bytes

  static SigningKeys generate();
};

/// The 32 bytes of a key in base64.
std::optional<QByteArray> publicKeyFrom(const QByteArray& base64);

/// The feed with its signature in a last line of its own, so that one never comes without the
/// other.
QByteArray signedFeed(const QByteArray& xml, const QByteArray& secretKey);

/// What was signed; nothing unless the last line is the signature of all before it.
std::optional<QByteArray> verifiedFeed(const QByteArray& feed, const QByteArray& publicKey);

/// Reads from the device to its end.
QByteArray archiveSignature(QIODevice& archive, const QByteArray& secretKey);
bool isArchiveSigned(QIODevice& archive, const QByteArray& signature, const QByteArray& publicKey);

/// The key in force: the one that the program was built for is number 0, each later one is signed
/// by the one before it.
struct TrustedKey {
  std::uint32_t number = 0;
  QByteArray key;

  friend bool operator==(const TrustedKey&, const TrustedKey&) = default;
};

/// The line that makes `next` the successor of the key that signs it.
QByteArray rotationLine(std::uint32_t number, const QByteArray& next, const QByteArray& secretKey);

/// Follows the lines of a rotation file as far as each is signed by the key before it.
TrustedKey latestKey(const QByteArray& rotations, TrustedKey trusted);

}  // namespace vemo
