#include "platform/qt/QtLastRequest.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QTcpServer>

#include "TestHttpServer.h"
#include "fakes/OnceWithin.h"
#include "fakes/QtTestLoop.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class QtLastRequestTest : public testing::Test {
 protected:
  static constexpr auto limit = 300ms;
  /// What a busy machine may add to the shortest of a few waits.
  static constexpr auto allowance = 700ms;
  /// Far above what anything takes that doesn't wait to its limit.
  static constexpr auto generousLimit = 60s;

  std::chrono::milliseconds timeToSend(const QUrl& url, std::chrono::milliseconds longest = limit) {
    QElapsedTimer timer;
    timer.start();
    lastRequest.sendAndWait({.method = "POST"_ba,
                             .url = url,
                             .headers = {{"Content-Type"_ba, "application/json"_ba}},
                             .body = "{}"_ba,
                             .timeout = 2 * generousLimit},
                            longest);
    return std::chrono::milliseconds(timer.elapsed());
  }

  void expectAWaitOf(std::chrono::milliseconds longest, const QUrl& url) {
    EXPECT_TRUE(isOnceWithin(longest + allowance, [&] {
      EXPECT_GE(timeToSend(url, longest), longest - 5ms)
          << "a timer may be early by its resolution";
    }));
  }

  QtTestLoop loop;
  TestHttpServer server;
  QtLastRequest lastRequest;
};

TEST_F(QtLastRequestTest, AnAnswerEndsTheWait) {
  EXPECT_LT(timeToSend(server.url(u"/status/200"_s), generousLimit), generousLimit);
  ASSERT_EQ(server.requests().size(), 1);
  EXPECT_TRUE(server.requests()[0].head.contains("Content-Type: application/json\r\n"));
  EXPECT_EQ(server.requests()[0].body, "{}");
}

TEST_F(QtLastRequestTest, AFailureEndsTheWait) {
  EXPECT_LT(timeToSend(server.url(u"/reset-before-answer"_s), generousLimit), generousLimit);
  QTcpServer closed;
  ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
  const QUrl refusing(u"http://127.0.0.1:%1/"_s.arg(closed.serverPort()));
  closed.close();
  EXPECT_LT(timeToSend(refusing, generousLimit), generousLimit);
}

TEST_F(QtLastRequestTest, AServerThatStallsAtAnyStageIsWaitedForNoLongerThanAsked) {
  TestHttpServer deaf(TestHttpServer::Manner::NeverReads);
  for (const QUrl& url : {server.url(u"/never"_s), server.url(u"/silent-in-body"_s),
                          server.url(u"/trickle"_s), deaf.url(u"/status/200"_s)})
    expectAWaitOf(limit, url);
}

TEST_F(QtLastRequestTest, TwoSecondsAreTwoSeconds) {
  expectAWaitOf(2000ms, server.url(u"/trickle"_s));
}

}  // namespace
}  // namespace vemo
