// One request under way on a QNetworkAccessManager.
//
// Starts when it is made, and completes its result once: with the answer, the failure, a time-out
// or cancel(). Destroying it ends what is still under way; the socket is closed then. Main thread
// only; the manager outlives it.
#pragma once

#include <QList>
#include <QNetworkReply>
#include <QObject>
#include <QPointer>
#include <QSslError>
#include <QTimer>
#include <optional>

#include "base/Completion.h"
#include "ports/HttpSession.h"

class QNetworkAccessManager;

namespace vemo {

class QtHttpTransfer : public QObject {
 public:
  QtHttpTransfer(QNetworkAccessManager& manager, const HttpRequest& request,
                 const HttpSessionLimits& limits, const Completion<HttpResult>& result);
  ~QtHttpTransfer() override;

  void cancel() { fail(UrlError::Cancelled); }

  /// Whether Qt came to an end of it, good or bad, by itself.
  bool hasRunItsCourse() const { return m_hasRunItsCourse; }

 private:
  void watch();
  void startTimers(const HttpRequest& request, const HttpSessionLimits& limits);
  void takeBody();
  void finish();
  void fail(UrlError code);
  void complete(HttpResult result);
  std::optional<int> status() const;

  const Completion<HttpResult> m_result;
  QPointer<QNetworkReply> m_reply;
  QList<QSslError> m_certificateErrors;
  QByteArray m_body;
  QTimer m_silence;
  QTimer m_limit;
  bool m_hasSentBody = false;
  bool m_hasRunItsCourse = false;
};

}  // namespace vemo
