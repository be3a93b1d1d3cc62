// The user's Slack workspace: reads its directory with the user's own token and keeps it for
// lookups without the network.
//
// There is one, made in the composition root. Observable: `changed` tells that a field may read
// differently. Main thread only. A sync is suspended, not blocked, at its three requests; meanwhile
// lookups see the directory as it stands, and each list is replaced in one piece. An answer far
// longer than a page should be is read on another thread. Requesting the stop of connect() ends the
// request under way, which counts as a failed one.
//
// Failures are words in lastSyncError(). An answer that isn't what it should be is no failure: it
// holds nobody. The token lives in the secure token store alone.
#pragma once

#include <QString>
#include <expected>
#include <optional>
#include <stop_token>

#include "base/Notifier.h"
#include "base/Task.h"
#include "integrations/SlackDirectory.h"
#include "storage/SettingsKeys.h"
#include "storage/StandardOutput.h"

namespace vemo {

class DebugLog;
class HttpSession;
class MainThread;
class SecureTokenStore;
class SerialQueue;
struct DeploymentConfiguration;
struct HttpError;

class SlackManager final : public MentionLookup {
 public:
  static constexpr keys::String legacyTokenKey = keys::slackApiToken;
  static constexpr keys::Data cacheKeyUsers = keys::slackCachedUsers;
  static constexpr keys::Data cacheKeyChannels = keys::slackCachedChannels;
  static constexpr keys::String cacheKeyWorkspace = keys::slackCachedWorkspace;

  /// Another thread, and the one to come back to.
  struct Reader {
    SerialQueue& queue;
    MainThread& mainThread;
  };

  /// What it works with; all of it outlives the manager.
  struct Neighbours {
    SecureTokenStore& tokens;
    Settings& settings;
    DebugLog& debugLog;
    HttpSession& session;
    const DeploymentConfiguration& configuration;
    std::optional<Reader> reader = {};  ///< of long answers; without one they are read at once
  };

  /// Brings an older version's token into the token store, and loads what the last sync has learnt.
  /// The token is looked for later, in tokenArrived(), when the token store expects it.
  explicit SlackManager(Neighbours neighbours);

  /// The token store has its first answer, or another one than before.
  void tokenArrived();

  bool isConnected() const { return m_isConnected; }
  const QString& workspaceName() const { return m_workspaceName; }
  const SlackUsers& users() const { return m_directory.users(); }
  const SlackChannels& channels() const { return m_directory.channels(); }
  bool isSyncing() const { return m_isSyncing; }
  const std::optional<QString>& lastSyncError() const { return m_lastSyncError; }

  Notifier<> changed;

  /// Keeps the token and reads the directory with it. True when all three requests were answered.
  Task<bool> connect(QString token, std::stop_token stop);

  /// Forgets the token and all that was learnt with it.
  void disconnect();

  std::optional<QString> resolveChannelMention(const QString& spoken) const override;
  std::optional<QString> resolveUserMention(const QString& spoken) const override;

 private:
  void migrateLegacyToken();
  void loadCache();
  void findToken();

  Task<bool> sync(std::stop_token stop);
  Task<std::optional<HttpError>> readWorkspace(QByteArray token, std::stop_token stop);
  Task<std::expected<QByteArray, HttpError>> call(QString method, QString query, QByteArray token,
                                                  std::stop_token stop);
  template <typename Read>
  Task<Read> readAnswer(QByteArray answer, Read (*read)(const QByteArray&));

  Neighbours m_with;
  const StandardOutput m_standardOutput;
  bool m_isConnected = false;
  QString m_workspaceName;
  SlackDirectory m_directory;
  bool m_isSyncing = false;
  std::optional<QString> m_lastSyncError;
};

}  // namespace vemo
