#include "platform/qt/QtHttpSession.h"

#include <QNetworkAccessManager>
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

/// A manager, and how many requests are under way on it.
struct QtHttpSession::Connections {
  /// What Qt opens to one host. Above that it keeps a request back till another one has ended,
  /// which takes a minute when that one is stuck.
  static constexpr int most = 6;

  bool areTaken() const { return underWay == most; }

  QNetworkAccessManager manager;
  int underWay = 0;
};

/// Takes the connections out of use when a request on them was cut short. Qt doesn't always close
/// the connection of such a request (one that is stuck in its handshake stays for good), and a few
/// of them would use up all that Qt opens to a host. Requests still under way keep the manager till
/// they end.
struct QtHttpSession::Retirement {
  QtHttpSession& session;
  Connections& connections;
  const QtHttpTransfer& transfer;

  ~Retirement() {
    --connections.underWay;
    if (!transfer.hasRunItsCourse() && session.m_connections.get() == &connections)
      session.m_connections.reset();
  }
};

Task<HttpResult> QtHttpSession::send(HttpRequest request, std::stop_token stop) {
  if (const auto refusal = refusalOf(request)) co_return std::unexpected(httpErrorFor(*refusal));
  if (stop.stop_requested()) co_return std::unexpected(httpErrorFor(UrlError::Cancelled));
  if (!m_connections || m_connections->areTaken()) m_connections = std::make_shared<Connections>();

  const std::shared_ptr<Connections> connections = m_connections;
  ++connections->underWay;
  const Completion<HttpResult> result(m_mainThread);
  QtHttpTransfer transfer(connections->manager, request, m_limits, result);
  const Retirement retirement{*this, *connections, transfer};
  const std::stop_callback onStop(stop, [&transfer] { transfer.cancel(); });
  HttpResult answer = co_await result;
  co_return answer;
}

}  // namespace vemo
