// What every connection promises: the one in memory, and Qt's to a real server, plain and over TLS.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "QtWebSocketWorld.h"
#include "base/TaskScope.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakeWebSocket.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

class FakeWorld {
 public:
  FakeMainThread mainThread;
  std::shared_ptr<FakeWebSocket::Peer> peer = std::make_shared<FakeWebSocket::Peer>(mainThread);
  std::unique_ptr<WebSocket> socket = std::make_unique<FakeWebSocket>(peer);

  bool runUntil(const std::function<bool()>& condition) {
    for (int round = 0; round < 3; ++round) {
      mainThread.drain();
      if (condition()) return true;
    }
    return false;
  }

  /// "b:" or "t:" and the payload.
  std::vector<QByteArray> received() const {
    std::vector<QByteArray> result;
    for (const auto& [kind, payload] : peer->messages)
      result.push_back((kind == FakeWebSocket::Kind::Text ? "t:" : "b:") + payload);
    return result;
  }
  std::vector<int> closeCodes() const { return peer->closeCodes; }
  bool isEndedAtPeer() const { return !peer->isOpen; }
  void closeFromPeer() { peer->drop(); }
  void resetFromPeer() { peer->drop(); }
  void stallPeer() { peer->manner = FakeWebSocket::Manner::Stalls; }
  void resumePeer() {}
};

template <Transport transport>
class QtWorld : public QtConnection {
 public:
  QtWorld() : QtConnection(transport) {}

  bool runUntil(const std::function<bool()>& condition) { return QtTestLoop::runUntil(condition); }
  std::vector<QByteArray> received() const {
    std::vector<QByteArray> result;
    for (const auto& [isText, payload] : server.messages())
      result.push_back((isText ? "t:" : "b:") + payload);
    return result;
  }
  std::vector<int> closeCodes() const { return server.closeCodes(); }
  bool isEndedAtPeer() const { return server.openCount() == 0; }
  void closeFromPeer() { server.closeAll(); }
  void resetFromPeer() { server.resetAll(); }
  void stallPeer() { server.stall(); }
  void resumePeer() { server.resume(); }
};

template <typename World>
class WebSocketContract : public testing::Test {
 protected:
  using Ends = std::vector<std::optional<WebSocket::SendResult>>;

  /// Follows a send to its end.
  void follow(const WebSocket::Sending& sending) {
    const std::size_t index = ends->size();
    ends->emplace_back();
    scope->start([&](std::stop_token) { return keep(sending, ends, index); });
  }

  bool runUntilAllEnded() {
    return world.runUntil([this] {
      return std::ranges::all_of(*ends, [](const auto& end) { return end.has_value(); });
    });
  }

  /// Sends until a send has failed, as a session does that hasn't noticed an end yet.
  bool runUntilASendFails() {
    return world.runUntil([this] {
      follow(world.socket->sendBinary("x"));
      return std::ranges::any_of(*ends, [](const auto& end) { return end && !*end; });
    });
  }

  World world;
  std::shared_ptr<Ends> ends = std::make_shared<Ends>();
  std::unique_ptr<TaskScope> scope = std::make_unique<TaskScope>(world.mainThread);

 private:
  static Task<> keep(WebSocket::Sending sending, std::shared_ptr<Ends> ends, std::size_t index) {
    WebSocket::SendResult result = co_await sending;
    (*ends)[index] = result;
  }
};

using Worlds = testing::Types<FakeWorld, QtWorld<Transport::Plain>, QtWorld<Transport::Tls>>;
TYPED_TEST_SUITE(WebSocketContract, Worlds);

TYPED_TEST(WebSocketContract, MessagesArriveWholeInOrderAndOfTheirKind) {
  const QByteArray audio = QByteArray("\0\xff\x80\n", 4).repeated(800);
  this->follow(this->world.socket->sendBinary(audio));
  this->follow(this->world.socket->sendBinary(audio.first(100)));
  this->follow(this->world.socket->sendText(uR"({"event":"end"})"_s));
  EXPECT_FALSE(this->ends->front()) << "ended inside the send";
  ASSERT_TRUE(this->runUntilAllEnded());
  for (const auto& end : *this->ends) EXPECT_TRUE(end->has_value());
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.received().size() == 3; }));
  EXPECT_THAT(this->world.received(),
              ElementsAre("b:" + audio, "b:" + audio.first(100), R"(t:{"event":"end"})"));
}

TYPED_TEST(WebSocketContract, AnHourOfMessagesArrives) {
  for (int i = 0; i < 36'000; ++i)
    this->follow(this->world.socket->sendBinary(QByteArray::number(i)));
  ASSERT_TRUE(this->runUntilAllEnded());
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.received().size() == 36'000; }));
  EXPECT_EQ(this->world.received().back(), "b:35999");
}

TYPED_TEST(WebSocketContract, ClosingTellsTheCodeOnceAndRefusesWhatComesAfter) {
  this->world.socket->close(normalWebSocketClosure);
  this->world.socket->close(normalWebSocketClosure);
  this->follow(this->world.socket->sendBinary("late"));
  this->follow(this->world.socket->sendText(u"late"_s));
  ASSERT_TRUE(this->runUntilAllEnded());
  for (const auto& end : *this->ends) EXPECT_EQ(end->error(), WebSocketError::NotOpen);
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.isEndedAtPeer(); }));
  EXPECT_THAT(this->world.closeCodes(), ElementsAre(1000));
  EXPECT_TRUE(this->world.received().empty());
}

TYPED_TEST(WebSocketContract, TheCodeArrivesThoughTheOwnerGoesRightAfterClosing) {
  this->world.socket->close(normalWebSocketClosure);
  this->world.socket.reset();
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.isEndedAtPeer(); }));
  EXPECT_THAT(this->world.closeCodes(), ElementsAre(1000));
}

TYPED_TEST(WebSocketContract, AnOwnerThatGoesEndsTheConnection) {
  this->scope.reset();
  this->world.socket.reset();
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isEndedAtPeer(); }));
}

TYPED_TEST(WebSocketContract, SendsFailOnceThePeerHasClosed) {
  this->world.closeFromPeer();
  EXPECT_TRUE(this->runUntilASendFails());
}

TYPED_TEST(WebSocketContract, SendsFailOnceThePeerHasReset) {
  this->world.resetFromPeer();
  EXPECT_TRUE(this->runUntilASendFails());
}

TYPED_TEST(WebSocketContract, ClosingToAPeerThatReadsNothingEndsEverySend) {
  this->world.stallPeer();
  for (int i = 0; i < 8; ++i)
    this->follow(this->world.socket->sendBinary(QByteArray(4'000'000, 's')));
  this->world.socket->close(normalWebSocketClosure);
  EXPECT_TRUE(this->runUntilAllEnded());
  this->world.resumePeer();
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isEndedAtPeer(); }));
}

}  // namespace
}  // namespace vemo
