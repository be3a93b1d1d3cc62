#include "platform/sealed/SealedSecretBackend.h"

#include <QFile>
#include <utility>

namespace vemo {

namespace {

constexpr qsizetype keySize = 32;

}  // namespace

SealedSecretBackend::SealedSecretBackend(const QString& folder, QByteArray machine, Tell tell)
    : m_folder(QFile::encodeName(folder)),
      m_keyFile(m_folder + "/key"),
      m_sealedFile(m_folder + "/sealed"),
      m_machine(std::move(machine)),
      m_tell(std::move(tell)) {}

std::expected<QByteArray, SecretError> SealedSecretBackend::find(const QString& service,
                                                                 const QString& account) {
  if (!isUsable()) return std::unexpected(SecretError::Unavailable);
  const std::lock_guard lock(m_mutex);
  const auto opened = open();
  if (!opened) return std::unexpected(told(opened.error()));
  const auto item = opened->items.find({service, account});
  if (item == opened->items.end()) return std::unexpected(SecretError::NotFound);
  return item->second;
}

std::expected<void, SecretError> SealedSecretBackend::add(const QString& service,
                                                          const QString& account,
                                                          const QByteArray& secret) {
  if (!isUsable()) return std::unexpected(SecretError::Unavailable);
  const std::lock_guard lock(m_mutex);
  if (const auto made = makeOwnFolder(m_folder); !made) return std::unexpected(told(made.error()));
  auto content = open();
  if (!content) {
    // What can't be opened is of no use to anybody, and a key that others could read is none.
    if (content.error() != FileTrouble::Missing) told(content.error());
    auto key = readKey();
    if (!key) key = makeKey();
    if (!key) return std::unexpected(told(key.error()));
    content = Opened{*key, {}};
  }
  content->items[{service, account}] = secret;
  if (const auto written = write(*content); !written) return std::unexpected(told(written.error()));
  return {};
}

std::expected<void, SecretError> SealedSecretBackend::remove(const QString& service,
                                                             const QString& account) {
  if (!isUsable()) return std::unexpected(SecretError::Unavailable);
  const std::lock_guard lock(m_mutex);
  auto content = open();
  if (!content) return std::unexpected(told(content.error()));
  if (content->items.erase({service, account}) == 0) return std::unexpected(SecretError::NotFound);
  const auto written = content->items.empty() ? removeOwnFile(m_sealedFile) : write(*content);
  if (!written) return std::unexpected(told(written.error()));
  return {};
}

std::expected<SealedSecretBackend::Opened, FileTrouble> SealedSecretBackend::open() const {
  const auto sealed = readOwnFile(m_sealedFile, maximumSealedSize);
  if (!sealed) return std::unexpected(sealed.error());
  const auto key = readKey();
  // A box without its key is damaged goods: there is something, and it can't be opened.
  if (!key) {
    return std::unexpected(key.error() == FileTrouble::Missing ? FileTrouble::Damaged
                                                               : key.error());
  }
  auto items = unseal(*sealed, *key);
  if (!items) return std::unexpected(FileTrouble::Damaged);
  return Opened{*key, *std::move(items)};
}

std::expected<SealingKey, FileTrouble> SealedSecretBackend::readKey() const {
  const auto bytes = readOwnFile(m_keyFile, keySize);
  if (!bytes) return std::unexpected(bytes.error());
  const auto key = deriveSealingKey(*bytes, m_machine);
  return key ? std::expected<SealingKey, FileTrouble>(*key) : std::unexpected(FileTrouble::Damaged);
}

std::expected<SealingKey, FileTrouble> SealedSecretBackend::makeKey() const {
  if (const auto made = replaceOwnFile(m_keyFile, makeRandomKey()); !made)
    return std::unexpected(made.error());
  return readKey();
}

std::expected<void, FileTrouble> SealedSecretBackend::write(const Opened& content) const {
  const QByteArray sealed = seal(content.items, content.key);
  if (sealed.size() > maximumSealedSize) return std::unexpected(FileTrouble::TooLarge);
  return replaceOwnFile(m_sealedFile, sealed);
}

SecretError SealedSecretBackend::told(FileTrouble trouble) {
  if (trouble == FileTrouble::Missing) return SecretError::NotFound;
  if (m_lastTold != trouble && m_tell)
    m_tell(QStringLiteral("sealed secrets: a file is %1").arg(QLatin1StringView(nameOf(trouble))));
  m_lastTold = trouble;
  return SecretError::Failed;
}

}  // namespace vemo
