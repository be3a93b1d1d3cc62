#include "integrations/SlackManager.h"

#include <QUrlQuery>
#include <utility>

#include "base/RunElsewhere.h"
#include "base/Text.h"
#include "ports/HttpSession.h"
#include "storage/DebugLog.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto requestTimeout = 60s;

/// Far beyond the 500 members of a page, and still read in the blink of an eye.
constexpr qsizetype longestShortAnswer = 1024 * 1024;

const QString& tokenAccount() {
  static const QString account = QString::fromUtf16(slackApiTokenAccount);
  return account;
}

QUrl addressOf(const QUrl& base, const QString& method, const QString& query) {
  QString folder = base.path(QUrl::FullyEncoded);
  while (folder.endsWith(u'/')) folder.chop(1);
  QUrl address = base;
  address.setPath(folder + u'/' + method);
  if (!query.isEmpty()) address.setQuery(query);
  return address;
}

/// What an answer becomes: half of the directory, and what is kept of it for the next start.
template <typename Half>
struct Learnt {
  Half half;
  QByteArray cache;
};

Learnt<SlackDirectory::People> learnPeople(const QByteArray& answer) {
  SlackDirectory::People people(membersIn(answer));
  QByteArray cache = encodeSlackUsers(people.list);
  return {std::move(people), std::move(cache)};
}

Learnt<SlackDirectory::Rooms> learnRooms(const QByteArray& answer) {
  SlackDirectory::Rooms rooms(channelsIn(answer));
  QByteArray cache = encodeSlackChannels(rooms.list);
  return {std::move(rooms), std::move(cache)};
}

}  // namespace

SlackManager::SlackManager(Neighbours neighbours) : m_with(neighbours) {
  loadCache();
  if (!m_with.tokens.isExpected(tokenAccount())) findToken();
}

void SlackManager::tokenArrived() {
  findToken();
  changed.notify();
}

void SlackManager::migrateLegacyToken() {
  const QString legacyToken = m_with.settings.get(legacyTokenKey, QString());
  if (legacyToken.isEmpty()) return;
  if (m_with.tokens.read(tokenAccount())) {
    m_with.settings.remove(legacyTokenKey);
    m_with.debugLog(u"slack: dropped legacy token — Keychain already holds one"_s);
  } else if (m_with.tokens.write(legacyToken, tokenAccount())) {
    m_with.settings.remove(legacyTokenKey);
    m_with.debugLog(u"slack: migrated legacy UserDefaults token into the Keychain"_s);
  } else {
    m_with.debugLog(u"slack: keychain write FAILED — keeping legacy token for retry"_s);
  }
}

void SlackManager::loadCache() {
  const Settings& settings = m_with.settings;
  m_workspaceName = settings.get(cacheKeyWorkspace, QString());
  m_directory = SlackDirectory(
      decodeSlackUsers(settings.get(cacheKeyUsers, QByteArray())).value_or(SlackUsers()),
      decodeSlackChannels(settings.get(cacheKeyChannels, QByteArray())).value_or(SlackChannels()));
}

void SlackManager::findToken() {
  migrateLegacyToken();
  const QString token = m_with.tokens.read(tokenAccount()).value_or(QString());
  const bool knowsAnything = !users().empty() || !channels().empty() || !m_workspaceName.isEmpty();
  m_isConnected = !token.isEmpty() && knowsAnything;
}

Task<bool> SlackManager::connect(QString token, std::stop_token stop) {
  const QString wanted = trimmed(token);
  if (wanted.isEmpty()) co_return false;
  if (!m_with.tokens.write(wanted, tokenAccount())) {
    m_lastSyncError = u"Couldn't save the Slack token to the Keychain"_s;
    changed.notify();
    co_return false;
  }
  co_return co_await sync(std::move(stop));
}

Task<bool> SlackManager::sync(std::stop_token stop) {
  const QString token = m_with.tokens.read(tokenAccount()).value_or(QString());
  if (token.isEmpty()) co_return false;
  m_isSyncing = true;
  m_lastSyncError.reset();
  changed.notify();

  const auto error = co_await readWorkspace(token.toUtf8(), std::move(stop));
  if (!error) {
    m_isConnected = true;
    m_standardOutput.write(
        u"[Vemo Slack] 🚀 Synced Slack: %1 members, %2 channels\n"_s.arg(users().size())
            .arg(channels().size())
            .toUtf8());
  } else {
    m_standardOutput.write((u"[Vemo Slack] Sync error: "_s + error->description + u'\n').toUtf8());
    m_lastSyncError = error->description;
  }
  m_isSyncing = false;
  changed.notify();
  co_return !error;
}

/// The three requests; gives what went wrong. What one of them has brought stays, whatever becomes
/// of the next.
Task<std::optional<HttpError>> SlackManager::readWorkspace(QByteArray token, std::stop_token stop) {
  const auto team = co_await call(u"auth.test"_s, {}, token, stop);
  if (!team) co_return team.error();
  if (const auto name = teamNameIn(*team)) {
    m_workspaceName = *name;
    m_with.settings.set(cacheKeyWorkspace, *name);
    changed.notify();
  }

  const auto members = co_await call(u"users.list"_s, u"limit=500"_s, token, stop);
  if (!members) co_return members.error();
  auto people = co_await readAnswer(*members, learnPeople);
  m_directory.replace(std::move(people.half));
  m_with.settings.set(cacheKeyUsers, people.cache);
  changed.notify();

  const auto conversations = co_await call(
      u"conversations.list"_s, u"types=public_channel,private_channel&limit=500"_s, token, stop);
  if (!conversations) co_return conversations.error();
  auto rooms = co_await readAnswer(*conversations, learnRooms);
  m_directory.replace(std::move(rooms.half));
  m_with.settings.set(cacheKeyChannels, rooms.cache);
  changed.notify();
  co_return std::nullopt;
}

/// The body of the answer, whatever its status.
Task<std::expected<QByteArray, HttpError>> SlackManager::call(QString method, QString query,
                                                              QByteArray token,
                                                              std::stop_token stop) {
  const HttpRequest request{.method = "GET"_ba,
                            .url = addressOf(m_with.configuration.slackApiBaseURL, method, query),
                            .headers = {{"Authorization"_ba, "Bearer " + token}},
                            .body = {},
                            .timeout = requestTimeout};
  auto answer = co_await m_with.session.send(request, std::move(stop));
  if (!answer) co_return std::unexpected(answer.error());
  co_return std::move(answer->body);
}

template <typename Read>
Task<Read> SlackManager::readAnswer(QByteArray answer, Read (*read)(const QByteArray&)) {
  if (!m_with.reader || answer.size() <= longestShortAnswer) co_return read(answer);
  const auto reading = runElsewhere<Read>(m_with.reader->queue, m_with.reader->mainThread,
                                          [answer, read] { return read(answer); });
  auto learnt = co_await reading;
  co_return learnt;
}

void SlackManager::disconnect() {
  m_with.tokens.remove(tokenAccount());
  m_with.settings.remove(legacyTokenKey);
  m_with.settings.remove(cacheKeyUsers);
  m_with.settings.remove(cacheKeyChannels);
  m_with.settings.remove(cacheKeyWorkspace);
  m_directory = {};
  m_workspaceName.clear();
  m_isConnected = false;
  changed.notify();
}

std::optional<QString> SlackManager::resolveChannelMention(const QString& spoken) const {
  return m_directory.resolveChannelMention(spoken);
}

std::optional<QString> SlackManager::resolveUserMention(const QString& spoken) const {
  return m_directory.resolveUserMention(spoken);
}

}  // namespace vemo
