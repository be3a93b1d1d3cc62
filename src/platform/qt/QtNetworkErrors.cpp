#include "platform/qt/QtNetworkErrors.h"

#include <QNetworkInterface>
#include <algorithm>
#include <array>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// What a certificate's fault is called.
UrlError codeOf(const QSslError& error) {
  switch (error.error()) {
    case QSslError::CertificateExpired:
      return UrlError::ServerCertificateHasBadDate;
    case QSslError::CertificateNotYetValid:
      return UrlError::ServerCertificateNotYetValid;
    case QSslError::SelfSignedCertificateInChain:
    case QSslError::UnableToGetIssuerCertificate:
    case QSslError::UnableToGetLocalIssuerCertificate:
    case QSslError::UnableToVerifyFirstCertificate:
      return UrlError::ServerCertificateHasUnknownRoot;
    default:
      return UrlError::ServerCertificateUntrusted;
  }
}

/// The gravest fault stands for all: an unknown signer makes everything else the certificate says
/// worthless.
UrlError codeOf(const QList<QSslError>& errors) {
  static constexpr std::array gravestFirst = {
      UrlError::ServerCertificateHasUnknownRoot,
      UrlError::ServerCertificateUntrusted,
      UrlError::ServerCertificateHasBadDate,
      UrlError::ServerCertificateNotYetValid,
  };
  for (const UrlError code : gravestFirst) {
    const auto isThisOne = [code](const QSslError& error) { return codeOf(error) == code; };
    if (std::ranges::any_of(errors, isThisOne)) return code;
  }
  return UrlError::SecureConnectionFailed;
}

QString descriptionOf(UrlError code) {
  switch (code) {
    case UrlError::Unknown:
      return u"the request failed for an unknown reason"_s;
    case UrlError::Cancelled:
      return u"the request was cancelled"_s;
    case UrlError::BadUrl:
      return u"the address or a header of the request is malformed"_s;
    case UrlError::TimedOut:
      return u"the request timed out"_s;
    case UrlError::UnsupportedUrl:
      return u"the address is neither http nor https"_s;
    case UrlError::CannotFindHost:
      return u"the host name does not resolve"_s;
    case UrlError::CannotConnectToHost:
      return u"the host refused the connection"_s;
    case UrlError::NetworkConnectionLost:
      return u"the connection was lost"_s;
    case UrlError::DnsLookupFailed:
      return u"the name service did not answer"_s;
    case UrlError::TooManyRedirects:
      return u"the server redirects without end"_s;
    case UrlError::ResourceUnavailable:
      return u"the resource is unavailable"_s;
    case UrlError::NotConnectedToInternet:
      return u"this machine is not connected to a network"_s;
    case UrlError::BadServerResponse:
      return u"the server broke the protocol"_s;
    case UrlError::CannotDecodeContent:
      return u"the body could not be decompressed"_s;
    case UrlError::CannotParseResponse:
      return u"the answer is not HTTP"_s;
    case UrlError::SecureConnectionFailed:
      return u"no secure connection could be made"_s;
    case UrlError::ServerCertificateHasBadDate:
      return u"the server's certificate has expired"_s;
    case UrlError::ServerCertificateUntrusted:
      return u"the server's certificate is not trusted"_s;
    case UrlError::ServerCertificateHasUnknownRoot:
      return u"the server's certificate is signed by an unknown authority"_s;
    case UrlError::ServerCertificateNotYetValid:
      return u"the server's certificate is not yet valid"_s;
  }
  return u"the request failed"_s;
}

}  // namespace

Connectivity currentConnectivity() {
  const auto interfaces = QNetworkInterface::allInterfaces();
  const bool isUp = std::ranges::any_of(interfaces, [](const QNetworkInterface& interface) {
    const auto flags = interface.flags();
    return flags.testFlag(QNetworkInterface::IsRunning) &&
           !flags.testFlag(QNetworkInterface::IsLoopBack) && !interface.addressEntries().isEmpty();
  });
  return isUp ? Connectivity::Up : Connectivity::Down;
}

UrlError urlErrorFor(QNetworkReply::NetworkError error, const QList<QSslError>& certificateErrors,
                     Connectivity connectivity) {
  switch (error) {
    case QNetworkReply::ConnectionRefusedError:
      return UrlError::CannotConnectToHost;
    // A body that can't be sent a second time is what stops Qt from repeating a request whose
    // connection broke.
    case QNetworkReply::ContentReSendError:
    case QNetworkReply::RemoteHostClosedError:
    case QNetworkReply::TemporaryNetworkFailureError:
      return UrlError::NetworkConnectionLost;
    case QNetworkReply::HostNotFoundError:
      return connectivity == Connectivity::Up ? UrlError::CannotFindHost
                                              : UrlError::NotConnectedToInternet;
    case QNetworkReply::UnknownNetworkError:
      return connectivity == Connectivity::Up ? UrlError::CannotConnectToHost
                                              : UrlError::NotConnectedToInternet;
    case QNetworkReply::NetworkSessionFailedError:
      return UrlError::NotConnectedToInternet;
    case QNetworkReply::TimeoutError:
    case QNetworkReply::ProxyTimeoutError:
      return UrlError::TimedOut;
    case QNetworkReply::OperationCanceledError:
      return UrlError::Cancelled;
    case QNetworkReply::SslHandshakeFailedError:
      return codeOf(certificateErrors);
    case QNetworkReply::TooManyRedirectsError:
      return UrlError::TooManyRedirects;
    case QNetworkReply::ProxyConnectionRefusedError:
    case QNetworkReply::ProxyConnectionClosedError:
    case QNetworkReply::ProxyNotFoundError:
    case QNetworkReply::ProxyAuthenticationRequiredError:
    case QNetworkReply::UnknownProxyError:
      return UrlError::CannotConnectToHost;
    case QNetworkReply::ProtocolUnknownError:
      return UrlError::UnsupportedUrl;
    case QNetworkReply::ProtocolInvalidOperationError:
      return UrlError::BadServerResponse;
    case QNetworkReply::ProtocolFailure:
      return UrlError::CannotParseResponse;
    case QNetworkReply::UnknownContentError:
      return UrlError::CannotDecodeContent;
    default:
      return UrlError::Unknown;
  }
}

HttpError httpErrorFor(UrlError code) {
  return {.code = code, .description = descriptionOf(code)};
}

}  // namespace vemo
