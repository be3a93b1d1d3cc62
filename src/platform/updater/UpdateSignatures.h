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

/// The line that makes `next` the successor of the key that signs it.
QByteArray rotationLine(const QByteArray& next, const QByteArray& secretKey);

/// The key in force, of which `trusted` is the present one or one before it: follows those lines of
/// a rotation file that are signed by the key before, from wherever in the chain that stands.
QByteArray latestKey(const QByteArray& rotations, QByteArray trusted);

}  // namespace vemo
