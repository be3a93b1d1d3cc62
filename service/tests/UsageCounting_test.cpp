#include <future>

#include "support/AccountServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;

constexpr std::string_view smart = "/desktop/dictate?format_mode=smart";

class UsageCountingTest : public AccountServiceTest {
 protected:
  static std::string speech(int seconds) {
    return wavOf(std::vector<std::int16_t>(static_cast<std::size_t>(seconds) * sampleRate, 5));
  }
  RawAnswer dictate(const std::string& token, const std::string& wav, const std::string& name) {
    return ask("POST", smart, token, wav, "x-dictation-id: " + name + "\r\n");
  }
  RawAnswer chunk(const std::string& token, int index, const std::string& wav) {
    return ask("POST", "/desktop/dictate/chunk?session_id=s1&chunk_index=" + std::to_string(index),
               token, wav);
  }
  std::int64_t counted(const std::string& token, std::string_view name) {
    return consumption(token).at(name).as_int64();
  }
  /// A machine that stands still delivers a text uncounted; its count follows.
  bool becomes(const std::string& token, std::string_view name, std::int64_t count) {
    return eventually([&] { return counted(token, name) == count; });
  }
  double minutes(const std::string& token) {
    return consumption(token).at("totalMinutesTranscribed").to_number<double>();
  }
};
INSTANTIATE_TEST_SUITE_P(Each, UsageCountingTest, everyDeployment, deploymentName);

TEST_P(UsageCountingTest, ADictationIsCountedByTheTimeItIsAnswered) {
  const auto token = signIn();
  m_script.answerWith("three whole words");
  // Of a few, as a machine that stands still delivers a text uncounted.
  int dictations = 0;
  do {
    ++dictations;
    EXPECT_EQ(dictate(token, speech(30), "d" + std::to_string(dictations)).status, 200);
  } while (counted(token, "totalUtterances") != dictations && dictations < 5);
  EXPECT_EQ(counted(token, "totalUtterances"), dictations);
  EXPECT_EQ(counted(token, "totalWordsTranscribed"), 3 * dictations);
  EXPECT_EQ(counted(token, "currentCycleWordsTranscribed"), 3 * dictations);
  EXPECT_EQ(counted(token, "totalRequests"), dictations);
  EXPECT_EQ(counted(token, "totalAiTokensUsed"), 0);
  EXPECT_DOUBLE_EQ(minutes(token), 0.5 * dictations);
  EXPECT_EQ(consumption(token).at("lastActiveAt").as_string(), "2026-03-09T12:00:00Z");
  EXPECT_EQ(consumption(token).at("lastActiveDate").as_string(), "2026-03-09");
}

TEST_P(UsageCountingTest, CopiesOfADictationCountOnceWhenTheyComeTogetherAndWhenTheyComeLater) {
  const auto token = signIn();
  const auto wav = speech(6);
  m_script.hold();
  std::vector<std::future<int>> copies;
  for (int index = 0; index < 3; ++index)
    copies.push_back(
        std::async(std::launch::async, [&] { return dictate(token, wav, "d1").status; }));
  ASSERT_TRUE(eventually([&] { return waitingForAnswers() == 3; }));
  m_script.letGo();
  for (auto& copy : copies) EXPECT_EQ(copy.get(), 200);
  EXPECT_EQ(dictate(token, wav, "d1").status, 200);
  EXPECT_TRUE(becomes(token, "totalUtterances", 1));
  EXPECT_TRUE(becomes(token, "totalWordsTranscribed", 2));
  EXPECT_TRUE(becomes(token, "totalRequests", 1));
}

TEST_P(UsageCountingTest, ACopyThatIsRecognisedAgainIsStillCountedOnce) {
  m_settings.limits.repeatAnswers = 0;
  const auto token = signIn();
  for (int copy = 0; copy < 3; ++copy) EXPECT_EQ(dictate(token, speech(6), "d1").status, 200);
  EXPECT_EQ(m_script.startedCount(), 3U);
  EXPECT_TRUE(becomes(token, "totalUtterances", 1));
  EXPECT_EQ(dictate(token, speech(6), "d2").status, 200);
  EXPECT_TRUE(becomes(token, "totalUtterances", 2));
}

TEST_P(UsageCountingTest, ADictationInPiecesIsCountedWholeAtItsEnd) {
  const auto token = signIn();
  chunk(token, 0, speech(20));
  chunk(token, 1, speech(10));
  EXPECT_EQ(counted(token, "totalUtterances"), 0);
  EXPECT_EQ(counted(token, "totalWordsTranscribed"), 0);
  const auto* body =
      R"({"sessionId":"s1","rawTranscript":"one two three four","format_mode":"smart","totalDuration":30.0})";
  for (int copy = 0; copy < 2; ++copy)
    EXPECT_EQ(ask("POST", "/desktop/dictate/finalize", token, body).status, 200);
  EXPECT_TRUE(becomes(token, "totalUtterances", 1));
  EXPECT_TRUE(becomes(token, "totalWordsTranscribed", 4));
  EXPECT_TRUE(becomes(token, "totalRequests", 3));
  EXPECT_DOUBLE_EQ(minutes(token), 0.5);
}

TEST_P(UsageCountingTest, ALengthThatCannotBeIsNotBelieved) {
  const auto token = signIn();
  const auto finalize = [&](const std::string& duration) {
    return ask("POST", "/desktop/dictate/finalize", token,
               R"({"rawTranscript":"a","totalDuration":)" + duration + "}")
        .status;
  };
  for (const auto* duration : {"-1", "\"60\"", "null", "[]", "0"})
    EXPECT_EQ(finalize(duration), 200) << duration;
  EXPECT_DOUBLE_EQ(minutes(token), 0);
  EXPECT_EQ(finalize("1e300"), 200);
  EXPECT_TRUE(eventually([&] { return minutes(token) == 24 * 60; }));
}

TEST_P(UsageCountingTest, FailuresAndEmptyRecordingsCountNothing) {
  const auto token = signIn();
  m_script.answerWith(std::unexpected(EngineError{EngineError::Kind::Failed, "No."}));
  EXPECT_EQ(dictate(token, speech(1), "d1").status, 502);
  EXPECT_EQ(dictate(token, wavOf({}), "d2").status, 200);
  EXPECT_EQ(dictate(token, "nothing", "d3").status, 400);
  EXPECT_EQ(counted(token, "totalRequests"), 0);
}

TEST_P(UsageCountingTest, TheOperatorsTokensAreNotCountedForAnybody) {
  const auto token = signIn();
  EXPECT_EQ(dictate(operatorsToken(), speech(1), "d1").status, 200);
  EXPECT_EQ(counted(token, "totalRequests"), 0);
}

TEST_P(UsageCountingTest, TheCycleStartsAnewWithTheMonth) {
  const auto token = signIn();
  dictate(token, speech(1), "d1");
  advance(std::chrono::days(31));
  EXPECT_EQ(counted(token, "currentCycleWordsTranscribed"), 0);
  EXPECT_TRUE(becomes(token, "totalWordsTranscribed", 2));
  dictate(token, speech(1), "d2");
  EXPECT_TRUE(becomes(token, "currentCycleWordsTranscribed", 2));
  EXPECT_TRUE(becomes(token, "totalWordsTranscribed", 4));
}

TEST_P(UsageCountingTest, ATextDoesNotWaitForACounterThatIsHeld) {
  const auto token = signIn();
  Database other(m_settings.accounts.database);
  other.session() << (GetParam() == Deployment::Sqlite ? "BEGIN IMMEDIATE" : "BEGIN");
  if (GetParam() != Deployment::Sqlite) other.session() << "LOCK TABLE counted_requests";
  EXPECT_EQ(dictate(token, speech(1), "d1").status, 200);
  EXPECT_EQ(counted(token, "totalRequests"), 0);
  other.session() << "ROLLBACK";
  EXPECT_TRUE(eventually([&] { return counted(token, "totalRequests") == 1; }));
}

TEST_P(UsageCountingTest, ATextIsDeliveredWhenItCannotBeCounted) {
  const auto token = signIn();
  m_script.hold();
  auto answer =
      std::async(std::launch::async, [&] { return dictate(token, speech(1), "d1").body; });
  ASSERT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
  Database(m_settings.accounts.database).session() << "DROP TABLE counted_requests";
  m_script.letGo();
  EXPECT_THAT(answer.get(), HasSubstr("Hello world."));
}

}  // namespace
}  // namespace vemo::service
