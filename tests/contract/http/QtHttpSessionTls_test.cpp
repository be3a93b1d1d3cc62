// Certificates are verified, always.
#include "QtHttpFixture.h"
#include "TestCertificates.h"

namespace vemo {
namespace {

class QtHttpSessionTlsTest : public QtHttpFixture {
 protected:
  static void SetUpTestSuite() {
    certificates = new TestCertificates;
    certificates->trustTheTrustedOne();
  }
  static void TearDownTestSuite() { delete std::exchange(certificates, nullptr); }

  /// The error of a request to a server with this certificate.
  std::optional<UrlError> errorWith(const QSslConfiguration& tls) {
    const TestHttpServer server(TestHttpServer::Manner::Answers, tls);
    const auto exchange = send(post(server.url(u"/status/200"_s)));
    EXPECT_EQ(server.requests().size(), 0u) << "the request went to a server nobody vouches for";
    return exchange.error();
  }

  static inline TestCertificates* certificates = nullptr;
};

TEST_F(QtHttpSessionTlsTest, AServerWithATrustedCertificateIsAnswered) {
  const TestHttpServer server(TestHttpServer::Manner::Answers,
                              certificates->server(u"trusted"_s, u"localhost"_s));
  for (int i = 0; i < 3; ++i) {
    const auto exchange = send(post(server.url(u"/status/200"_s)));
    EXPECT_EQ(exchange.status(), 200);
    EXPECT_EQ(exchange.body(), "body of 200");
  }
  EXPECT_EQ(server.connectionCount(), 1);
  EXPECT_TRUE(server.requests().at(0).head.contains("Content-Type: audio/wav"));
}

TEST_F(QtHttpSessionTlsTest, ACertificateOfAnUnknownAuthorityIsRefused) {
  EXPECT_EQ(errorWith(certificates->server(u"unknown"_s, u"localhost"_s)),
            UrlError::ServerCertificateHasUnknownRoot);
}

TEST_F(QtHttpSessionTlsTest, ASelfSignedCertificateIsRefused) {
  EXPECT_EQ(errorWith(certificates->selfSignedServer()), UrlError::ServerCertificateUntrusted);
}

TEST_F(QtHttpSessionTlsTest, ACertificateForAnotherHostIsRefused) {
  EXPECT_EQ(errorWith(certificates->server(u"trusted"_s, u"example.org"_s)),
            UrlError::ServerCertificateUntrusted);
}

TEST_F(QtHttpSessionTlsTest, AnExpiredCertificateIsRefused) {
  EXPECT_EQ(errorWith(certificates->server(u"trusted"_s, u"localhost"_s, u"20200101000000Z"_s,
                                           u"20210101000000Z"_s)),
            UrlError::ServerCertificateHasBadDate);
}

TEST_F(QtHttpSessionTlsTest, ACertificateOfTheFutureIsRefused) {
  EXPECT_EQ(errorWith(certificates->server(u"trusted"_s, u"localhost"_s, u"20980101000000Z"_s,
                                           u"20990101000000Z"_s)),
            UrlError::ServerCertificateNotYetValid);
}

TEST_F(QtHttpSessionTlsTest, TheSeventeenthCertificateIsAsGoodAsTheFirst) {
  TestCertificates many;
  for (int i = 1; i < 17; ++i) many.server(u"trusted"_s, u"localhost"_s);
  EXPECT_FALSE(many.server(u"trusted"_s, u"localhost"_s).localCertificate().isNull());
}

TEST_F(QtHttpSessionTlsTest, AServerThatSpeaksNoTlsGivesNoSecureConnection) {
  const TestHttpServer plain;
  QUrl url = plain.url(u"/status/200"_s);
  url.setScheme(u"https"_s);
  HttpRequest request = post(url);
  request.timeout = 500ms;  // it takes the handshake for a request that isn't complete yet
  EXPECT_EQ(send(request).error(), UrlError::TimedOut);
}

TEST_F(QtHttpSessionTlsTest, AConnectionThatIsClosedInTheHandshakeIsAFailure) {
  const TestHttpServer closing(TestHttpServer::Manner::ClosesAtOnce, QSslConfiguration());
  const auto error = send(post(closing.url(u"/"_s))).error();
  EXPECT_TRUE(error == UrlError::NetworkConnectionLost || error == UrlError::SecureConnectionFailed)
      << static_cast<int>(error.value_or(UrlError::Unknown));
}

TEST_F(QtHttpSessionTlsTest, CancellingWithinTheHandshakeLeavesNothing) {
  TestHttpServer deaf(TestHttpServer::Manner::NeverReads, QSslConfiguration());
  Exchange exchange;
  start(exchange, session, post(deaf.url(u"/x"_s)));
  ASSERT_TRUE(loop.runUntil([&deaf] { return deaf.openConnectionCount() == 1; }));
  exchange.task.cancel();
  ASSERT_TRUE(runUntilFinished(exchange));
  EXPECT_EQ(exchange.error(), UrlError::Cancelled);
  deaf.beginReading();
  EXPECT_TRUE(loop.runUntil([&deaf] { return deaf.openConnectionCount() == 0; }));
}

TEST_F(QtHttpSessionTlsTest, ARequestOverTlsWhoseConnectionBreaksIsSentOnceAndFails) {
  const TestHttpServer server(TestHttpServer::Manner::Answers,
                              certificates->server(u"trusted"_s, u"localhost"_s));
  for (const QString& path : {u"/close-before-answer"_s, u"/reset-before-answer"_s,
                              u"/close-in-headers"_s, u"/close-in-body"_s}) {
    SCOPED_TRACE(path.toStdString());
    const std::size_t before = server.requests().size();
    EXPECT_EQ(send(post(server.url(path))).error(), UrlError::NetworkConnectionLost);
    EXPECT_EQ(server.requests().size(), before + 1);
  }
}

}  // namespace
}  // namespace vemo
