// A secret store in memory that a test can fill, break and watch.
#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <utility>
#include <vector>

#include "ports/SecretBackend.h"

namespace vemo {

class FakeSecretBackend : public SecretBackend {
 public:
  using Item = std::pair<QString, QString>;  ///< service and account

  std::map<Item, QByteArray> items;

  /// While set, the operation changes nothing and answers this.
  std::optional<SecretError> findFailure;
  std::optional<SecretError> addFailure;
  std::optional<SecretError> removeFailure;

  /// Runs inside find(), after it has looked and before it answers.
  std::function<void()> onFound;
  /// The same inside remove().
  std::function<void()> onRemoved;

  /// "find SERVICE ACCOUNT" and so on, in order. Secrets are not among it.
  std::vector<QString> calls;

  void failEverythingWith(std::optional<SecretError> error) {
    findFailure = addFailure = removeFailure = error;
  }

  std::expected<QByteArray, SecretError> find(const QString& service,
                                              const QString& account) override {
    auto answer = look({service, account});
    if (const auto hook = onFound) hook();
    return answer;
  }

  std::expected<void, SecretError> add(const QString& service, const QString& account,
                                       const QByteArray& secret) override {
    const std::lock_guard lock(m_mutex);
    record("add", {service, account});
    if (addFailure) return std::unexpected(*addFailure);
    items[{service, account}] = secret;
    return {};
  }

  std::expected<void, SecretError> remove(const QString& service, const QString& account) override {
    const auto answer = erase({service, account});
    if (const auto hook = onRemoved) hook();
    return answer;
  }

 private:
  std::expected<QByteArray, SecretError> look(const Item& item) {
    const std::lock_guard lock(m_mutex);
    record("find", item);
    if (findFailure) return std::unexpected(*findFailure);
    const auto found = items.find(item);
    if (found == items.end()) return std::unexpected(SecretError::NotFound);
    return found->second;
  }

  std::expected<void, SecretError> erase(const Item& item) {
    const std::lock_guard lock(m_mutex);
    record("remove", item);
    if (removeFailure) return std::unexpected(*removeFailure);
    if (items.erase(item) == 0) return std::unexpected(SecretError::NotFound);
    return {};
  }

  void record(const char* operation, const Item& item) {
    calls.push_back(QString::fromLatin1(operation) + u' ' + item.first + u' ' + item.second);
  }

  std::mutex m_mutex;
};

}  // namespace vemo
