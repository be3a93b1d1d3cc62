#include "platform/qt/QtNetworkErrors.h"

#include <gtest/gtest.h>

#include <utility>

namespace vemo {
namespace {

UrlError codeOf(QNetworkReply::NetworkError error, Connectivity connectivity = Connectivity::Up) {
  return urlErrorFor(error, {}, connectivity);
}

UrlError codeOf(const QList<QSslError>& errors) {
  return urlErrorFor(QNetworkReply::SslHandshakeFailedError, errors, Connectivity::Up);
}

TEST(QtNetworkErrorsTest, EveryFailureHasItsCode) {
  const std::pair<QNetworkReply::NetworkError, UrlError> rows[] = {
      {QNetworkReply::ConnectionRefusedError, UrlError::CannotConnectToHost},
      {QNetworkReply::RemoteHostClosedError, UrlError::NetworkConnectionLost},
      {QNetworkReply::ContentReSendError, UrlError::NetworkConnectionLost},
      {QNetworkReply::TemporaryNetworkFailureError, UrlError::NetworkConnectionLost},
      {QNetworkReply::NetworkSessionFailedError, UrlError::NotConnectedToInternet},
      {QNetworkReply::TimeoutError, UrlError::TimedOut},
      {QNetworkReply::OperationCanceledError, UrlError::Cancelled},
      {QNetworkReply::TooManyRedirectsError, UrlError::TooManyRedirects},
      {QNetworkReply::ProxyNotFoundError, UrlError::CannotConnectToHost},
      {QNetworkReply::ProtocolUnknownError, UrlError::UnsupportedUrl},
      {QNetworkReply::ProtocolInvalidOperationError, UrlError::BadServerResponse},
      {QNetworkReply::ProtocolFailure, UrlError::CannotParseResponse},
      {QNetworkReply::UnknownContentError, UrlError::CannotDecodeContent},
  };
  for (const auto& [error, code] : rows) EXPECT_EQ(codeOf(error), code) << error;
}

TEST(QtNetworkErrorsTest, WithoutANetworkAHostThatIsNotFoundMeansThatThereIsNone) {
  for (const auto error : {QNetworkReply::HostNotFoundError, QNetworkReply::UnknownNetworkError})
    EXPECT_EQ(codeOf(error, Connectivity::Down), UrlError::NotConnectedToInternet);
  EXPECT_EQ(codeOf(QNetworkReply::HostNotFoundError), UrlError::CannotFindHost);
  EXPECT_EQ(codeOf(QNetworkReply::UnknownNetworkError), UrlError::CannotConnectToHost);
  EXPECT_EQ(codeOf(QNetworkReply::ConnectionRefusedError, Connectivity::Down),
            UrlError::CannotConnectToHost);
}

TEST(QtNetworkErrorsTest, CertificateFaultsHaveTheirCodes) {
  const std::pair<QSslError::SslError, UrlError> rows[] = {
      {QSslError::CertificateExpired, UrlError::ServerCertificateHasBadDate},
      {QSslError::CertificateNotYetValid, UrlError::ServerCertificateNotYetValid},
      {QSslError::UnableToGetLocalIssuerCertificate, UrlError::ServerCertificateHasUnknownRoot},
      {QSslError::SelfSignedCertificateInChain, UrlError::ServerCertificateHasUnknownRoot},
      {QSslError::SelfSignedCertificate, UrlError::ServerCertificateUntrusted},
      {QSslError::HostNameMismatch, UrlError::ServerCertificateUntrusted},
      {QSslError::CertificateRevoked, UrlError::ServerCertificateUntrusted},
  };
  for (const auto& [error, code] : rows) EXPECT_EQ(codeOf({QSslError(error)}), code) << error;
}

TEST(QtNetworkErrorsTest, AHandshakeThatFailsWithoutACertificateFaultIsNoSecureConnection) {
  EXPECT_EQ(codeOf(QList<QSslError>{}), UrlError::SecureConnectionFailed);
}

TEST(QtNetworkErrorsTest, TheGravestCertificateFaultCounts) {
  EXPECT_EQ(codeOf({QSslError(QSslError::CertificateExpired),
                    QSslError(QSslError::UnableToGetLocalIssuerCertificate)}),
            UrlError::ServerCertificateHasUnknownRoot);
  EXPECT_EQ(
      codeOf({QSslError(QSslError::CertificateExpired), QSslError(QSslError::HostNameMismatch)}),
      UrlError::ServerCertificateUntrusted);
}

TEST(QtNetworkErrorsTest, EveryCodeHasADescriptionOfItsOwn) {
  EXPECT_NE(httpErrorFor(UrlError::TimedOut).description,
            httpErrorFor(UrlError::CannotFindHost).description);
  EXPECT_EQ(httpErrorFor(UrlError::TimedOut).code, UrlError::TimedOut);
}

}  // namespace
}  // namespace vemo
