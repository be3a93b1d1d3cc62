// Peers that send too much, too slowly, too little or nonsense.
#include <gmock/gmock.h>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class HostileClientsTest : public HttpServiceTest {};

TEST_F(HostileClientsTest, ABodyAtTheLimitIsTakenAndOneByteMoreIsNot) {
  m_settings.limits.bodyBytes = m_wav.size();
  EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
  const auto refused = ask(service().post(dictate, m_wav + "x"));
  EXPECT_EQ(refused.status, 413);
  EXPECT_THAT(refused.body, HasSubstr("too long"));
}

TEST_F(HostileClientsTest, A413ComesAsSoonAsTheLengthIsKnown) {
  m_settings.limits.bodyBytes = 1000;
  RawClient client(service().port());
  const auto answer = client.exchange("POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" +
                                      authorization() + "Content-Length: 99999999999\r\n\r\n");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 413);
}

TEST_F(HostileClientsTest, AChunkedBodyIsTakenUpToTheLimitAndRefusedBeyond) {
  m_settings.limits.bodyBytes = m_wav.size();
  const auto head = "POST " + std::string(dictate) + " HTTP/1.1\r\nHost: x\r\n" + authorization() +
                    "Transfer-Encoding: chunked\r\n\r\n";
  const auto half = m_wav.size() / 2;
  const auto chunk = [](std::string_view bytes) {
    char size[16];
    std::snprintf(size, sizeof size, "%zx\r\n", bytes.size());
    return size + std::string(bytes) + "\r\n";
  };
  const auto body = chunk(m_wav.substr(0, half)) + chunk(m_wav.substr(half));
  EXPECT_EQ(ask(head + body + "0\r\n\r\n").status, 200);
  EXPECT_EQ(ask(head + body + chunk("x") + "0\r\n\r\n").status, 413);

  RawClient endless(service().port());
  ASSERT_TRUE(endless.send(head));
  while (!endless.hasInput() && endless.send(chunk(std::string(100, 'x')))) {
  }
  EXPECT_EQ(endless.read().value_or(RawAnswer{}).status, 413);
}

TEST_F(HostileClientsTest, ARequestWhoseEndIsAmbiguousIsRefused) {
  const auto start = "POST " + std::string(dictate) + " HTTP/1.1\r\nHost: x\r\n" + authorization();
  for (const auto* headers :
       {"Content-Length: 5\r\nTransfer-Encoding: chunked\r\n",
        "Transfer-Encoding: chunked\r\nContent-Length: 5\r\n",
        "Content-Length: 5\r\nContent-Length: 6\r\n", "Content-Length: 5, 6\r\n",
        "Content-Length: -1\r\n", "Content-Length: 5x\r\n",
        "Content-Length: 99999999999999999999999\r\n", "Transfer-Encoding: gzip\r\n",
        "Transfer-Encoding: chunked, gzip\r\n", "Transfer-Encoding : chunked\r\n",
        "Transfer-Encoding: xchunked\r\n", "Content-Length: +5\r\n", "Content-Length: 0x5\r\n",
        "Transfer-Encoding: chunked\r\nTransfer-Encoding: chunked\r\n"}) {
    RawClient client(service().port());
    const auto answer =
        client.exchange(start + headers + "\r\nGET /health HTTP/1.1\r\nHost: x\r\n\r\n");
    ASSERT_TRUE(answer) << headers;
    EXPECT_EQ(answer->status, 400) << headers;
    EXPECT_FALSE(client.read()) << headers;
    EXPECT_TRUE(client.waitForEnd());
  }
  EXPECT_EQ(m_script.startedCount(), 0U);
}

TEST_F(HostileClientsTest, ARequestInsideABodyIsNeverTakenForOne) {
  RawClient client(service().port());
  const std::string inner = "GET /health HTTP/1.1\r\nHost: x\r\n\r\n";
  ASSERT_TRUE(client.send(service().post(dictate, inner) + service().post(dictate, m_wav)));
  EXPECT_EQ(client.read().value_or(RawAnswer{}).status, 400);
  EXPECT_THAT(client.read().value_or(RawAnswer{}).body, HasSubstr("Hello world."));
}

TEST_F(HostileClientsTest, ALengthThatIsTooShortCutsTheRecordingAndTheConnection) {
  auto request = service().post(dictate, m_wav);
  const auto right = "Content-Length: " + std::to_string(m_wav.size());
  request.replace(request.find(right), right.size(), "Content-Length: 20");
  RawClient client(service().port());
  ASSERT_TRUE(client.send(request));
  client.finishSending();
  EXPECT_EQ(client.read().value_or(RawAnswer{}).status, 400);
  EXPECT_TRUE(client.waitForEnd());
  EXPECT_EQ(m_script.startedCount(), 0U);
  EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
}

TEST_F(HostileClientsTest, NoiseInsteadOfARequestIsRefused) {
  for (const auto* noise :
       {"\x16\x03\x01\x02\x01\x01\r\n\r\n", "GET\r\n\r\n", "GET / HTTP/9.9\r\n\r\n",
        "GET /health HTTP/1.1\r\nno colon here\r\n\r\n"}) {
    const auto status = ask(noise).status;
    EXPECT_TRUE(status == 400 || status == 505) << status;
  }
}

TEST_F(HostileClientsTest, AHeadThatIsTooLongIsRefused) {
  m_settings.limits.headerBytes = 1024;
  ASSERT_TRUE(eventually([&] { return service().queue().isReady(); }));
  EXPECT_EQ(ask("GET", "/health", "X: " + std::string(900, 'x') + "\r\n").status, 200);
  EXPECT_EQ(ask("GET", "/health", "X: " + std::string(1100, 'x') + "\r\n").status, 431);
}

TEST_F(HostileClientsTest, AHeadThatTricklesIsCutOff) {
  m_settings.limits.headerTime = 200ms;
  RawClient client(service().port());
  ASSERT_TRUE(client.send("GET /health HTTP/1.1\r\nX: "));
  EXPECT_TRUE(eventually([&] { return !client.send("x"); }));
}

TEST_F(HostileClientsTest, ABodyThatTricklesIsCutOff) {
  m_settings.limits.bodyTime = 200ms;
  RawClient client(service().port());
  ASSERT_TRUE(client.send("POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                          "Content-Length: 10000000\r\n\r\n"));
  EXPECT_TRUE(eventually([&] { return !client.send("x"); }));
  EXPECT_THAT(service().stop(), HasSubstr("POST /desktop/dictate 408"));
}

TEST_F(HostileClientsTest, AConnectionThatSaysNothingIsClosed) {
  m_settings.limits.idleTime = 50ms;
  EXPECT_TRUE(RawClient(service().port()).waitForEnd());
}

TEST_F(HostileClientsTest, ABodyThatEndsEarlyHarmsNobody) {
  {
    RawClient client(service().port());
    ASSERT_TRUE(client.send("POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                            "Content-Length: 1000\r\n\r\nRIFF"));
  }
  EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 1U);
}

TEST_F(HostileClientsTest, AReaderThatNeverReadsIsCutOff) {
  m_settings.limits.answerTime = 200ms;
  RawClient client(service().port());
  const auto batch = [&] {
    std::string text;
    for (int index = 0; index < 1000; ++index) text += "GET /health HTTP/1.1\r\nHost: x\r\n\r\n";
    return text;
  }();
  // The answers fill both sockets' buffers, and then the server's patience ends.
  while (client.send(batch)) {
  }
  EXPECT_TRUE(client.waitForEnd());
  ASSERT_TRUE(eventually([&] { return service().queue().isReady(); }));
  EXPECT_EQ(ask("GET", "/health").status, 200);
}

TEST_F(HostileClientsTest, OneConnectionAboveTheLimitIsTurnedAway) {
  m_settings.limits.connections = 2;
  m_settings.limits.refusedTime = 100ms;
  RawClient first(service().port());
  RawClient second(service().port());
  const std::string_view health = "GET /health HTTP/1.1\r\nHost: x\r\n\r\n";
  ASSERT_TRUE(first.exchange(health) && second.exchange(health));
  RawClient third(service().port());
  const auto refused = third.read();
  ASSERT_TRUE(refused);
  EXPECT_EQ(refused->status, 503);
  EXPECT_TRUE(third.waitForEnd());
  first.close();
  EXPECT_TRUE(eventually([&] { return ask(health).status == 200; }));
}

}  // namespace
}  // namespace vemo::service
