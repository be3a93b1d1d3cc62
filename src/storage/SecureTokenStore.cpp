#include "storage/SecureTokenStore.h"

#include <cassert>
#include <utility>

#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString& service() {
  static const QString name = u"brelmox.Vemo"_s;
  return name;
}

/// The numbers that log lines carry: those of Apple's Security framework for a missing item, a
/// store that this build can't use, and a store that doesn't work.
int osStatus(SecretError error) {
  switch (error) {
    case SecretError::NotFound:
      return -25300;
    case SecretError::Unavailable:
      return -34018;
    case SecretError::Failed:
      break;
  }
  return -25291;
}

std::optional<QString> usableText(const std::expected<QByteArray, SecretError>& secret) {
  if (!secret || secret->isEmpty() || !QByteArrayView(*secret).isValidUtf8()) return std::nullopt;
  return QString::fromUtf8(*secret);
}

}  // namespace

SecureTokenStore::SecureTokenStore(std::vector<SecretBackend*> backends, DebugLog& debugLog)
    : m_backends(std::move(backends)), m_debugLog(debugLog) {
  assert(!m_backends.empty());
}

std::optional<QString> SecureTokenStore::read(const QString& account) {
  {
    const std::lock_guard lock(m_mutex);
    if (const auto known = m_cache.find(account); known != m_cache.end()) return known->second;
  }
  std::optional<QString> value;
  for (SecretBackend* backend : m_backends) {
    const auto secret = backend->find(service(), account);
    value = usableText(secret);
    if (!value) continue;
    if (backend != m_backends.front()) promote(account, *secret, *backend);
    break;
  }
  // What a write or a removal has put there meanwhile is newer than what was found.
  const std::lock_guard lock(m_mutex);
  m_cache.try_emplace(account, value);
  return value;
}

void SecureTokenStore::promote(const QString& account, const QByteArray& secret,
                               SecretBackend& from) {
  const auto added = m_backends.front()->add(service(), account, secret);
  if (added) {
    from.remove(service(), account);
    m_debugLog(u"keychain: moved item into the data protection keychain"_s);
  } else if (added.error() != SecretError::Unavailable) {
    m_debugLog(u"keychain: promotion failed (OSStatus %1)"_s.arg(osStatus(added.error())));
  }
}

bool SecureTokenStore::write(const QString& value, const QString& account) {
  if (!value.isValidUtf16()) return false;
  remove(account);
  SecretError lastError = SecretError::Failed;
  for (SecretBackend* backend : m_backends) {
    const auto added = backend->add(service(), account, value.toUtf8());
    if (added) {
      remember(account, value);
      return true;
    }
    lastError = added.error();
  }
  m_debugLog(u"keychain: write failed for both backends (OSStatus %1)"_s.arg(osStatus(lastError)));
  return false;
}

bool SecureTokenStore::remove(const QString& account) {
  remember(account, std::nullopt);
  bool areAllWithoutIt = true;
  for (SecretBackend* backend : m_backends) {
    const auto removed = backend->remove(service(), account);
    if (!removed && removed.error() != SecretError::NotFound) areAllWithoutIt = false;
  }
  return areAllWithoutIt;
}

void SecureTokenStore::remember(const QString& account, std::optional<QString> value) {
  const std::lock_guard lock(m_mutex);
  m_cache.insert_or_assign(account, std::move(value));
}

}  // namespace vemo
