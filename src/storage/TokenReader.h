// Reads the tokens ahead, on a thread of its own, so that nobody waits for a keyring.
//
// From its construction on, the accounts read as absent until the first answer. A keyring that is
// locked or silent is asked again, at growing intervals and whenever something about it has
// changed, so that a user who unlocks it later is signed in without a restart; a removal that it
// didn't take is repeated the same way. When all is settled, nothing runs.
//
// Main thread. Made and owned beside the SecureTokenStore, which outlives it, as the backends do.
// The destructor ends the wait for a keyring at once. Nothing here fails.
#pragma once

#include <QString>
#include <stop_token>
#include <vector>

#include "base/Clock.h"
#include "base/Completion.h"
#include "base/Notifier.h"
#include "base/SerialQueue.h"
#include "base/TaskScope.h"
#include "ports/SecretBackend.h"

namespace vemo {

class SecureTokenStore;

class TokenReader {
 public:
  struct Neighbours {
    SecureTokenStore& tokens;
    std::vector<SecretBackend*> backends;  ///< those of the store, with more patience
    std::stop_source giveUp;               ///< ends a call that they are in
    MainThread& mainThread;
    Clock& clock;
  };

  /// Begins to read at once.
  TokenReader(Neighbours neighbours, std::vector<QString> accounts);
  ~TokenReader();

  /// An account reads for the first time, or differently than before.
  Notifier<QString> arrived;

  /// The keyring has come, gone, or been unlocked.
  void keyringChanged();
  /// A secret may have been written or removed. Costs nothing when the keyring took it.
  void secretsChanged();

  /// Blocks until the question under way has its answer.
  void waitUntilAnswered() { m_thread.waitUntilIdle(); }

 private:
  using News = std::vector<QString>;

  void askAgain(std::vector<QString> accounts);
  Completion<News> ask(std::vector<QString> accounts);
  Task<> followUp(Completion<News> answer, std::stop_token stop);
  enum class Which { Open, Unsettled };
  std::vector<QString> accountsThatAre(Which which) const;

  Neighbours m_with;
  const std::vector<QString> m_accounts;
  bool m_isAskedAgain = false;
  std::stop_source m_pause;
  StartedTask m_asking;
  TaskScope m_tasks;
  SerialQueue m_thread{"vemo.secrets"};  ///< ends first: it uses all of the above
};

}  // namespace vemo
