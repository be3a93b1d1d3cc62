#include "platform/qt/QtHttpSession.h"

#include <QNetworkReply>
#include <algorithm>
#include <optional>

#include "platform/qt/QtHttpTransfer.h"
#include "platform/qt/QtNetworkErrors.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// A line break or NUL would begin a header or a request of its own.
bool isOneLine(const QByteArray& bytes) {
  return std::ranges::none_of(bytes, [](char c) { return c == '\r' || c == '\n' || c == '\0'; });
}

/// Why the request can't be sent at all.
std::optional<UrlError> refusalOf(const HttpRequest& request) {
  if (!request.url.isValid() || request.url.isRelative()) return UrlError::BadUrl;
  if (request.url.scheme() != u"http"_s && request.url.scheme() != u"https"_s)
    return UrlError::UnsupportedUrl;
  if (request.url.host().isEmpty() || request.method.isEmpty() || !isOneLine(request.method))
    return UrlError::BadUrl;
  const bool areSound = std::ranges::all_of(request.headers, [](const auto& header) {
    return !header.first.isEmpty() && isOneLine(header.first) && isOneLine(header.second);
  });
  if (!areSound) return UrlError::BadUrl;
  return std::nullopt;
}

}  // namespace

QtHttpSession::QtHttpSession(MainThread& mainThread, HttpSessionLimits limits)
    : m_mainThread(mainThread), m_limits(limits) {}

QtHttpSession::~QtHttpSession() = default;

Task<HttpResult> QtHttpSession::send(HttpRequest request, std::stop_token stop) {
  const Completion<HttpResult> result(m_mainThread);
  if (const auto refusal = refusalOf(request)) {
    co_return std::unexpected(httpErrorFor(*refusal));
  }
  if (stop.stop_requested()) co_return std::unexpected(httpErrorFor(UrlError::Cancelled));
  QtHttpTransfer transfer(manager(), request, m_limits, result);
  const std::stop_callback onStop(stop, [&transfer] { transfer.cancel(); });
  HttpResult answer = co_await result;
  co_return answer;
}

qsizetype QtHttpSession::openTransferCount() const {
  return m_manager ? m_manager->findChildren<QNetworkReply*>().size() : 0;
}

QNetworkAccessManager& QtHttpSession::manager() {
  if (!m_manager) m_manager = std::make_unique<QNetworkAccessManager>();
  return *m_manager;
}

}  // namespace vemo
