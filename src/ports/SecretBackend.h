// A store for secrets, such as the desktop's keyring: items found by service and account.
//
// Any thread, synchronous. On a keyring that doesn't answer, a call takes no longer than 200 ms,
// and several in a row no longer than one; it is Failed then.
#pragma once

#include <QByteArray>
#include <QString>
#include <expected>

namespace vemo {

enum class SecretError {
  NotFound,     ///< no such item
  Unavailable,  ///< there is no such store on this desktop
  Failed,       ///< locked, refused, timed out, or broken
};

class SecretBackend {
 public:
  virtual ~SecretBackend() = default;

  virtual std::expected<QByteArray, SecretError> find(const QString& service,
                                                      const QString& account) = 0;
  /// Replaces an item of the same service and account.
  virtual std::expected<void, SecretError> add(const QString& service, const QString& account,
                                               const QByteArray& secret) = 0;
  virtual std::expected<void, SecretError> remove(const QString& service,
                                                  const QString& account) = 0;
};

}  // namespace vemo
