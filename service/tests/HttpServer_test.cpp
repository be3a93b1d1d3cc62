#include "http/HttpServer.h"

#include <gmock/gmock.h>

#include <future>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::Not;
using namespace std::chrono_literals;
using namespace std::string_literals;

class HttpServerTest : public HttpServiceTest {};

TEST_F(HttpServerTest, ARecordingIsAnsweredWithItsFormattedText) {
  const auto answer = ask(service().post(dictate, m_wav));
  EXPECT_EQ(answer.status, 200);
  EXPECT_EQ(answer.body, R"({"status":"success","transcription":"Hello world."})");
  EXPECT_THAT(answer.head, HasSubstr("Content-Type: application/json"));
  EXPECT_THAT(m_script.languages(), testing::ElementsAre("en"));
}

TEST_F(HttpServerTest, WithoutSmartTheTextStaysRaw) {
  EXPECT_THAT(ask(service().post("/desktop/dictate?format_mode=plain", m_wav)).body,
              HasSubstr(R"("hello world")"));
  EXPECT_THAT(ask(service().post("/desktop/dictate", m_wav)).body, HasSubstr(R"("hello world")"));
}

TEST_F(HttpServerTest, TextThatComesPunctuatedIsLeftAlone) {
  m_settings.output = EngineKind::Output::Punctuated;
  m_script.answerWith("Hello, comma World");
  EXPECT_THAT(ask(service().post(dictate, m_wav)).body, HasSubstr(R"("Hello, comma World")"));
}

TEST_F(HttpServerTest, AnEmptyRecordingIsAnEmptyTextAndNoWorkForTheEngine) {
  EXPECT_EQ(ask(service().post(dictate, wavOf({}))).body,
            R"({"status":"success","transcription":""})");
  EXPECT_EQ(m_script.startedCount(), 0U);
}

TEST_F(HttpServerTest, AChunkStaysRawAndFinalizeFormats) {
  EXPECT_THAT(ask(service().post(
                      "/desktop/dictate/chunk?format_mode=smart&chunk_index=0&session_id=a", m_wav))
                  .body,
              HasSubstr(R"("hello world")"));
  EXPECT_EQ(ask(service().post("/desktop/dictate/finalize",
                               R"({"rawTranscript":"so comma i went","format_mode":"smart"})"))
                .body,
            R"({"status":"success","transcription":"So, I went."})");
  EXPECT_THAT(
      ask(service().post("/desktop/dictate/finalize", R"({"rawTranscript":"so comma"})")).body,
      HasSubstr(R"("so comma")"));
  EXPECT_EQ(ask(service().post("/desktop/dictate/finalize",
                               R"({"rawTranscript":"","format_mode":"smart"})"))
                .status,
            200);
}

TEST_F(HttpServerTest, AFinalizeBodyThatCannotBeUnderstoodIsABadRequest) {
  for (const auto* body : {"", "{", "[]", "null", "{}", R"({"rawTranscript":7})",
                           R"({"rawTranscript":null})", "{\"rawTranscript\":\"\xFF\"}"})
    EXPECT_EQ(ask(service().post("/desktop/dictate/finalize", body)).status, 400) << body;
  std::string deep(100'000, '[');
  EXPECT_EQ(ask(service().post("/desktop/dictate/finalize", deep)).status, 400);
}

TEST_F(HttpServerTest, HealthNeedsNoTokenAndTellsReadiness) {
  m_script.holdLoading();
  EXPECT_EQ(ask("GET", "/health").status, 503);
  EXPECT_THAT(ask("GET", "/health").body, HasSubstr("loading"));
  m_script.letLoadingGo();
  ASSERT_TRUE(eventually([&] { return service().queue().isReady(); }));
  EXPECT_EQ(ask("GET", "/health").status, 200);
  EXPECT_EQ(ask("GET", "/health").body, R"({"status":"ready","engine":"scripted"})");
}

TEST_F(HttpServerTest, WithoutAValidTokenThereIsNothingButA401) {
  const std::string good = service().token();
  for (const auto& headers :
       {std::string(), "Authorization: Bearer \r\n"s, "Authorization: Bearer wrong\r\n"s,
        "Authorization: Basic " + good + "\r\n", "Authorization: " + good + "\r\n",
        "Authorization: Bearer" + good + "\r\n", "X-Authorization: Bearer " + good + "\r\n"}) {
    const auto answer = ask("POST", dictate, headers + "Content-Length: 0\r\n");
    EXPECT_EQ(answer.status, 401) << headers;
    EXPECT_THAT(answer.body, HasSubstr(R"({"status":"error","error":")"));
    EXPECT_THAT(answer.head, HasSubstr("WWW-Authenticate: Bearer"));
  }
  EXPECT_EQ(
      ask("POST", dictate, "Authorization: bearer " + good + "\r\nContent-Length: 0\r\n").status,
      400);
}

TEST_F(HttpServerTest, A401ComesBeforeTheBodyDoes) {
  RawClient client(service().port());
  const auto answer = client.exchange(
      "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\nContent-Length: 1000000\r\n\r\n");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 401);
}

TEST_F(HttpServerTest, UnknownPathsAndMethodsAreToldApart) {
  EXPECT_EQ(ask("POST", "/desktop", authorization() + "Content-Length: 0\r\n").status, 404);
  EXPECT_EQ(ask("GET", "/").status, 404);
  const auto answer = ask("GET", "/desktop/dictate", authorization());
  EXPECT_EQ(answer.status, 405);
  EXPECT_THAT(answer.head, HasSubstr("Allow: POST"));
  EXPECT_EQ(ask("POST", "/health", "Content-Length: 0\r\n").status, 405);
  EXPECT_EQ(ask("BREW", "/desktop/dictate", authorization()).status, 405);
  EXPECT_EQ(ask("GET", "/health%zz").status, 400);
}

TEST_F(HttpServerTest, WhatIsNotAWavFileIsABadRequestWithItsReason) {
  EXPECT_THAT(ask(service().post(dictate, "not audio")).body,
              HasSubstr("The body is not a WAV file."));
  EXPECT_EQ(ask(service().post(dictate, "")).status, 400);
  const auto answer = ask(service().post(dictate, WavFile{.rate = 8000}.bytes()));
  EXPECT_EQ(answer.status, 400);
  EXPECT_THAT(answer.body, AllOf(HasSubstr(R"("status":"error")"), HasSubstr("16000")));
}

TEST_F(HttpServerTest, EngineFailuresHaveTheirStatusAndSentence) {
  const std::pair<EngineError::Kind, int> cases[] = {{EngineError::Kind::Unsupported, 422},
                                                     {EngineError::Kind::Failed, 502},
                                                     {EngineError::Kind::TimedOut, 504}};
  for (const auto& [kind, status] : cases) {
    m_script.answerWith(std::unexpected(EngineError{kind, "It did not work."}));
    const auto answer = ask(service().post(dictate, m_wav));
    EXPECT_EQ(answer.status, status);
    EXPECT_EQ(answer.body, R"({"status":"error","error":"It did not work."})");
  }
}

TEST_F(HttpServerTest, AFullQueueIsToldAtOnceWhileTheOthersAreServed) {
  m_settings.queue = {.workers = 1, .waiting = 1};
  const auto running = occupyWorker();
  RawClient waiting(service().port());
  ASSERT_TRUE(waiting.send(service().post(dictate, m_wav)));
  ASSERT_TRUE(eventually([&] { return service().queue().waitingCount() == 1; }));
  const auto refused = ask(service().post(dictate, m_wav));
  EXPECT_EQ(refused.status, 503);
  EXPECT_THAT(refused.head, HasSubstr("Retry-After: 1"));
  m_script.letGo();
  EXPECT_EQ(running->read().value_or(RawAnswer{}).status, 200);
  EXPECT_EQ(waiting.read().value_or(RawAnswer{}).status, 200);
}

TEST_F(HttpServerTest, AClientThatGoesAwayFreesItsPlace) {
  const auto running = occupyWorker();
  RawClient waiting(service().port());
  ASSERT_TRUE(waiting.send(service().post(dictate, m_wav)));
  ASSERT_TRUE(eventually([&] { return service().queue().waitingCount() == 1; }));
  waiting.close();
  EXPECT_TRUE(eventually([&] { return service().queue().waitingCount() == 0; }));
  running->close();
  EXPECT_TRUE(eventually([&] { return m_script.runningCount() == 0; }));
  EXPECT_THAT(service().stop(), HasSubstr("POST /desktop/dictate 499"));
}

TEST_F(HttpServerTest, AConnectionServesOneRequestAfterTheOther) {
  RawClient client(service().port());
  for (int round = 0; round < 3; ++round)
    EXPECT_EQ(client.exchange(service().post(dictate, m_wav)).value_or(RawAnswer{}).status, 200);
}

TEST_F(HttpServerTest, PipelinedRequestsAreAnsweredInTheirOrder) {
  RawClient client(service().port());
  const auto batch = service().post(dictate, m_wav) + service().post("/desktop/nothing", "") +
                     "GET /health HTTP/1.1\r\nHost: x\r\n\r\n";
  ASSERT_TRUE(client.send(batch));
  EXPECT_THAT(client.read().value_or(RawAnswer{}).body, HasSubstr("Hello world."));
  EXPECT_EQ(client.read().value_or(RawAnswer{}).status, 404);
  EXPECT_THAT(client.read().value_or(RawAnswer{}).body, HasSubstr("engine"));
}

TEST_F(HttpServerTest, AnnouncedBodiesAreAskedForOnlyWhenTheHeadIsGood) {
  RawClient client(service().port());
  const auto request = service().post(dictate, m_wav, "Expect: 100-continue\r\n");
  const auto headLength = request.find("\r\n\r\n") + 4;
  EXPECT_EQ(client.exchange(request.substr(0, headLength)).value_or(RawAnswer{}).status, 100);
  EXPECT_EQ(client.exchange(request.substr(headLength)).value_or(RawAnswer{}).status, 200);
  EXPECT_EQ(ask("POST", dictate, "Expect: 100-continue\r\nContent-Length: 100\r\n").status, 401);
}

TEST_F(HttpServerTest, ManyClientsAtOnceAreAllAnswered) {
  m_settings.queue = {.workers = 2, .waiting = 64};
  service();
  std::vector<std::future<int>> answers;
  for (int index = 0; index < 50; ++index)
    answers.push_back(std::async(std::launch::async, [this] {
      return ask(service().post(dictate, wavOf(std::vector<std::int16_t>(240'000, 1)))).status;
    }));
  for (auto& answer : answers) EXPECT_EQ(answer.get(), 200);
}

TEST_F(HttpServerTest, StoppingLetsTheRequestUnderWayFinish) {
  const auto running = occupyWorker();
  RawClient idle(service().port());
  ASSERT_TRUE(idle.exchange("GET /health HTTP/1.1\r\nHost: x\r\n\r\n"));
  service().beginToStop();
  EXPECT_TRUE(idle.waitForEnd());
  m_script.letGo();
  const auto answer = running->read();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 200);
  EXPECT_THAT(answer->head, HasSubstr("Connection: close"));
  EXPECT_TRUE(running->waitForEnd());
  EXPECT_FALSE(RawClient(service().port()).isConnected());
}

TEST_F(HttpServerTest, StoppingCutsWhatTakesTooLong) {
  m_settings.limits.shutdownTime = 50ms;
  const auto running = occupyWorker();
  service().beginToStop();
  EXPECT_TRUE(running->waitForEnd());
  EXPECT_TRUE(eventually([&] { return m_script.runningCount() == 0; }));
}

TEST_F(HttpServerTest, TheLogHoldsMethodPathStatusBytesAndTimeOnly) {
  m_script.answerWith("a secret sentence");
  ask(service().post("/desktop/dictate?language=privatequery", m_wav));
  ask("GET", "/private/path", "X-Private: header\r\n");
  ask("POST", dictate, "Authorization: Bearer privatetoken\r\nContent-Length: 0\r\n");
  const auto token = service().token();
  const auto log = service().stop();
  EXPECT_THAT(log, testing::MatchesRegex("POST /desktop/dictate 200 48B [0-9]+ms\n"
                                         "GET - 404 0B [0-9]+ms\n"
                                         "POST /desktop/dictate 401 0B [0-9]+ms\n"));
  EXPECT_THAT(log,
              AllOf(Not(HasSubstr("secret")), Not(HasSubstr("private")), Not(HasSubstr(token))));
}

}  // namespace
}  // namespace vemo::service
