#include "accounts/AccountAnswers.h"

#include <boost/json.hpp>
#include <ctime>

namespace vemo::service {

namespace {

namespace json = boost::json;

constexpr double millisecondsAMinute = 60'000;

Answer success(unsigned status, std::string_view name, json::value value) {
  return {.status = status,
          .body = json::serialize(json::object{{"status", "success"}, {name, std::move(value)}})};
}

void put(json::object& object, std::string_view name, const std::optional<std::string>& text) {
  if (text) object[name] = *text;
}

json::object userOf(const Account& account) {
  json::object user{{"id", std::to_string(account.id)}};
  put(user, "email", account.email);
  put(user, "name", account.name);
  put(user, "avatarUrl", account.avatar);
  return user;
}

/// "2026-03-09T12:00:00Z"
std::string written(Moment moment) {
  const std::time_t seconds = moment.time_since_epoch().count();
  std::tm parts = {};
  ::gmtime_r(&seconds, &parts);
  char text[32];
  return {text, std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%SZ", &parts)};
}

json::object consumptionOf(const UsageSums& usage) {
  json::object consumption{
      {"totalWordsTranscribed", usage.words},
      {"currentCycleWordsTranscribed", usage.cycleWords},
      {"totalMinutesTranscribed", static_cast<double>(usage.speech.count()) / millisecondsAMinute},
      {"totalAiTokensUsed", usage.aiTokens},
      {"totalUtterances", usage.utterances},
      {"totalRequests", usage.requests},
  };
  if (!usage.lastActive) return consumption;
  const auto time = written(*usage.lastActive);
  consumption["lastActiveAt"] = time;
  consumption["lastActiveDate"] = time.substr(0, time.find('T'));
  return consumption;
}

json::object objectOf(const DictionaryEntry& entry) {
  return {{"id", std::to_string(entry.id)},
          {"phrase", entry.phrase},
          {"replacement", entry.replacement}};
}

}  // namespace

Answer signInAnswer(const std::string& token, const Account& account) {
  return {.status = 200,
          .body = json::serialize(json::object{{"token", token}, {"user", userOf(account)}})};
}

Answer profileAnswer(const Account& account, const UsageSums& usage, BetaUpdates beta) {
  auto user = userOf(account);
  user["consumption"] = consumptionOf(usage);
  user["updates"] = json::object{{"betaEligible", beta == BetaUpdates::Yes}};
  return success(200, "user", std::move(user));
}

Answer dictionaryAnswer(std::span<const DictionaryEntry> entries) {
  json::array list;
  list.reserve(entries.size());
  for (const auto& entry : entries) list.push_back(objectOf(entry));
  return success(200, "dictionary", std::move(list));
}

Answer entryAnswer(const DictionaryEntry& entry) {
  return success(201, "entry", objectOf(entry));
}

Answer successAnswer() {
  return {.status = 200, .body = R"({"status":"success"})"};
}

}  // namespace vemo::service
