// A connection in memory: it keeps what was sent, and a test says how sends end.
#pragma once

#include <QByteArray>
#include <QString>
#include <QtGlobal>
#include <memory>
#include <utility>
#include <vector>

#include "ports/WebSocket.h"

namespace vemo {

class FakeWebSocket : public WebSocket {
 public:
  enum class Kind { Binary, Text };
  enum class Manner { Accepts, Stalls };
  struct Message {
    Kind kind;
    QByteArray payload;
    friend bool operator==(const Message&, const Message&) = default;
  };

  /// What a test holds; outlives the connection that the session owns.
  struct Peer {
    explicit Peer(MainThread& thread) : mainThread(thread) {}

    /// Ends the connection from the far side; sends under way are lost.
    void drop() {
      isOpen = false;
      for (const auto& sending : std::exchange(pending, {}))
        sending.complete(std::unexpected(WebSocketError::ConnectionLost));
    }

    MainThread& mainThread;
    Manner manner = Manner::Accepts;
    int messagesUntilDrop = -1;  ///< the message that would be this one's successor is lost
    bool isOpen = true;
    bool isDestroyed = false;
    std::vector<Message> messages;
    std::vector<int> closeCodes;
    std::vector<Sending> pending;
  };

  explicit FakeWebSocket(std::shared_ptr<Peer> peer) : m_peer(std::move(peer)) {}
  ~FakeWebSocket() override {
    m_peer->isOpen = false;
    m_peer->isDestroyed = true;
    m_peer->pending.clear();
  }

  Sending sendBinary(const QByteArray& message) override { return send({Kind::Binary, message}); }
  Sending sendText(const QString& message) override { return send({Kind::Text, message.toUtf8()}); }

  void close(int code) override {
    if (!m_peer->isOpen) return;
    m_peer->closeCodes.push_back(code);
    m_peer->drop();
  }

 private:
  Sending send(Message message) {
    const Sending sending(m_peer->mainThread);
    if (!m_peer->isOpen) {
      sending.complete(std::unexpected(WebSocketError::NotOpen));
      return sending;
    }
    if (m_peer->messagesUntilDrop == 0) {
      m_peer->pending.push_back(sending);
      m_peer->drop();
      return sending;
    }
    if (m_peer->messagesUntilDrop > 0) --m_peer->messagesUntilDrop;
    if (m_peer->manner == Manner::Stalls) {
      m_peer->pending.push_back(sending);
      return sending;
    }
    m_peer->messages.push_back(std::move(message));
    sending.complete({});
    return sending;
  }

  std::shared_ptr<Peer> m_peer;
};

}  // namespace vemo
