#include "platform/qt/QtHttpSession.h"

#include <QTcpServer>

#include "QtHttpFixture.h"
#include "platform/qt/QtNetworkErrors.h"

namespace vemo {
namespace {

class QtHttpSessionTest : public QtHttpFixture {
 protected:
  void expectNothingLeft() {
    EXPECT_TRUE(loop.runUntil([this] { return server.openConnectionCount() == 0; }));
  }

  TestHttpServer server;
};

TEST_F(QtHttpSessionTest, HeadersAreSentInTheirOrderAndSpelling) {
  HttpRequest request = post(server.url(u"/status/200?b=2&a=saaras:v4&c=%2B"_s));
  request.headers = {{"Content-Type"_ba, "audio/wav"_ba},
                     {"Authorization"_ba, "Bearer t0ken"_ba},
                     {"x-CamelCase-Name"_ba, "Café 👩‍👧"_ba},
                     {"x-empty"_ba, ""_ba},
                     {"a-last"_ba, "1"_ba}};
  send(request);
  const QByteArray head = server.requests().at(0).head;
  EXPECT_TRUE(head.startsWith("POST /status/200?b=2&a=saaras:v4&c=%2B HTTP/1.1\r\n"))
      << head.toStdString();
  qsizetype position = 0;
  for (const auto& [name, value] : request.headers) {
    const qsizetype found = head.indexOf("\r\n" + name + ": " + value + "\r\n", position);
    EXPECT_GT(found, 0) << name.toStdString() << " in\n" << head.toStdString();
    position = std::max(position, found);
  }
}

TEST_F(QtHttpSessionTest, HeadersThatNobodyAskedForTellNothingOfTheUser) {
  send(post(server.url(u"/status/200"_s)));
  const QByteArray head = server.requests().at(0).head;
  EXPECT_TRUE(head.contains("\r\nAccept-Language: *\r\n")) << head.toStdString();
  EXPECT_TRUE(head.contains("\r\nUser-Agent: Vemo\r\n")) << head.toStdString();
  EXPECT_EQ(head.toLower().count("accept-language"), 1) << head.toStdString();
}

TEST_F(QtHttpSessionTest, TheBodyArrivesByteForByteWithItsLength) {
  QByteArray body;
  for (int i = 0; i < 3'000'000; ++i) body += static_cast<char>(i * 31 + i / 251);
  EXPECT_EQ(send(post(server.url(u"/status/200"_s), body)).status(), 200);
  EXPECT_EQ(server.requests().at(0).body, body);
  EXPECT_EQ(send(post(server.url(u"/status/200"_s), {})).status(), 200);
  EXPECT_TRUE(server.requests().at(1).head.contains("Content-Length: 0"));
}

TEST_F(QtHttpSessionTest, EachMethodIsSentAsItIs) {
  for (const QByteArray& method : {"GET"_ba, "PUT"_ba, "PATCH"_ba, "DELETE"_ba}) {
    HttpRequest request = post(server.url(u"/status/200"_s));
    request.method = method;
    if (method == "GET") request.body.clear();
    EXPECT_EQ(send(request).status(), 200);
    EXPECT_TRUE(server.requests().back().head.startsWith(method + " "));
  }
}

TEST_F(QtHttpSessionTest, ARedirectIsAnAnswerAndNotFollowed) {
  const auto exchange = send(post(server.url(u"/status/302"_s)));
  EXPECT_EQ(exchange.status(), 302);
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(QtHttpSessionTest, NeitherCookiesNorCachedAnswersAreKept) {
  HttpRequest request = post(server.url(u"/cookie"_s), {});
  request.method = "GET"_ba;
  send(request);
  send(request);
  ASSERT_EQ(server.requests().size(), 2u);
  EXPECT_FALSE(server.requests().at(1).head.toLower().contains("\r\ncookie:"));
}

TEST_F(QtHttpSessionTest, ARequestForAPasswordIsAnAnswer) {
  const auto exchange = send(post(server.url(u"/unauthorized"_s)));
  EXPECT_EQ(exchange.status(), 401);
  EXPECT_EQ(exchange.body(), "no");
  EXPECT_EQ(server.requests().size(), 1u);
}

TEST_F(QtHttpSessionTest, AConnectionIsUsedAgain) {
  for (int i = 0; i < 5; ++i) send(post(server.url(u"/status/200"_s)));
  EXPECT_EQ(server.connectionCount(), 1);
}

TEST_F(QtHttpSessionTest, AConnectionThatTheServerClosedMeanwhileIsNotUsedAgain) {
  for (int i = 0; i < 5; ++i) {
    EXPECT_EQ(send(post(server.url(u"/close-after-answer"_s))).status(), 200);
    ASSERT_TRUE(loop.runUntil([this] { return server.openConnectionCount() == 0; }));
  }
  EXPECT_EQ(server.requests().size(), 5u);
}

TEST_F(QtHttpSessionTest, TwoSessionsHaveConnectionsOfTheirOwn) {
  QtHttpSession other(mainThread);
  Exchange first;
  Exchange second;
  start(first, session, post(server.url(u"/status/200"_s)));
  ASSERT_TRUE(runUntilFinished(first));
  start(second, other, post(server.url(u"/status/200"_s)));
  ASSERT_TRUE(runUntilFinished(second));
  EXPECT_EQ(server.connectionCount(), 2);
}

TEST_F(QtHttpSessionTest, ASessionWhoseConnectionsAreAllStuckHoldsUpNoOther) {
  QtHttpSession other(mainThread);
  std::vector<Exchange> stuck(12);
  for (Exchange& exchange : stuck) start(exchange, session, post(server.url(u"/never"_s)));
  ASSERT_TRUE(loop.runUntil([this] { return server.requests().size() >= 6; }));
  Exchange quick;
  start(quick, other, post(server.url(u"/status/200"_s)));
  ASSERT_TRUE(runUntilFinished(quick));
  EXPECT_EQ(quick.status(), 200);
  for (const Exchange& exchange : stuck) {
    EXPECT_FALSE(exchange.isFinished());
    exchange.task.cancel();
  }
  for (const Exchange& exchange : stuck) EXPECT_TRUE(runUntilFinished(exchange));
}

TEST_F(QtHttpSessionTest, ARequestWhoseConnectionBreaksIsSentOnceAndFails) {
  for (const QString& path : {u"/close-before-answer"_s, u"/reset-before-answer"_s,
                              u"/close-in-headers"_s, u"/close-in-body"_s}) {
    SCOPED_TRACE(path.toStdString());
    const std::size_t before = server.requests().size();
    EXPECT_EQ(send(post(server.url(path))).error(), UrlError::NetworkConnectionLost);
    EXPECT_EQ(server.requests().size(), before + 1);
  }
  expectNothingLeft();
}

TEST_F(QtHttpSessionTest, ABrokenConnectionThatWasUsedBeforeIsNoReasonToSendTwice) {
  send(post(server.url(u"/status/200"_s)));
  EXPECT_EQ(send(post(server.url(u"/close-before-answer"_s))).error(),
            UrlError::NetworkConnectionLost);
  send(post(server.url(u"/status/200"_s)));
  EXPECT_EQ(send(post(server.url(u"/close-before-answer"_s), {})).error(),
            UrlError::NetworkConnectionLost);
  EXPECT_EQ(server.requests().size(), 4u);
}

TEST_F(QtHttpSessionTest, AServerThatClosesAtOnceIsALostConnection) {
  const TestHttpServer closing(TestHttpServer::Manner::ClosesAtOnce);
  EXPECT_EQ(send(post(closing.url(u"/"_s))).error(), UrlError::NetworkConnectionLost);
}

TEST_F(QtHttpSessionTest, AnUploadWhoseConnectionIsResetIsALostConnection) {
  const TestHttpServer resetting(TestHttpServer::Manner::ResetsOnFirstBytes);
  for (const qsizetype size : {100'000, 20'000'000}) {
    EXPECT_EQ(send(post(resetting.url(u"/"_s), QByteArray(size, 'u'))).error(),
              UrlError::NetworkConnectionLost);
  }
}

TEST_F(QtHttpSessionTest, ARefusedConnectionCannotConnect) {
  QTcpServer unused;
  ASSERT_TRUE(unused.listen(QHostAddress::LocalHost));
  QUrl url = server.url(u"/"_s);
  url.setPort(unused.serverPort());
  unused.close();
  EXPECT_EQ(send(post(url)).error(), UrlError::CannotConnectToHost);
}

TEST_F(QtHttpSessionTest, AHostThatDoesNotResolveCannotBeFound) {
  const auto exchange = send(post(QUrl(u"http://no-such-host.invalid/?secret=1"_s)));
  EXPECT_EQ(exchange.error(), currentConnectivity() == Connectivity::Up
                                  ? UrlError::CannotFindHost
                                  : UrlError::NotConnectedToInternet);
  EXPECT_FALSE(exchange.result->error().description.contains(u"secret"_s));
}

TEST_F(QtHttpSessionTest, WhatCannotBeSentIsRefusedBeforeAnyTraffic) {
  EXPECT_EQ(send(post(QUrl(u"ftp://localhost/x"_s))).error(), UrlError::UnsupportedUrl);
  EXPECT_EQ(send(post(QUrl(u"file:///etc/passwd"_s))).error(), UrlError::UnsupportedUrl);
  EXPECT_EQ(send(post(QUrl())).error(), UrlError::BadUrl);
  EXPECT_EQ(send(post(QUrl(u"http:///x"_s))).error(), UrlError::BadUrl);
  for (const QByteArray& value : {"a\r\nx-evil: 1"_ba, "a\nb"_ba, QByteArray("a\0b", 3)}) {
    HttpRequest request = post(server.url(u"/status/200"_s));
    request.headers.emplace_back("x-name"_ba, value);
    EXPECT_EQ(send(request).error(), UrlError::BadUrl);
  }
  EXPECT_EQ(server.connectionCount(), 0);
}

TEST_F(QtHttpSessionTest, AnAnswerThatIsNoHttpIsAFailure) {
  for (const QString& path : {u"/not-http"_s, u"/bad-gzip"_s, u"/close-in-chunks"_s}) {
    const auto exchange = send(post(server.url(path)));
    EXPECT_TRUE(exchange.error()) << path.toStdString();
  }
  EXPECT_EQ(server.requests().size(), 3u);
}

TEST_F(QtHttpSessionTest, HoweverManyRequestsAreStuckTheNextOneGoesOutAtOnce) {
  const TestHttpServer server;
  std::array<Exchange, 20> stuck;
  for (auto& exchange : stuck) start(exchange, session, post(server.url(u"/never"_s)));
  EXPECT_EQ(send(post(server.url(u"/status/200"_s))).status(), 200);
  EXPECT_TRUE(loop.runUntil([&] { return server.requests().size() == stuck.size() + 1; }));
  for (auto& exchange : stuck) exchange.task.cancel();
  for (auto& exchange : stuck) EXPECT_TRUE(runUntilFinished(exchange));
  EXPECT_TRUE(loop.runUntil([&] { return server.openConnectionCount() <= 6; }));
}

TEST_F(QtHttpSessionTest, EveryStatusIsAnAnswerWithItsBody) {
  const TestHttpServer server;
  for (int status = 200; status < 600; ++status) {
    const auto exchange = send(post(server.url(u"/status/%1"_s.arg(status))));
    EXPECT_EQ(exchange.status(), status)
        << static_cast<int>(exchange.error().value_or(UrlError::Unknown));
    const bool isBodiless = status == 204 || status == 304;
    EXPECT_EQ(exchange.body(), isBodiless ? ""_ba : "body of " + QByteArray::number(status));
  }
}

TEST_F(QtHttpSessionTest, ABodyWhoseChunksMakeNoSenseHoldsNothing) {
  EXPECT_EQ(send(post(server.url(u"/bad-chunks"_s))).body(), "");
}

TEST_F(QtHttpSessionTest, SilenceWithinTheBodyTimesOut) {
  HttpRequest request = post(server.url(u"/silent-in-body"_s));
  request.timeout = 50ms;
  EXPECT_EQ(send(request).error(), UrlError::TimedOut);
  expectNothingLeft();
}

TEST_F(QtHttpSessionTest, ABodyThatTricklesDoesNotCountAsSilence) {
  QtHttpSession patient(mainThread, {.requestTimeout = 20s, .resourceTimeout = 3s});
  HttpRequest request = post(server.url(u"/trickle"_s));
  request.timeout = 2s;
  Exchange exchange;
  const auto startedAt = std::chrono::steady_clock::now();
  start(exchange, patient, request);
  ASSERT_TRUE(runUntilFinished(exchange));
  EXPECT_EQ(exchange.error(), UrlError::TimedOut);
  EXPECT_GE(std::chrono::steady_clock::now() - startedAt, 3s);
}

TEST_F(QtHttpSessionTest, ABodyOf100MegabytesIsCutAtTheLimitAndItsTransferEnded) {
  const auto exchange = send(post(server.url(u"/big"_s)));
  EXPECT_EQ(exchange.status(), 200);
  EXPECT_EQ(exchange.body().size(), maximumHttpBodySize);
  EXPECT_EQ(exchange.body().count('b'), maximumHttpBodySize);
  expectNothingLeft();
}

TEST_F(QtHttpSessionTest, CancellingBeforeTheConnectionStandsLeavesNothing) {
  Exchange exchange;
  start(exchange, session, post(server.url(u"/never"_s)));
  ASSERT_TRUE(loop.runUntil([&exchange] { return exchange.isStarted; }));
  exchange.task.cancel();
  ASSERT_TRUE(runUntilFinished(exchange));
  EXPECT_EQ(exchange.error(), UrlError::Cancelled);
  expectNothingLeft();
}

TEST_F(QtHttpSessionTest, CancellingWithinTheBodyLeavesNothing) {
  Exchange exchange;
  start(exchange, session, post(server.url(u"/trickle"_s)));
  ASSERT_TRUE(loop.runUntil([this] { return server.requests().size() == 1; }));
  exchange.task.cancel();
  ASSERT_TRUE(runUntilFinished(exchange));
  EXPECT_EQ(exchange.error(), UrlError::Cancelled);
  expectNothingLeft();
}

TEST_F(QtHttpSessionTest, CancellingAnUploadThatNobodyReadsLeavesNothing) {
  TestHttpServer deaf(TestHttpServer::Manner::NeverReads);
  Exchange exchange;
  start(exchange, session, post(deaf.url(u"/x"_s), QByteArray(50'000'000, 'u')));
  ASSERT_TRUE(loop.runUntil([&deaf] { return deaf.openConnectionCount() == 1; }));
  exchange.task.cancel();
  ASSERT_TRUE(runUntilFinished(exchange));
  EXPECT_EQ(exchange.error(), UrlError::Cancelled);
  deaf.beginReading();
  EXPECT_TRUE(loop.runUntil([&deaf] { return deaf.openConnectionCount() == 0; }));
}

TEST_F(QtHttpSessionTest, AnUploadThatNobodyReadsTimesOut) {
  TestHttpServer deaf(TestHttpServer::Manner::NeverReads);
  HttpRequest request = post(deaf.url(u"/x"_s), QByteArray(50'000'000, 'u'));
  request.timeout = 300ms;
  EXPECT_EQ(send(request).error(), UrlError::TimedOut);
}

TEST_F(QtHttpSessionTest, ARequestThatIsCutShortDisturbsNoOtherOfItsSession) {
  Exchange stuck;
  Exchange running;
  start(stuck, session, post(server.url(u"/never"_s)));
  start(running, session, post(server.url(u"/big"_s)));
  ASSERT_TRUE(loop.runUntil([this] { return server.requests().size() == 2; }));
  stuck.task.cancel();
  ASSERT_TRUE(runUntilFinished(stuck));
  ASSERT_TRUE(runUntilFinished(running));
  EXPECT_EQ(running.status(), 200);
  EXPECT_EQ(send(post(server.url(u"/status/200"_s))).status(), 200);
}

TEST_F(QtHttpSessionTest, ManyStuckConnectionsDoNotUseUpTheSession) {
  TestHttpServer deaf(TestHttpServer::Manner::NeverReads);
  for (int i = 0; i < 10; ++i) {
    HttpRequest request = post(deaf.url(u"/x"_s));
    request.timeout = 20ms;
    EXPECT_EQ(send(request).error(), UrlError::TimedOut);
  }
  deaf.beginReading();
  EXPECT_TRUE(loop.runUntil([&deaf] { return deaf.openConnectionCount() == 0; }));
}

TEST_F(QtHttpSessionTest, DestroyingTheSessionAfterItsOwnersLeavesNothing) {
  auto shortLived = std::make_unique<QtHttpSession>(mainThread);
  Exchange exchange;
  start(exchange, *shortLived, post(server.url(u"/never"_s)));
  ASSERT_TRUE(loop.runUntil([this] { return server.requests().size() == 1; }));
  scope.reset();
  shortLived.reset();
  expectNothingLeft();
}

}  // namespace
}  // namespace vemo
