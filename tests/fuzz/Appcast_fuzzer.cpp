// Whatever a server sends as a feed, a feed's signature, a key or a change of keys: it is read
// without harm, what isn't signed counts for nothing, and a feed that is taken can be written
// again.
#include "Fuzzing.h"
#include "platform/updater/Appcast.h"
#include "platform/updater/UpdateSignatures.h"

namespace {

using namespace vemo;

const SigningKeys& keys() {
  static const SigningKeys made = SigningKeys::generate();
  return made;
}

void readFeed(const QByteArray& xml) {
  const auto appcast = Appcast::read(xml);
  if (!appcast) return require(!appcast.error().isEmpty());
  require(appcast->serial > 0 && appcast->expires.isValid());
  for (const AppcastItem& item : appcast->items) {
    require(item.build > 0 && isPathInside(item.archive) && !item.archive.contains(u'/'));
    require(item.archiveSize > 0 && item.archiveSize <= Appcast::largestArchive);
    for (const AppcastFile& file : item.files)
      require(isPathInside(file.path) && file.size >= 0 && file.sha256.size() == 32);
  }
  const auto chosen = chooseUpdate(*appcast, {.newerThan = 1,
                                              .channels = {QStringLiteral("beta")},
                                              .systemVersion = QStringLiteral("12"),
                                              .architecture = QStringLiteral("x86_64")});
  require(!chosen || chosen->build > 1);
  const QByteArray written = appcast->write();
  if (const auto again = Appcast::read(written))
    require(again->items.size() == appcast->items.size());
}

void readSignatures(const QByteArray& bytes) {
  require(!verifiedFeed(bytes, keys().publicKey));
  require(!verifiedFeed(bytes, bytes.left(32)) || bytes.contains("vemo-signature"));
  require(verifiedFeed(signedFeed(bytes, keys().secretKey), keys().publicKey) == bytes);
  static const SigningKeys next = SigningKeys::generate();
  require(latestKey(bytes, keys().publicKey) == keys().publicKey);
  require(latestKey(bytes + '\n' + rotationLine(next.publicKey, keys().secretKey),
                    keys().publicKey) == next.publicKey);
  if (const auto key = publicKeyFrom(bytes)) require(key->size() == 32);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const QByteArray bytes = vemo::bytesOf(data, size);
  readFeed(bytes);
  readSignatures(bytes);
  return 0;
}
