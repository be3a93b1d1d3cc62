#include "account/AccountRecords.h"

#include <QJsonArray>

#include "base/Json.h"
#include "base/JsonRecord.h"

namespace vemo {

namespace {

/// Reads the body with `read`, which takes what it needs from the record; nothing when a field
/// isn't what it must be.
template <typename Read>
auto decode(const QByteArray& body, Read read)
    -> std::optional<decltype(read(std::declval<JsonRecord&>()))> {
  const auto object = parseJsonObject(body);
  if (!object) return std::nullopt;
  JsonRecord record(*object);
  auto result = read(record);
  return record.isSound() ? std::optional(std::move(result)) : std::nullopt;
}

/// The records of an array, or nothing when one of them is unsound.
template <typename T>
std::optional<std::vector<T>> decodeAll(const QJsonArray& array, T (*read)(JsonRecord&)) {
  std::vector<T> records;
  for (const QJsonValue& element : array) {
    JsonRecord record(element);
    records.push_back(read(record));
    if (!record.isSound()) return std::nullopt;
  }
  return records;
}

AuthUser authUserIn(JsonRecord& record) {
  return {.id = record.string(u"id"),
          .email = record.string(u"email"),
          .name = record.string(u"name"),
          .avatarUrl = record.string(u"avatarUrl")};
}

UserConsumption consumptionIn(JsonRecord& record) {
  return {.totalWordsTranscribed = record.integer(u"totalWordsTranscribed"),
          .currentCycleWordsTranscribed = record.integer(u"currentCycleWordsTranscribed"),
          .totalMinutesTranscribed = record.number(u"totalMinutesTranscribed"),
          .totalAiTokensUsed = record.integer(u"totalAiTokensUsed"),
          .totalUtterances = record.integer(u"totalUtterances"),
          .totalRequests = record.integer(u"totalRequests"),
          .lastActiveAt = record.string(u"lastActiveAt"),
          .lastActiveDate = record.string(u"lastActiveDate")};
}

LanguageDto languageIn(JsonRecord& record) {
  return {.name = record.requiredString(u"name"), .code = record.requiredString(u"code")};
}

DictionaryItemDto dictionaryItemIn(JsonRecord& record) {
  return {.id = record.requiredString(u"id"),
          .phrase = record.requiredString(u"phrase"),
          .replacement = record.requiredString(u"replacement")};
}

}  // namespace

std::optional<AuthSuccess> decodeAuthSuccess(const QByteArray& body) {
  const auto object = parseJsonObject(body);
  if (!object) return std::nullopt;
  JsonRecord record(*object);
  AuthSuccess success{.token = record.requiredString(u"token"), .user = {}};
  JsonRecord user(record.requiredObject(u"user"));
  success.user = authUserIn(user);
  return record.isSound() && user.isSound() ? std::optional(success) : std::nullopt;
}

std::optional<QString> decodeAuthError(const QByteArray& body) {
  return decode(body, [](JsonRecord& record) { return record.requiredString(u"error"); });
}

std::optional<UserProfile> decodeProfileResponse(const QByteArray& body) {
  const auto object = parseJsonObject(body);
  if (!object) return std::nullopt;
  JsonRecord record(*object);
  record.requiredString(u"status");
  JsonRecord user(record.requiredObject(u"user"));
  JsonRecord consumption(user.object(u"consumption").value_or(QJsonObject()));
  JsonRecord updates(user.object(u"updates").value_or(QJsonObject()));

  UserProfile profile{.user = authUserIn(user),
                      .consumption = consumptionIn(consumption),
                      .betaEligible = updates.boolean(u"betaEligible")};
  if (!user.object(u"consumption")) profile.consumption.reset();
  const bool isSound =
      record.isSound() && user.isSound() && consumption.isSound() && updates.isSound();
  return isSound ? std::optional(profile) : std::nullopt;
}

std::optional<std::vector<LanguageDto>> decodeLanguagesResponse(const QByteArray& body) {
  const auto array = decode(body, [](JsonRecord& record) {
    record.requiredString(u"status");
    return record.requiredArray(u"languages");
  });
  return array ? decodeAll(*array, languageIn) : std::nullopt;
}

std::optional<std::vector<DictionaryItemDto>> decodeDictionaryResponse(const QByteArray& body) {
  const auto array = decode(body, [](JsonRecord& record) {
    record.requiredString(u"status");
    return record.requiredArray(u"dictionary");
  });
  return array ? decodeAll(*array, dictionaryItemIn) : std::nullopt;
}

std::optional<DictionaryItemDto> decodeDictionaryAddResponse(const QByteArray& body) {
  const auto entry = decode(body, [](JsonRecord& record) {
    record.requiredString(u"status");
    return record.requiredObject(u"entry");
  });
  if (!entry) return std::nullopt;
  JsonRecord record(*entry);
  auto item = dictionaryItemIn(record);
  return record.isSound() ? std::optional(std::move(item)) : std::nullopt;
}

}  // namespace vemo
