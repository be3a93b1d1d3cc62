// What the account service answers. Keys on the wire are the names of the fields; keys that a
// record doesn't list are ignored, and a record that lacks a required one, or has one of another
// type, is none at all. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <cstdint>
#include <optional>
#include <vector>

namespace vemo {

struct AuthUser {
  std::optional<QString> id;
  std::optional<QString> email;
  std::optional<QString> name;
  std::optional<QString> avatarUrl;

  friend bool operator==(const AuthUser&, const AuthUser&) = default;
};

/// The answer to a sign-in.
struct AuthSuccess {
  QString token;
  AuthUser user;
};

/// Counters of what the account has used.
struct UserConsumption {
  std::optional<std::int64_t> totalWordsTranscribed;
  std::optional<std::int64_t> currentCycleWordsTranscribed;
  std::optional<double> totalMinutesTranscribed;
  std::optional<std::int64_t> totalAiTokensUsed;
  std::optional<std::int64_t> totalUtterances;
  std::optional<std::int64_t> totalRequests;
  std::optional<QString> lastActiveAt;
  std::optional<QString> lastActiveDate;

  friend bool operator==(const UserConsumption&, const UserConsumption&) = default;
};

struct UserProfile {
  AuthUser user;
  std::optional<UserConsumption> consumption;
  std::optional<bool> betaEligible;  ///< of the record `updates`
};

struct LanguageDto {
  QString name;
  QString code;

  friend bool operator==(const LanguageDto&, const LanguageDto&) = default;
};

/// An entry of the account's dictionary.
struct DictionaryItemDto {
  QString id;
  QString phrase;       ///< what the user says
  QString replacement;  ///< what is written

  friend bool operator==(const DictionaryItemDto&, const DictionaryItemDto&) = default;
};

std::optional<AuthSuccess> decodeAuthSuccess(const QByteArray& body);
/// The words of an error that the service tells.
std::optional<QString> decodeAuthError(const QByteArray& body);
std::optional<UserProfile> decodeProfileResponse(const QByteArray& body);
std::optional<std::vector<LanguageDto>> decodeLanguagesResponse(const QByteArray& body);
std::optional<std::vector<DictionaryItemDto>> decodeDictionaryResponse(const QByteArray& body);
std::optional<DictionaryItemDto> decodeDictionaryAddResponse(const QByteArray& body);

}  // namespace vemo
