#include "storage/SecureTokenStore.h"

#include <cassert>
#include <ranges>
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

SecureTokenStore::Standing standingAfter(SecretError error) {
  switch (error) {
    case SecretError::NotFound:
      return SecureTokenStore::Standing::Settled;
    case SecretError::Unavailable:
      return SecureTokenStore::Standing::NoStore;
    case SecretError::Failed:
      break;
  }
  return SecureTokenStore::Standing::Open;
}

bool isWithoutIt(const std::expected<void, SecretError>& removed) {
  return removed || removed.error() == SecretError::NotFound;
}

}  // namespace

SecureTokenStore::SecureTokenStore(std::vector<SecretBackend*> backends, DebugLog& debugLog)
    : m_backends(std::move(backends)), m_debugLog(debugLog) {
  assert(!m_backends.empty());
}

std::optional<QString> SecureTokenStore::read(const QString& account) {
  {
    const std::lock_guard lock(m_mutex);
    if (const auto known = m_memory.find(account); known != m_memory.end())
      return known->second.value;
  }
  Found found = lookUp(account, m_backends);
  if (found.place && found.place != m_backends.front())
    found.standing = promote(account, *found.value, m_backends);
  // What a write or a removal has put there meanwhile is newer than what was found.
  const std::lock_guard lock(m_mutex);
  m_memory.try_emplace(account, Memory{.value = found.value, .standing = found.standing});
  return found.value;
}

SecureTokenStore::Found SecureTokenStore::lookUp(const QString& account, const Backends& backends) {
  Found found;
  for (SecretBackend* backend : backends) {
    const auto secret = backend->find(service(), account);
    if (backend == backends.front() && !secret) found.standing = standingAfter(secret.error());
    found.value = usableText(secret);
    if (!found.value) continue;
    found.place = backend;
    break;
  }
  return found;
}

/// How the first backend stands to the secret then.
SecureTokenStore::Standing SecureTokenStore::promote(const QString& account, const QString& value,
                                                     const Backends& backends) {
  const auto added = backends.front()->add(service(), account, value.toUtf8());
  if (added) {
    for (SecretBackend* backend : backends | std::views::drop(1))
      backend->remove(service(), account);
    m_debugLog(u"keychain: moved item into the data protection keychain"_s);
    return Standing::Settled;
  }
  if (added.error() != SecretError::Unavailable && isFirstRefusal(account))
    m_debugLog(u"keychain: promotion failed (OSStatus %1)"_s.arg(osStatus(added.error())));
  return standingAfter(added.error());
}

bool SecureTokenStore::isFirstRefusal(const QString& account) {
  const std::lock_guard lock(m_mutex);
  return m_refusals.insert(account).second;
}

bool SecureTokenStore::write(const QString& value, const QString& account) {
  if (!value.isValidUtf16()) return false;
  remove(account);
  SecretError lastError = SecretError::Failed;
  Standing standing = Standing::Settled;
  for (SecretBackend* backend : m_backends) {
    const bool isFirst = backend == m_backends.front();
    const auto added = backend->add(service(), account, value.toUtf8());
    if (!added) {
      lastError = added.error();
      if (isFirst) standing = standingAfter(lastError);
      continue;
    }
    remember(account, value);
    if (isFirst)
      settleRemoval(account, added);
    else
      setStanding(account, standing);
    return true;
  }
  m_debugLog(u"keychain: write failed for both backends (OSStatus %1)"_s.arg(osStatus(lastError)));
  return false;
}

bool SecureTokenStore::remove(const QString& account) {
  remember(account, std::nullopt);
  bool areAllWithoutIt = true;
  for (SecretBackend* backend : m_backends) {
    const auto removed = backend->remove(service(), account);
    if (!isWithoutIt(removed)) areAllWithoutIt = false;
    if (backend == m_backends.front()) settleRemoval(account, removed);
  }
  return areAllWithoutIt;
}

void SecureTokenStore::expect(const QString& account) {
  const std::lock_guard lock(m_mutex);
  m_memory.try_emplace(account,
                       Memory{.value = {}, .isExpected = true, .standing = Standing::Open});
}

bool SecureTokenStore::isExpected(const QString& account) const {
  return memoryOf(account).isExpected;
}

SecureTokenStore::Standing SecureTokenStore::standing(const QString& account) const {
  return memoryOf(account).standing;
}

bool SecureTokenStore::refresh(const QString& account, const Backends& backends) {
  const Memory before = memoryOf(account);
  if (before.isRemovalOpen) {
    const bool isDone = finishRemoval(account, *backends.front(), before.changeCount);
    if (!isDone || !before.value) return false;
  }
  Found found = lookUp(account, backends);
  const bool isInFirst = found.place == backends.front();
  // What one that was locked has kept is older than what has been in use since.
  const bool isOutdated = isInFirst && before.value && found.value != before.value;
  if (isOutdated) found.value = before.value;
  bool isPromoted = false;
  // One that didn't answer would take nothing.
  if (found.standing == Standing::Settled && found.value && (!isInFirst || isOutdated)) {
    found.standing = promote(account, *found.value, backends);
    isPromoted = found.standing == Standing::Settled;
  }
  bool isNews = false;
  bool isOvertaken = false;
  {
    const std::lock_guard lock(m_mutex);
    Memory& memory = m_memory[account];
    isOvertaken = memory.changeCount != before.changeCount;
    isNews = std::exchange(memory.isExpected, false);
    if (!isOvertaken) {
      memory.standing = found.standing;
      isNews = isNews || (found.value && memory.value != found.value);
      if (found.value) memory.value = found.value;
    }
  }
  if (isOvertaken && isPromoted) bringInLine(account, *backends.front());
  return isNews;
}

/// Whether it's finished, and nothing has come in between.
bool SecureTokenStore::finishRemoval(const QString& account, SecretBackend& backend,
                                     unsigned changeCount) {
  const auto removed = backend.remove(service(), account);
  bool isOvertaken = false;
  {
    const std::lock_guard lock(m_mutex);
    isOvertaken = m_memory[account].changeCount != changeCount;
  }
  if (isOvertaken)
    bringInLine(account, backend);
  else
    settleRemoval(account, removed);
  return !isOvertaken && isWithoutIt(removed);
}

/// What was done here may have undone what a write or a removal did at the same time.
void SecureTokenStore::bringInLine(const QString& account, SecretBackend& backend) {
  const auto value = memoryOf(account).value;
  settleRemoval(account, value ? backend.add(service(), account, value->toUtf8())
                               : backend.remove(service(), account));
}

SecureTokenStore::Memory SecureTokenStore::memoryOf(const QString& account) const {
  const std::lock_guard lock(m_mutex);
  const auto known = m_memory.find(account);
  return known == m_memory.end() ? Memory() : known->second;
}

void SecureTokenStore::remember(const QString& account, std::optional<QString> value) {
  const std::lock_guard lock(m_mutex);
  Memory& memory = m_memory[account];
  memory.value = std::move(value);
  memory.isExpected = false;
  ++memory.changeCount;
}

void SecureTokenStore::settleRemoval(const QString& account,
                                     const std::expected<void, SecretError>& outcome) {
  const std::lock_guard lock(m_mutex);
  Memory& memory = m_memory[account];
  memory.isRemovalOpen = !isWithoutIt(outcome);
  memory.standing = outcome ? Standing::Settled : standingAfter(outcome.error());
}

void SecureTokenStore::setStanding(const QString& account, Standing standing) {
  const std::lock_guard lock(m_mutex);
  m_memory[account].standing = standing;
}

}  // namespace vemo
