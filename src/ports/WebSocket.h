// An open WebSocket connection, as far as a dictation uses one: it sends, and it closes.
//
// Main thread only. Made open by whoever opens connections; what the far end sends is not part of
// it. Destroying it ends the connection, and sends that have not ended by then never do.
#pragma once

#include <QByteArray>
#include <QString>
#include <expected>

#include "base/Completion.h"

namespace vemo {

enum class WebSocketError {
  NotOpen,         ///< the connection had ended, or was never open
  ConnectionLost,  ///< it ended before the message had left
};

class WebSocket {
 public:
  /// Success means that the message has left this program, not that it has arrived.
  using SendResult = std::expected<void, WebSocketError>;
  using Sending = Completion<SendResult>;

  virtual ~WebSocket() = default;

  /// One message, queued at once. Messages leave in the order of the calls. There is no time-out:
  /// a send to a far end that has stopped reading ends when the connection does.
  virtual Sending sendBinary(const QByteArray& message) = 0;
  virtual Sending sendText(const QString& message) = 0;

  /// Closes with this code and no reason. A far end that doesn't answer is cut off after a while.
  /// Harmless on a connection that has ended.
  virtual void close(int code) = 0;
};

/// What a connection that has served its purpose is closed with.
inline constexpr int normalWebSocketClosure = 1000;

}  // namespace vemo
