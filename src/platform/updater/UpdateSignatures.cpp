#include "platform/updater/UpdateSignatures.h"

#include <sodium.h>

namespace vemo {

namespace {

const QByteArray feedName = "vemo feed\n";
const QByteArray rotationName = "vemo key ";
const QByteArray trailerStart = "<!-- vemo-signature: ";
const QByteArray trailerEnd = " -->\n";

unsigned char* bytes(QByteArray& data) {
  return reinterpret_cast<unsigned char*>(data.data());
}
const unsigned char* bytes(const QByteArray& data) {
  return reinterpret_cast<const unsigned char*>(data.constData());
}

QByteArray signatureOf(const QByteArray& message, const QByteArray& secretKey) {
  QByteArray signature(crypto_sign_BYTES, '\0');
  crypto_sign_detached(bytes(signature), nullptr, bytes(message),
                       static_cast<unsigned long long>(message.size()), bytes(secretKey));
  return signature;
}

bool isSigned(const QByteArray& message, const QByteArray& signature, const QByteArray& key) {
  return signature.size() == crypto_sign_BYTES && key.size() == crypto_sign_PUBLICKEYBYTES &&
         crypto_sign_verify_detached(bytes(signature), bytes(message),
                                     static_cast<unsigned long long>(message.size()),
                                     bytes(key)) == 0;
}

std::optional<QByteArray> decoded(const QByteArray& base64, qsizetype size) {
  auto result = QByteArray::fromBase64Encoding(base64, QByteArray::AbortOnBase64DecodingErrors);
  if (!result || result.decoded.size() != size) return std::nullopt;
  return std::move(result.decoded);
}

/// The archive is read in pieces: it needs no place in memory.
crypto_sign_state digestOf(QIODevice& archive) {
  constexpr qint64 pieceSize = 256 * 1024;
  crypto_sign_state state;
  crypto_sign_init(&state);
  for (QByteArray piece = archive.read(pieceSize); !piece.isEmpty();
       piece = archive.read(pieceSize))
    crypto_sign_update(&state, bytes(piece), static_cast<unsigned long long>(piece.size()));
  return state;
}

}  // namespace

SigningKeys SigningKeys::generate() {
  SigningKeys keys{QByteArray(crypto_sign_PUBLICKEYBYTES, '\0'),
                   QByteArray(crypto_sign_SECRETKEYBYTES, '\0')};
  crypto_sign_keypair(bytes(keys.publicKey), bytes(keys.secretKey));
  return keys;
}

std::optional<QByteArray> publicKeyFrom(const QByteArray& base64) {
  return decoded(base64.trimmed(), crypto_sign_PUBLICKEYBYTES);
}

QByteArray signedFeed(const QByteArray& xml, const QByteArray& secretKey) {
  return xml + trailerStart + signatureOf(feedName + xml, secretKey).toBase64() + trailerEnd;
}

std::optional<QByteArray> verifiedFeed(const QByteArray& feed, const QByteArray& publicKey) {
  const qsizetype start = feed.lastIndexOf(trailerStart);
  if (start < 0 || !feed.endsWith(trailerEnd)) return std::nullopt;
  const qsizetype signatureStart = start + trailerStart.size();
  const qsizetype signatureSize = feed.size() - trailerEnd.size() - signatureStart;
  if (signatureSize < 0) return std::nullopt;
  const auto signature = decoded(feed.sliced(signatureStart, signatureSize), crypto_sign_BYTES);
  QByteArray xml = feed.first(start);
  if (!signature || !isSigned(feedName + xml, *signature, publicKey)) return std::nullopt;
  return xml;
}

QByteArray archiveSignature(QIODevice& archive, const QByteArray& secretKey) {
  QByteArray signature(crypto_sign_BYTES, '\0');
  crypto_sign_state state = digestOf(archive);
  crypto_sign_final_create(&state, bytes(signature), nullptr, bytes(secretKey));
  return signature;
}

bool isArchiveSigned(QIODevice& archive, const QByteArray& signature, const QByteArray& publicKey) {
  if (signature.size() != crypto_sign_BYTES || publicKey.size() != crypto_sign_PUBLICKEYBYTES)
    return false;
  crypto_sign_state state = digestOf(archive);
  return crypto_sign_final_verify(&state, bytes(signature), bytes(publicKey)) == 0;
}

QByteArray rotationLine(const QByteArray& next, const QByteArray& secretKey) {
  const QByteArray statement = rotationName + next.toBase64();
  return statement + ' ' + signatureOf(statement, secretKey).toBase64() + '\n';
}

QByteArray latestKey(const QByteArray& rotations, QByteArray trusted) {
  for (const QByteArray& line : rotations.split('\n')) {
    const qsizetype end = line.lastIndexOf(' ');
    if (!line.startsWith(rotationName) || end < rotationName.size()) continue;
    const auto next = publicKeyFrom(line.sliced(rotationName.size(), end - rotationName.size()));
    const auto signature = decoded(line.sliced(end + 1), crypto_sign_BYTES);
    if (next && signature && isSigned(line.first(end), *signature, trusted)) trusted = *next;
  }
  return trusted;
}

}  // namespace vemo
