// HTTP as servers of tests read and write it: bytes of a socket to messages and back.
#pragma once

#include <QByteArray>
#include <QIODevice>
#include <QList>
#include <optional>

namespace vemo {

/// A request as it came, byte for byte.
struct HttpMessage {
  QByteArray line;
  QList<QByteArray> headers;  ///< "Name: value", in their order
  QByteArray body;

  friend bool operator==(const HttpMessage&, const HttpMessage&) = default;
};

/// How long the message is that the bytes begin with, by its Content-Length; nothing while its head
/// is not whole.
inline std::optional<qsizetype> httpMessageSize(const QByteArray& bytes) {
  const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
  if (headEnd < 0) return std::nullopt;
  qsizetype bodySize = 0;
  for (const QByteArray& line : bytes.first(headEnd).split('\n'))
    if (line.toLower().startsWith("content-length:"))
      bodySize = line.mid(15).trimmed().toLongLong();
  return headEnd + 4 + bodySize;
}

/// Takes a request off the device, when all of it is there.
inline std::optional<HttpMessage> takeHttpMessage(QIODevice& device) {
  const auto size = httpMessageSize(device.peek(device.bytesAvailable()));
  if (!size || device.bytesAvailable() < *size) return std::nullopt;
  const QByteArray bytes = device.read(*size);
  const qsizetype headEnd = bytes.indexOf("\r\n\r\n");
  HttpMessage message{.line = {}, .headers = {}, .body = bytes.sliced(headEnd + 4)};
  for (QByteArray line : bytes.first(headEnd).split('\n')) {
    if (line.endsWith('\r')) line.chop(1);
    message.headers.append(line);
  }
  message.line = message.headers.takeFirst();
  return message;
}

/// An answer with that status and body.
inline QByteArray httpAnswer(int status, const QByteArray& body,
                             const QByteArray& moreHeaders = {}) {
  return "HTTP/1.1 " + QByteArray::number(status) +
         " Whatever\r\nContent-Length: " + QByteArray::number(body.size()) + "\r\n" + moreHeaders +
         "\r\n" + body;
}

}  // namespace vemo
