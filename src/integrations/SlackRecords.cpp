#include "integrations/SlackRecords.h"

#include <concepts>
#include <utility>

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<bool> boolIn(const QJsonObject& object, QStringView key) {
  const auto value = object.value(key);
  if (!value.isBool()) return std::nullopt;
  return value.toBool();
}

std::optional<SlackUser> userFrom(const QJsonObject& record) {
  auto id = stringIn(record, u"id");
  auto name = stringIn(record, u"name");
  auto realName = stringIn(record, u"realName");
  auto displayName = stringIn(record, u"displayName");
  const auto isBot = boolIn(record, u"isBot");
  if (!id || !name || !realName || !displayName || !isBot) return std::nullopt;
  return SlackUser{*std::move(id), *std::move(name), *std::move(realName), *std::move(displayName),
                   *isBot};
}

std::optional<SlackChannel> channelFrom(const QJsonObject& record) {
  auto id = stringIn(record, u"id");
  auto name = stringIn(record, u"name");
  const auto isPrivate = boolIn(record, u"isPrivate");
  if (!id || !name || !isPrivate) return std::nullopt;
  return SlackChannel{*std::move(id), *std::move(name), *isPrivate};
}

/// All records of a cached array, or nothing when one of them can't be read.
template <typename Record>
std::optional<std::vector<Record>> decodeAll(const QByteArray& json,
                                             std::optional<Record> (*decode)(const QJsonObject&)) {
  const auto array = parseJsonArray(json);
  if (!array) return std::nullopt;
  std::vector<Record> records;
  records.reserve(static_cast<std::size_t>(array->size()));
  for (const QJsonValue value : *array) {
    auto record = value.isObject() ? decode(value.toObject()) : std::nullopt;
    if (!record) return std::nullopt;
    records.push_back(*std::move(record));
  }
  return records;
}

/// The objects under `key` of an answer. An array that holds anything else isn't the one expected.
std::vector<QJsonObject> objectsIn(const QByteArray& answer, QStringView key) {
  const auto object = parseJsonObject(answer);
  if (!object) return {};
  std::vector<QJsonObject> objects;
  for (const QJsonValue value : object->value(key).toArray()) {
    if (!value.isObject()) return {};
    objects.push_back(value.toObject());
  }
  return objects;
}

QString textIn(const QJsonObject& object, QStringView key) {
  return stringIn(object, key).value_or(QString());
}

bool isTrueIn(const QJsonObject& object, QStringView key) {
  return boolIn(object, key).value_or(false);
}

}  // namespace

QByteArray encodeSlackUsers(const SlackUsers& users) {
  QJsonArray array;
  for (const auto& user : users) {
    array.append(QJsonObject{{u"id"_s, user.id},
                             {u"name"_s, user.name},
                             {u"realName"_s, user.realName},
                             {u"displayName"_s, user.displayName},
                             {u"isBot"_s, user.isBot}});
  }
  return compactJson(array);
}

QByteArray encodeSlackChannels(const SlackChannels& channels) {
  QJsonArray array;
  for (const auto& channel : channels) {
    array.append(QJsonObject{
        {u"id"_s, channel.id}, {u"name"_s, channel.name}, {u"isPrivate"_s, channel.isPrivate}});
  }
  return compactJson(array);
}

std::optional<SlackUsers> decodeSlackUsers(const QByteArray& json) {
  return decodeAll<SlackUser>(json, userFrom);
}

std::optional<SlackChannels> decodeSlackChannels(const QByteArray& json) {
  return decodeAll<SlackChannel>(json, channelFrom);
}

std::optional<QString> teamNameIn(const QByteArray& answer) {
  const auto object = parseJsonObject(answer);
  return object ? stringIn(*object, u"team") : std::nullopt;
}

SlackUsers membersIn(const QByteArray& answer) {
  SlackUsers users;
  for (const auto& member : objectsIn(answer, u"members")) {
    if (isTrueIn(member, u"deleted")) continue;
    SlackUser user{.id = textIn(member, u"id"),
                   .name = textIn(member, u"name"),
                   .realName = textIn(member, u"real_name"),
                   .displayName = textIn(member.value(u"profile").toObject(), u"display_name"),
                   .isBot = isTrueIn(member, u"is_bot")};
    if (user.name.isEmpty() || user.id == u"USLACKBOT") continue;
    users.push_back(std::move(user));
  }
  return users;
}

SlackChannels channelsIn(const QByteArray& answer) {
  SlackChannels channels;
  for (const auto& conversation : objectsIn(answer, u"channels")) {
    if (isTrueIn(conversation, u"is_archived")) continue;
    SlackChannel channel{.id = textIn(conversation, u"id"),
                         .name = textIn(conversation, u"name"),
                         .isPrivate = isTrueIn(conversation, u"is_private")};
    if (channel.name.isEmpty()) continue;
    channels.push_back(std::move(channel));
  }
  return channels;
}

}  // namespace vemo
