// An open connection of Qt WebSockets.
//
// Main thread only, with a running event loop. Takes over a QWebSocket that has been opened; one
// that never came to be open refuses all sends. What the far end says is thrown away.
#pragma once

#include <QObject>
#include <QWebSocket>
#include <deque>
#include <memory>

#include "ports/WebSocket.h"

namespace vemo {

class QtWebSocket : public QObject, public WebSocket {
 public:
  QtWebSocket(MainThread& mainThread, std::unique_ptr<QWebSocket> socket);
  ~QtWebSocket() override;

  Sending sendBinary(const QByteArray& message) override;
  Sending sendText(const QString& message) override;
  void close(int code) override;

 private:
  struct Pending {
    qint64 end;  ///< how much has been written when the whole message has
    Sending sending;
  };

  bool isOpen() const;
  Sending refuse() const;
  Sending trackLast();
  void noteWritten(qint64 bytes);
  void noteEnd();

  MainThread& m_mainThread;
  std::unique_ptr<QWebSocket> m_socket;
  qint64 m_written = 0;
  std::deque<Pending> m_pending;
};

}  // namespace vemo
