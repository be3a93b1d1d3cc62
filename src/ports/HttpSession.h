// HTTP requests with time-outs and cancellation, over a connection pool of the session's own.
//
// Main thread only. TLS certificates are always verified. Redirects are answers, not followed. No
// credential, cookie or cache outlives a request.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUrl>
#include <chrono>
#include <expected>
#include <optional>
#include <stop_token>
#include <utility>
#include <vector>

#include "base/Task.h"

namespace vemo {

/// Why no answer came. The numbers are those that logs and events carry (the URL-loading error
/// codes of Apple's Foundation, NSURLError…).
enum class UrlError : int {
  Unknown = -1,
  Cancelled = -999,
  BadUrl = -1000,
  TimedOut = -1001,
  UnsupportedUrl = -1002,
  CannotFindHost = -1003,
  CannotConnectToHost = -1004,
  NetworkConnectionLost = -1005,
  DnsLookupFailed = -1006,
  TooManyRedirects = -1007,
  ResourceUnavailable = -1008,
  NotConnectedToInternet = -1009,
  BadServerResponse = -1011,
  CannotDecodeContent = -1016,
  CannotParseResponse = -1017,
  SecureConnectionFailed = -1200,
  ServerCertificateHasBadDate = -1201,
  ServerCertificateUntrusted = -1202,
  ServerCertificateHasUnknownRoot = -1203,
  ServerCertificateNotYetValid = -1204,
};

struct HttpError {
  UrlError code = UrlError::Unknown;
  QString description;  ///< for the log; holds no content of request or answer
};

struct HttpRequest {
  QByteArray method;
  QUrl url;
  /// Sent in this order, with this spelling.
  std::vector<std::pair<QByteArray, QByteArray>> headers;
  QByteArray body;
  /// Longest silence of the connection, before and within the answer.
  std::chrono::milliseconds timeout{0};

  /// Sets the header in its place, or appends it.
  void setHeader(const QByteArray& name, const QByteArray& value) {
    for (auto& header : headers) {
      if (header.first.compare(name, Qt::CaseInsensitive) == 0) {
        header.second = value;
        return;
      }
    }
    headers.emplace_back(name, value);
  }
};

struct HttpResponse {
  /// Absent when what answered did not speak HTTP.
  std::optional<int> status;
  /// At most maximumHttpBodySize: a longer body is cut there and its transfer ended.
  QByteArray body;
};

inline constexpr qsizetype maximumHttpBodySize = 16 * 1024 * 1024;

using HttpResult = std::expected<HttpResponse, HttpError>;

class HttpSession {
 public:
  virtual ~HttpSession() = default;

  /// Sends the request and waits for the whole answer. Ends with Cancelled when `stop` is
  /// requested, with TimedOut after the request's time-out or the session's limit for a whole
  /// transfer.
  virtual Task<HttpResult> send(HttpRequest request, std::stop_token stop) = 0;
};

/// The limits of a session. A request's own time-out goes before the session's.
struct HttpSessionLimits {
  std::chrono::milliseconds requestTimeout{120'000};   ///< longest silence
  std::chrono::milliseconds resourceTimeout{300'000};  ///< longest transfer as a whole
};

}  // namespace vemo
