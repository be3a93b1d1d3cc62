#include "platform/qt/QtHttpTransfer.h"

#include <QNetworkAccessManager>
#include <QNetworkRequest>
#include <algorithm>
#include <cstring>
#include <memory>
#include <utility>

#include "platform/qt/QtNetworkErrors.h"

namespace vemo {

namespace {

constexpr qint64 readBufferSize = 1024 * 1024;

/// A body that is sent once. Qt repeats a request by itself when its connection breaks before the
/// answer, but only if it can start the body over. Whether to try again is for the callers to say.
class SingleUseBody : public QIODevice {
 public:
  explicit SingleUseBody(QByteArray bytes) : m_bytes(std::move(bytes)) {
    open(QIODevice::ReadOnly | QIODevice::Unbuffered);
  }

  qint64 size() const override { return m_bytes.size(); }
  bool reset() override { return false; }

 protected:
  qint64 readData(char* data, qint64 maximumSize) override {
    const qint64 count = std::min<qint64>(maximumSize, m_bytes.size() - m_offset);
    std::memcpy(data, m_bytes.constData() + m_offset, static_cast<std::size_t>(count));
    m_offset += count;
    return count;
  }
  qint64 writeData(const char*, qint64) override { return -1; }

 private:
  const QByteArray m_bytes;
  qint64 m_offset = 0;
};

QNetworkRequest networkRequest(const HttpRequest& request) {
  QNetworkRequest converted(request.url);
  converted.setAttribute(QNetworkRequest::RedirectPolicyAttribute,
                         QNetworkRequest::ManualRedirectPolicy);
  converted.setAttribute(QNetworkRequest::CacheLoadControlAttribute,
                         QNetworkRequest::AlwaysNetwork);
  converted.setAttribute(QNetworkRequest::CacheSaveControlAttribute, false);
  converted.setAttribute(QNetworkRequest::CookieLoadControlAttribute, QNetworkRequest::Manual);
  converted.setAttribute(QNetworkRequest::CookieSaveControlAttribute, QNetworkRequest::Manual);
  converted.setAttribute(QNetworkRequest::AuthenticationReuseAttribute, QNetworkRequest::Manual);
  converted.setAttribute(QNetworkRequest::DoNotBufferUploadDataAttribute, true);
  // HTTP/2 would put all requests of a session on one connection, so that a stuck one holds up the
  // others, and would rewrite the headers' spelling.
  converted.setAttribute(QNetworkRequest::Http2AllowedAttribute, false);
  // Qt's own would tell each server the user's language and region.
  converted.setRawHeader("Accept-Language", "*");
  converted.setHeader(QNetworkRequest::UserAgentHeader, QStringLiteral("Vemo"));
  for (const auto& [name, value] : request.headers) converted.setRawHeader(name, value);
  return converted;
}

/// Whether the failure is nothing but Qt's word for the status.
bool isJustTheStatus(QNetworkReply::NetworkError error, int status) {
  // These two ask for the body to be sent to another address, and it can't be started over.
  if (error == QNetworkReply::ContentReSendError) return status == 307 || status == 308;
  if (error == QNetworkReply::ProxyAuthenticationRequiredError) return status == 407;
  if (status < 400) return false;
  const bool isContentError =
      error > QNetworkReply::UnknownProxyError && error <= QNetworkReply::UnknownContentError;
  const bool isServerError = error >= QNetworkReply::InternalServerError;
  // What Qt makes of 400 and 418.
  const bool isBadRequest = error == QNetworkReply::ProtocolInvalidOperationError;
  return isContentError || isServerError || isBadRequest;
}

}  // namespace

QtHttpTransfer::QtHttpTransfer(QNetworkAccessManager& manager, const HttpRequest& request,
                               const HttpSessionLimits& limits,
                               const Completion<HttpResult>& result)
    : m_result(result) {
  const bool isBodiless = request.method == "GET" || request.method == "HEAD";
  auto upload = isBodiless ? nullptr : std::make_unique<SingleUseBody>(request.body);
  m_reply = manager.sendCustomRequest(networkRequest(request), request.method, upload.get());
  // The reply may still ask for more of the body after it was aborted.
  if (upload) upload.release()->setParent(m_reply);
  watch();
  startTimers(request, limits);
}

QtHttpTransfer::~QtHttpTransfer() {
  if (!m_reply) return;
  m_reply->disconnect(this);
  m_reply->abort();
  m_reply->deleteLater();
}

void QtHttpTransfer::watch() {
  m_reply->setReadBufferSize(readBufferSize);
  const auto onProgress = [this] { m_silence.start(); };
  connect(m_reply, &QNetworkReply::socketStartedConnecting, this, onProgress);
  connect(m_reply, &QNetworkReply::encrypted, this, onProgress);
  connect(m_reply, &QNetworkReply::requestSent, this, onProgress);
  connect(m_reply, &QNetworkReply::uploadProgress, this, [this](qint64 sent) {
    m_silence.start();
    if (sent > 0) m_hasSentBody = true;
  });
  connect(m_reply, &QNetworkReply::metaDataChanged, this, onProgress);
  connect(m_reply, &QNetworkReply::readyRead, this, [this] {
    m_silence.start();
    if (!m_result.isComplete()) takeBody();
  });
  connect(m_reply, &QNetworkReply::sslErrors, this,
          [this](const QList<QSslError>& errors) { m_certificateErrors += errors; });
  connect(m_reply, &QNetworkReply::finished, this, [this] { finish(); });
}

void QtHttpTransfer::startTimers(const HttpRequest& request, const HttpSessionLimits& limits) {
  const auto silence = request.timeout.count() > 0 ? request.timeout : limits.requestTimeout;
  for (QTimer* timer : {&m_silence, &m_limit}) {
    timer->setSingleShot(true);
    timer->setTimerType(Qt::PreciseTimer);
    connect(timer, &QTimer::timeout, this, [this] { fail(UrlError::TimedOut); });
  }
  m_silence.start(silence);
  m_limit.start(limits.resourceTimeout);
}

void QtHttpTransfer::takeBody() {
  m_body += m_reply->read(maximumHttpBodySize - m_body.size());
  if (m_body.size() == maximumHttpBodySize && m_reply->bytesAvailable() > 0)
    complete(HttpResponse{.status = status(), .body = std::move(m_body)});
}

void QtHttpTransfer::finish() {
  if (m_result.isComplete()) return;  // this is the end that complete() has brought about
  takeBody();
  if (m_result.isComplete()) return;
  m_hasRunItsCourse = true;
  auto error = m_reply->error();
  // A connection that breaks while the body goes out has no error of its own in Qt.
  if (error == QNetworkReply::UnknownNetworkError && m_hasSentBody)
    error = QNetworkReply::RemoteHostClosedError;
  if (error == QNetworkReply::NoError || isJustTheStatus(error, status().value_or(0)))
    complete(HttpResponse{.status = status(), .body = std::move(m_body)});
  else
    fail(urlErrorFor(error, m_certificateErrors, currentConnectivity()));
}

void QtHttpTransfer::fail(UrlError code) {
  complete(std::unexpected(httpErrorFor(code)));
}

void QtHttpTransfer::complete(HttpResult result) {
  if (m_result.isComplete()) return;
  m_silence.stop();
  m_limit.stop();
  m_result.complete(std::move(result));
  if (m_reply) m_reply->abort();
}

std::optional<int> QtHttpTransfer::status() const {
  const QVariant status = m_reply->attribute(QNetworkRequest::HttpStatusCodeAttribute);
  return status.isValid() ? std::optional(status.toInt()) : std::nullopt;
}

}  // namespace vemo
