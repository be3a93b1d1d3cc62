// Secrets in a file that is sealed to this user and this machine, for desktops without a keyring.
//
// Two files of mode 0600 in a folder of its own: `key`, 32 random bytes, and `sealed`, the secrets
// in a box whose key is made of that one and the machine's identity. So a copy of the sealed file,
// or of the whole folder on another machine, tells nothing; whoever can read both files here can
// open them. Better than plain text, weaker than a keyring that a password locks.
//
// Any thread. A file that isn't what was written here, or not the user's alone, is Failed for
// find() and remove(), and is told once; add() begins anew in its place. Without a folder or an
// identity of the machine: Unavailable.
#pragma once

#include <functional>
#include <mutex>
#include <optional>

#include "platform/sealed/OwnFile.h"
#include "platform/sealed/SealedItems.h"
#include "ports/SecretBackend.h"

namespace vemo {

class SealedSecretBackend : public SecretBackend {
 public:
  /// Takes one line about a file that can't be used; called on the thread of the operation.
  using Tell = std::function<void(QString)>;

  /// `machine` is what identifies this machine and no other.
  SealedSecretBackend(const QString& folder, QByteArray machine, Tell tell);

  std::expected<QByteArray, SecretError> find(const QString& service,
                                              const QString& account) override;
  std::expected<void, SecretError> add(const QString& service, const QString& account,
                                       const QByteArray& secret) override;
  std::expected<void, SecretError> remove(const QString& service, const QString& account) override;

 private:
  struct Opened {
    SealingKey key;
    SealedItems items;
  };

  bool isUsable() const { return !m_folder.isEmpty() && !m_machine.isEmpty(); }
  /// What the files hold; Missing when there is no sealed file.
  std::expected<Opened, FileTrouble> open() const;
  std::expected<SealingKey, FileTrouble> readKey() const;
  std::expected<SealingKey, FileTrouble> makeKey() const;
  std::expected<void, FileTrouble> write(const Opened& content) const;
  SecretError told(FileTrouble trouble);

  const QByteArray m_folder;
  const QByteArray m_keyFile;
  const QByteArray m_sealedFile;
  const QByteArray m_machine;
  const Tell m_tell;
  std::mutex m_mutex;
  std::optional<FileTrouble> m_lastTold;
};

}  // namespace vemo
