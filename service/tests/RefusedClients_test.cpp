// Clients that are refused while they are still sending: they get to see why, within bounds.
#include <gmock/gmock.h>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class RefusedClientsTest : public HttpServiceTest {
 protected:
  static constexpr std::size_t megabyte = 1024 * 1024;

  static std::string head(std::size_t length, const std::string& headers = "") {
    return "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + headers +
           "Content-Length: " + std::to_string(length) + "\r\n\r\n";
  }
};

TEST_F(RefusedClientsTest, AClientThatSendsItsWholeBodyBeforeItReadsSeesThatItIsTooLong) {
  m_settings.limits.bodyBytes = 4 * megabyte;
  RawClient client(service().port());
  const auto length = 15 * megabyte;
  EXPECT_TRUE(client.send(head(length, authorization()) + std::string(length, 'x')));
  const auto answer = client.read();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 413);
  EXPECT_THAT(answer->body, HasSubstr("too long"));
  EXPECT_TRUE(client.waitForEnd());
}

TEST_F(RefusedClientsTest, AClientWithoutATokenSeesThatToo) {
  RawClient client(service().port());
  const auto length = 15 * megabyte;
  EXPECT_TRUE(client.send(head(length) + std::string(length, 'x')));
  EXPECT_EQ(client.read().value_or(RawAnswer{}).status, 401);
}

TEST_F(RefusedClientsTest, TheConnectionStaysWholeUntilTheAnnouncedBodyHasCome) {
  m_settings.limits.bodyBytes = 1000;
  RawClient client(service().port());
  EXPECT_EQ(client.exchange(head(3000, authorization())).value_or(RawAnswer{}).status, 413);
  EXPECT_TRUE(client.send(std::string(2999, 'x')));
  EXPECT_FALSE(client.hasInput());
  EXPECT_TRUE(client.send("x"));
  EXPECT_TRUE(eventually([&] { return client.hasInput(); }));
  client.finishSending();
  EXPECT_TRUE(client.waitForEnd());
}

TEST_F(RefusedClientsTest, WhoSendsFarTooMuchIsCutOff) {
  m_settings.limits.bodyBytes = 1000;
  RawClient client(service().port());
  ASSERT_TRUE(client.send(head(1'000 * megabyte, authorization())));
  const std::string block(100'000, 'x');
  EXPECT_TRUE(eventually([&] { return !client.send(block); }));
  EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
}

TEST_F(RefusedClientsTest, WhoSendsTooSlowlyIsCutOff) {
  m_settings.limits.bodyBytes = 1000;
  m_settings.limits.refusedTime = 100ms;
  RawClient client(service().port());
  EXPECT_EQ(client.exchange(head(3000, authorization())).value_or(RawAnswer{}).status, 413);
  EXPECT_TRUE(client.waitForEnd());
}

TEST_F(RefusedClientsTest, AClientAboveTheLimitOfConnectionsSeesThatTheServiceIsBusy) {
  m_settings.limits.connections = 1;
  const auto running = occupyWorker();
  RawClient client(service().port());
  EXPECT_TRUE(client.send(service().post(dictate, std::string(4 * megabyte, 'x'))));
  const auto answer = client.read();
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 503);
  EXPECT_THAT(answer->head, HasSubstr("Retry-After: 1"));
  m_script.letGo();
  EXPECT_EQ(running->read().value_or(RawAnswer{}).status, 200);
}

TEST_F(RefusedClientsTest, TurnedAwayClientsTakeNoPlaceFromOthers) {
  m_settings.limits.connections = 1;
  const std::string_view health = "GET /health HTTP/1.1\r\nHost: x\r\n\r\n";
  RawClient first(service().port());
  ASSERT_TRUE(first.exchange(health));
  std::vector<std::unique_ptr<RawClient>> lingering;
  for (int index = 0; index < 200; ++index)
    lingering.push_back(std::make_unique<RawClient>(service().port()));
  EXPECT_EQ(lingering.front()->read().value_or(RawAnswer{}).status, 503);
  // Past the first few, clients are cut without a word.
  EXPECT_FALSE(lingering.back()->read());
  EXPECT_TRUE(first.exchange(health));
  first.close();
  EXPECT_TRUE(eventually([&] { return ask(health).status == 200; }));
}

TEST_F(RefusedClientsTest, ARefusedClientThatLingersDoesNotDelayTheEnd) {
  m_settings.limits.bodyBytes = 1000;
  m_settings.limits.refusedTime = 1h;
  m_settings.limits.shutdownTime = 1h;
  RawClient client(service().port());
  EXPECT_EQ(client.exchange(head(3000, authorization())).value_or(RawAnswer{}).status, 413);
  EXPECT_THAT(service().stop(), HasSubstr("413"));
}

}  // namespace
}  // namespace vemo::service
