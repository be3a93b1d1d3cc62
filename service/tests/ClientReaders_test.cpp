// What the service answers, read by the desktop program's own readers.
#include "account/AccountRecords.h"

#include <gmock/gmock.h>

#include <QByteArray>

#include "accounts/AccountAnswers.h"
#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

const Account ada{.id = 7, .email = "ada@example.org", .name = "Ada", .avatar = "https://a/b"};
const Moment noon =
    Moment(std::chrono::sys_days(std::chrono::year(2026) / 3 / 9)) + std::chrono::hours(12);

QByteArray bodyOf(const Answer& answer) {
  return QByteArray::fromStdString(answer.body);
}

TEST(ClientReadersTest, ASignInIsUnderstood) {
  const auto success = decodeAuthSuccess(bodyOf(signInAnswer("token", ada)));
  ASSERT_TRUE(success);
  EXPECT_EQ(success->token, QString::fromUtf8("token"));
  EXPECT_EQ(success->user.id, QString::fromUtf8("7"));
  EXPECT_EQ(success->user.email, QString::fromUtf8("ada@example.org"));
  EXPECT_EQ(success->user.name, QString::fromUtf8("Ada"));
  EXPECT_EQ(success->user.avatarUrl, QString::fromUtf8("https://a/b"));
  EXPECT_TRUE(decodeAuthSuccess(bodyOf(signInAnswer("token", {.id = 7}))));
}

TEST(ClientReadersTest, AProfileIsUnderstoodWithAllItsCounters) {
  const UsageSums usage{.words = 1,
                        .cycleWords = 2,
                        .speech = std::chrono::seconds(90),
                        .aiTokens = 4,
                        .utterances = 5,
                        .requests = 6,
                        .lastActive = noon};
  const auto profile = decodeProfileResponse(bodyOf(profileAnswer(ada, usage, BetaUpdates::Yes)));
  ASSERT_TRUE(profile);
  ASSERT_TRUE(profile->consumption);
  const auto& consumption = *profile->consumption;
  EXPECT_EQ(consumption.totalWordsTranscribed, 1);
  EXPECT_EQ(consumption.currentCycleWordsTranscribed, 2);
  EXPECT_EQ(consumption.totalMinutesTranscribed, 1.5);
  EXPECT_EQ(consumption.totalAiTokensUsed, 4);
  EXPECT_EQ(consumption.totalUtterances, 5);
  EXPECT_EQ(consumption.totalRequests, 6);
  EXPECT_EQ(consumption.lastActiveAt, QString::fromUtf8("2026-03-09T12:00:00Z"));
  EXPECT_EQ(consumption.lastActiveDate, QString::fromUtf8("2026-03-09"));
  EXPECT_EQ(profile->betaEligible, true);
}

TEST(ClientReadersTest, AnAccountWithoutAnythingIsUnderstood) {
  const auto profile = decodeProfileResponse(bodyOf(profileAnswer({}, {}, BetaUpdates::No)));
  ASSERT_TRUE(profile);
  EXPECT_EQ(profile->consumption->totalMinutesTranscribed, 0.0);
  EXPECT_FALSE(profile->consumption->lastActiveAt);
  EXPECT_FALSE(profile->user.name);
}

TEST(ClientReadersTest, ADictionaryAndItsNewEntryAreUnderstood) {
  const std::vector<DictionaryEntry> entries = {{.id = 1, .phrase = "p", .replacement = ""},
                                                {.id = 2, .phrase = "q\n", .replacement = "\"r\""}};
  const auto list = decodeDictionaryResponse(bodyOf(dictionaryAnswer(entries)));
  ASSERT_TRUE(list);
  ASSERT_EQ(list->size(), 2U);
  EXPECT_EQ(list->back().id, QString::fromUtf8("2"));
  EXPECT_EQ(list->back().phrase, QString::fromUtf8("q\n"));
  EXPECT_EQ(list->back().replacement, QString::fromUtf8("\"r\""));
  EXPECT_TRUE(decodeDictionaryResponse(bodyOf(dictionaryAnswer({}))));
  EXPECT_EQ(decodeDictionaryAddResponse(bodyOf(entryAnswer(entries[0])))->id,
            QString::fromUtf8("1"));
}

TEST(ClientReadersTest, AFailureIsUnderstood) {
  EXPECT_EQ(decodeAuthError(bodyOf(errorAnswer(401, "No."))), QString::fromUtf8("No."));
}

class ClientLanguagesTest : public HttpServiceTest {};

TEST_F(ClientLanguagesTest, TheLanguagesAreUnderstood) {
  const auto languages =
      decodeLanguagesResponse(QByteArray::fromStdString(ask("GET", "/languages").body));
  ASSERT_TRUE(languages);
  ASSERT_EQ(languages->size(), 1U);
  EXPECT_EQ(languages->front().code, QString::fromUtf8("en"));
}

}  // namespace
}  // namespace vemo::service
