// A thousand peers that send a byte a second, and connections of which one half is dead.
#include <gmock/gmock.h>
#include <sys/resource.h>

#include "support/HttpServiceTest.h"

namespace vemo::service {
namespace {

using testing::HasSubstr;
using namespace std::chrono_literals;

class SlowClientsTest : public HttpServiceTest {
 protected:
  /// Both ends of every connection live in this process.
  static void allowDescriptors(rlim_t count) {
    rlimit limit = {};
    ASSERT_EQ(::getrlimit(RLIMIT_NOFILE, &limit), 0);
    if (limit.rlim_cur >= count) return;
    limit.rlim_cur = count;
    ASSERT_EQ(::setrlimit(RLIMIT_NOFILE, &limit), 0) << "the hard limit is too low";
  }
};

TEST_F(SlowClientsTest, AThousandClientsOfOneByteASecondAreCutAndOthersAreServedMeanwhile) {
  allowDescriptors(4096);
  m_settings.limits.headerTime = 2s;
  m_settings.limits.bodyTime = 2s;
  m_settings.limits.idleTime = 2s;
  m_settings.limits.connections = 1100;
  const std::string heads[] = {"", "POST /desktop/dictate HTTP/1.1\r\nX: ",
                               "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                                   "Content-Length: 10000000\r\n\r\nRIFF",
                               "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                                   "Transfer-Encoding: chunked\r\n\r\n1"};
  std::vector<std::unique_ptr<RawClient>> slow;
  for (std::size_t index = 0; index < 1000; ++index) {
    slow.push_back(std::make_unique<RawClient>(service().port()));
    ASSERT_TRUE(slow.back()->isConnected());
    slow.back()->send(heads[index % 4]);
  }
  auto nextByte = std::chrono::steady_clock::now();
  int servedMeanwhile = 0;
  EXPECT_TRUE(eventually([&] {
    EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
    ++servedMeanwhile;
    if (std::chrono::steady_clock::now() < nextByte) return false;
    nextByte += 1s;
    std::erase_if(slow, [](const auto& client) { return !client->send("1"); });
    return slow.empty();
  }));
  EXPECT_GT(servedMeanwhile, 1);
}

TEST_F(SlowClientsTest, AClientThatClosesItsSendingSideInItsHeadOrBodyIsCut) {
  for (const auto& start : {std::string("POST /desktop/di"),
                            "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                                "Content-Length: 1000\r\n\r\nRIFF"}) {
    RawClient client(service().port());
    ASSERT_TRUE(client.send(start));
    client.finishSending();
    EXPECT_TRUE(client.waitForEnd());
  }
  EXPECT_EQ(ask(service().post(dictate, m_wav)).status, 200);
  EXPECT_EQ(m_script.startedCount(), 1U);
}

TEST_F(SlowClientsTest, AClientThatClosesItsSendingSideBeforeItsAnswerFreesItsPlace) {
  const auto running = occupyWorker();
  running->finishSending();
  EXPECT_TRUE(eventually([&] { return m_script.runningCount() == 0; }));
  EXPECT_TRUE(running->waitForEnd());
}

TEST_F(SlowClientsTest, AChunkedBodyWhoseEndNeverComesIsCut) {
  m_settings.limits.bodyTime = 100ms;
  RawClient client(service().port());
  ASSERT_TRUE(client.send("POST /desktop/dictate HTTP/1.1\r\nHost: x\r\n" + authorization() +
                          "Transfer-Encoding: chunked\r\n\r\n4\r\nRIFF\r\n"));
  EXPECT_TRUE(client.waitForEnd());
  EXPECT_THAT(service().stop(), HasSubstr("POST /desktop/dictate 408"));
}

}  // namespace
}  // namespace vemo::service
