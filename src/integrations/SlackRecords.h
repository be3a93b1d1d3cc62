// The people and channels of a Slack workspace, and how they are written: in Slack's answers and in
// the cache, a JSON array of records under the field names.
//
// Any thread. Readers take any bytes and give what they can make of them.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

namespace vemo {

struct SlackUser {
  QString id;
  QString name;  ///< the handle
  QString realName;
  QString displayName;
  bool isBot = false;

  friend bool operator==(const SlackUser&, const SlackUser&) = default;
};

struct SlackChannel {
  QString id;
  QString name;
  bool isPrivate = false;

  friend bool operator==(const SlackChannel&, const SlackChannel&) = default;
};

using SlackUsers = std::vector<SlackUser>;
using SlackChannels = std::vector<SlackChannel>;

// The cache. A record that lacks a field, or has one of another type, makes the whole array
// unreadable; fields of other names are ignored.
QByteArray encodeSlackUsers(const SlackUsers& users);
QByteArray encodeSlackChannels(const SlackChannels& channels);
std::optional<SlackUsers> decodeSlackUsers(const QByteArray& json);
std::optional<SlackChannels> decodeSlackChannels(const QByteArray& json);

// Slack's answers, in their order. What isn't the expected JSON holds nobody and nothing.

/// The team's name in the answer to auth.test.
std::optional<QString> teamNameIn(const QByteArray& answer);

/// The members in the answer to users.list who are there, have a handle and aren't Slack itself.
SlackUsers membersIn(const QByteArray& answer);

/// The channels in the answer to conversations.list that are in use and have a name.
SlackChannels channelsIn(const QByteArray& answer);

}  // namespace vemo
