#include "http/EqualRequests.h"

#include <gmock/gmock.h>

#include <future>
#include <random>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class EqualRequestsTest : public HttpServiceTest {
 protected:
  std::string dictation(const std::string& id, std::string_view wav) {
    return service().post(dictate, wav, "x-dictation-id: " + id + "\r\n");
  }
  std::string chunk(const std::string& session, int index, std::string_view wav) {
    return service().post("/desktop/dictate/chunk?language=en&chunk_index=" +
                              std::to_string(index) + "&session_id=" + session,
                          wav);
  }
  /// Sends a request and waits until it waits for its answer.
  std::unique_ptr<RawClient> sendAndWait(const std::string& request) {
    const auto before = service().waitingForAnswers();
    auto client = std::make_unique<RawClient>(service().port());
    EXPECT_TRUE(client->send(request));
    EXPECT_TRUE(eventually([&] { return service().waitingForAnswers() == before + 1; }));
    return client;
  }
  void expectText(RawClient& client, std::string_view text) {
    const auto answer = client.read().value_or(RawAnswer{});
    EXPECT_EQ(answer.status, 200);
    EXPECT_THAT(answer.body, HasSubstr(std::string(text)));
  }

  const std::string m_otherWav = WavFile{.pcm = std::string(6, '\x05')}.bytes();
};

TEST_F(EqualRequestsTest, ACopyThatComesWhileTheFirstIsUnderWaySharesItsWorkAndItsAnswer) {
  m_script.hold();
  for (const auto& request : {dictation("a", m_wav), chunk("a", 0, m_wav)}) {
    const auto before = m_script.startedCount();
    m_script.hold();
    const auto first = sendAndWait(request);
    const auto second = sendAndWait(request);
    EXPECT_TRUE(eventually([&] { return m_script.startedCount() == before + 1; }));
    m_script.letGo();
    EXPECT_EQ(first->read().value_or(RawAnswer{}).body, second->read().value_or(RawAnswer{}).body);
    EXPECT_EQ(m_script.startedCount(), before + 1);
  }
}

TEST_F(EqualRequestsTest, ACopyThatComesAfterTheAnswerGetsItAgain) {
  for (const auto& request : {dictation("a", m_wav), chunk("a", 0, m_wav)}) {
    m_script.answerWith("first");
    const auto first = ask(request);
    EXPECT_EQ(first.status, 200);
    const auto started = m_script.startedCount();
    m_script.answerWith("second");
    EXPECT_EQ(ask(request).body, first.body);
    EXPECT_EQ(m_script.startedCount(), started);
  }
}

TEST_F(EqualRequestsTest, TheTimeOfSendingMakesNoDifference) {
  const auto at = [&](const std::string& time) {
    return service().post(dictate, m_wav,
                          "x-dictation-id: a\r\nx-client-start-time: " + time + "\r\n");
  };
  EXPECT_EQ(ask(at("1")).status, 200);
  EXPECT_EQ(ask(at("2")).status, 200);
  EXPECT_EQ(m_script.startedCount(), 1U);
}

TEST_F(EqualRequestsTest, AnIndexThatComesAgainWithOtherAudioIsAnsweredForItself) {
  m_script.answerWith("one");
  EXPECT_THAT(ask(chunk("a", 0, m_wav)).body, HasSubstr("one"));
  m_script.answerWith("two");
  EXPECT_THAT(ask(chunk("a", 0, m_otherWav)).body, HasSubstr("two"));
  EXPECT_THAT(ask(dictation("a", m_otherWav)).body, HasSubstr("Two"));
  m_script.answerWith("three");
  EXPECT_THAT(ask(chunk("a", 0, m_wav)).body, HasSubstr("one"));
  EXPECT_THAT(ask(dictation("a", m_wav)).body, HasSubstr("Three"));
}

TEST_F(EqualRequestsTest, OtherAudioUnderTheSameIndexWhileTheFirstIsUnderWayIsItsOwnWork) {
  m_script.hold();
  const auto first = sendAndWait(chunk("a", 0, m_wav));
  const auto second = sendAndWait(chunk("a", 0, m_otherWav));
  EXPECT_TRUE(eventually([this] { return m_script.runningCount() == 1; }));
  EXPECT_EQ(service().queue().waitingCount(), 1U);
  m_script.letGo();
  expectText(*first, "hello");
  expectText(*second, "hello");
  EXPECT_EQ(m_script.startedCount(), 2U);
}

TEST_F(EqualRequestsTest, WhateverElseDiffersMakesTwoRequests) {
  const std::string address = "/desktop/dictate/chunk?chunk_index=0&session_id=a";
  const std::string header = "x-dictation-id: a\r\n";
  const std::vector<std::string> requests = {
      chunk("a", 0, m_wav),
      chunk("a", 1, m_wav),
      chunk("b", 0, m_wav),
      service().post(address + "&language=de", m_wav),
      dictation("a", m_wav),
      dictation("b", m_wav),
      service().post("/desktop/dictate?language=en", m_wav, header),
      service().post("/desktop/dictate?language=de&format_mode=smart", m_wav, header)};
  for (const auto& request : requests) EXPECT_EQ(ask(request).status, 200);
  EXPECT_EQ(m_script.startedCount(), requests.size());
}

TEST_F(EqualRequestsTest, WhatDoesNotSayWhichDictationItIsIsAlwaysRecognised) {
  const std::vector<std::string> requests = {
      service().post(dictate, m_wav), service().post(dictate, m_wav, "x-dictation-id:\r\n"),
      service().post("/desktop/dictate/chunk?session_id=a", m_wav),
      service().post("/desktop/dictate/chunk?chunk_index=1", m_wav)};
  for (const auto& request : requests) {
    EXPECT_EQ(ask(request).status, 200);
    EXPECT_EQ(ask(request).status, 200);
  }
  EXPECT_EQ(m_script.startedCount(), 2 * requests.size());
}

TEST_F(EqualRequestsTest, AnotherTokenSharesNothing) {
  const auto mine = chunk("a", 0, m_wav);
  auto theirs = mine;
  theirs.replace(theirs.find(service().token()), service().token().size(), service().addToken());
  m_script.answerWith("mine");
  EXPECT_THAT(ask(mine).body, HasSubstr("mine"));
  m_script.answerWith("theirs");
  EXPECT_THAT(ask(theirs).body, HasSubstr("theirs"));

  m_script.hold();
  const auto first = sendAndWait(chunk("b", 0, m_wav));
  theirs.replace(theirs.find("session_id=a"), 12, "session_id=b");
  const auto second = sendAndWait(theirs);
  m_script.letGo();
  expectText(*first, "theirs");
  expectText(*second, "theirs");
  EXPECT_EQ(m_script.startedCount(), 4U);
}

TEST_F(EqualRequestsTest, AFirstClientThatHangsUpDoesNotCostTheSecondItsAnswer) {
  m_script.hold();
  const auto first = sendAndWait(chunk("a", 0, m_wav));
  const auto second = sendAndWait(chunk("a", 0, m_wav));
  ASSERT_TRUE(eventually([this] { return m_script.runningCount() == 1; }));
  first->close();
  ASSERT_TRUE(eventually([&] { return service().waitingForAnswers() == 1; }));
  EXPECT_EQ(m_script.runningCount(), 1U);
  m_script.letGo();
  expectText(*second, "hello world");
  EXPECT_EQ(m_script.startedCount(), 1U);
}

TEST_F(EqualRequestsTest, OnceEveryoneHasHungUpTheWorkEndsAndTheNextCopyIsANewTry) {
  m_script.hold();
  const auto first = sendAndWait(chunk("a", 0, m_wav));
  const auto second = sendAndWait(chunk("a", 0, m_wav));
  ASSERT_TRUE(eventually([this] { return m_script.runningCount() == 1; }));
  first->close();
  second->close();
  EXPECT_TRUE(eventually([&] { return m_script.runningCount() == 0; }));
  m_script.letGo();
  EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 2U);
}

TEST_F(EqualRequestsTest, AnEngineErrorGoesToAllWhoWaitAndIsNotRemembered) {
  m_script.answerWith(std::unexpected(EngineError{EngineError::Kind::Failed, "It broke."}));
  m_script.hold();
  const auto first = sendAndWait(chunk("a", 0, m_wav));
  const auto second = sendAndWait(chunk("a", 0, m_wav));
  m_script.letGo();
  EXPECT_EQ(first->read().value_or(RawAnswer{}).status, 502);
  EXPECT_EQ(second->read().value_or(RawAnswer{}).status, 502);
  m_script.answerWith("better now");
  EXPECT_THAT(ask(chunk("a", 0, m_wav)).body, HasSubstr("better now"));
}

TEST_F(EqualRequestsTest, ACopyTakesNoPlaceInTheQueueAndARefusalIsNotRemembered) {
  m_settings.queue = {.workers = 1, .waiting = 0};
  m_script.hold();
  const auto first = sendAndWait(chunk("a", 0, m_wav));
  const auto copy = sendAndWait(chunk("a", 0, m_wav));
  EXPECT_EQ(ask(chunk("a", 1, m_wav)).status, 503);
  m_script.letGo();
  expectText(*first, "hello");
  expectText(*copy, "hello");
  EXPECT_EQ(ask(chunk("a", 1, m_wav)).status, 200);
}

TEST_F(EqualRequestsTest, AnAnswerIsForgottenAfterItsTime) {
  m_settings.limits.repeatTime = 1ms;
  EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
  EXPECT_TRUE(eventually([&] {
    EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
    return m_script.startedCount() >= 3;
  }));
}

TEST_F(EqualRequestsTest, AboveTheLimitOfAnswersTheOldestIsForgotten) {
  m_settings.limits.repeatAnswers = 2;
  for (int index : {0, 1, 2}) EXPECT_EQ(ask(chunk("a", index, m_wav)).status, 200);
  for (int index : {1, 2}) EXPECT_EQ(ask(chunk("a", index, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 3U);
  EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 4U);
}

TEST_F(EqualRequestsTest, LongAnswersAreForgottenEarlierAndTooLongOnesAtOnce) {
  m_script.answerWith(std::string(EqualRequests::rememberedBytes / 2, 'x'));
  for (int index : {0, 1, 1}) EXPECT_EQ(ask(chunk("a", index, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 2U);
  EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 3U);
  m_script.answerWith(std::string(EqualRequests::rememberedBytes, 'x'));
  for (int index : {2, 2}) EXPECT_EQ(ask(chunk("a", index, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 5U);
}

TEST_F(EqualRequestsTest, RememberedAnswersDoNotKeepTheServiceFromEnding) {
  m_settings.limits.repeatTime = 24h;
  EXPECT_EQ(ask(chunk("a", 0, m_wav)).status, 200);
  EXPECT_THAT(service().stop(), HasSubstr("200"));
}

TEST_F(EqualRequestsTest, EqualFinalizesHaveEqualAnswersAndOtherTextsTheirOwn) {
  const auto finalize = [&](const std::string& text) {
    return ask(service().post(
                   "/desktop/dictate/finalize",
                   R"({"sessionId":"a","rawTranscript":")" + text + R"(","format_mode":"smart"})"))
        .body;
  };
  const auto first = finalize("one comma two");
  EXPECT_THAT(first, HasSubstr("One, two."));
  EXPECT_EQ(finalize("one comma two"), first);
  EXPECT_THAT(finalize("three"), HasSubstr("Three."));
  EXPECT_EQ(finalize("one comma two"), first);
}

TEST_F(EqualRequestsTest, CopiesMayComeAndHangUpAtAnyMoment) {
  m_settings.queue = {.workers = 2, .waiting = 64};
  m_settings.limits.repeatTime = 1ms;
  service();
  std::vector<std::future<int>> clients;
  for (unsigned seed = 0; seed < 8; ++seed)
    clients.push_back(std::async(std::launch::async, [this, seed] {
      std::mt19937 random(seed);
      int wrong = 0;
      for (int round = 0; round < 100; ++round) {
        RawClient client(service().port());
        client.send(chunk("a", static_cast<int>(random() % 3), m_wav));
        if (random() % 3 == 0) continue;
        const auto answer = client.read().value_or(RawAnswer{});
        if (answer.status != 200 || !answer.body.contains("hello world")) ++wrong;
      }
      return wrong;
    }));
  for (auto& wrong : clients) EXPECT_EQ(wrong.get(), 0);
  EXPECT_TRUE(eventually([&] { return service().waitingForAnswers() == 0; }));
}

}  // namespace
}  // namespace vemo::service
