// Qt's connection and a session on it, to a server that misbehaves while audio goes out.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "QtWebSocketWorld.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "fakes/TestStorage.h"
#include "transcription/StreamingDictationSession.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using Manner = TestWebSocketServer::Manner;

/// The session's clock is moved by the test; the network takes the time that it takes.
class SessionOverQt {
 public:
  SessionOverQt(Transport transport, Manner manner) : connection(transport, manner) {
    session = std::make_unique<StreamingDictationSession>(std::move(connection.socket), clock,
                                                          connection.mainThread, storage.debugLog);
    session->onUnusable = [this](const QString& given) { reason = given; };
  }

  void append(std::size_t size) {
    const std::vector<std::byte> audio(size, std::byte{7});
    session->append(audio);
  }

  void finish() {
    scope.start([this](std::stop_token stop) { return keep(session->finish(6s, stop)); });
  }

  Task<> keep(Task<std::optional<QString>> finishing) {
    text = co_await std::move(finishing);
    hasReturned = true;
  }

  QtConnection connection;
  FakeMainThread clockQueue;
  FakeClock clock{clockQueue};
  TestStorage storage{clock};
  std::unique_ptr<StreamingDictationSession> session;
  QString reason;
  std::optional<QString> text;
  bool hasReturned = false;
  TaskScope scope{connection.mainThread};
};

class QtWebSocketTest : public testing::TestWithParam<Transport> {};
INSTANTIATE_TEST_SUITE_P(Transports, QtWebSocketTest,
                         testing::Values(Transport::Plain, Transport::Tls), [](const auto& info) {
                           return info.param == Transport::Plain ? "Plain" : "Tls";
                         });

TEST_P(QtWebSocketTest, ASessionsAudioAndItsEndArriveInOrder) {
  SessionOverQt over(GetParam(), Manner::Accepts);
  over.append(320'050);
  over.finish();
  const auto& server = over.connection.server;
  ASSERT_TRUE(QtTestLoop::runUntil([&] { return server.messages().size() == 102; }));
  EXPECT_EQ(server.messages()[99].payload.size(), 3200);
  EXPECT_EQ(server.messages()[100].payload.size(), 50);
  EXPECT_EQ(server.messages()[101], (TestWebSocketServer::Message{true, R"({"event":"end"})"}));
  over.session->takeDone(u"the text"_s);
  ASSERT_TRUE(QtTestLoop::runUntil([&] { return over.hasReturned; }));
  EXPECT_EQ(over.text, u"the text"_s);
}

TEST_P(QtWebSocketTest, APeerThatClosesRefusesOrResetsMidSendMakesTheSessionUnusable) {
  for (const Manner manner :
       {Manner::ClosesOnMessage, Manner::RefusesOnMessage, Manner::ResetsOnMessage}) {
    SCOPED_TRACE(static_cast<int>(manner));
    SessionOverQt over(GetParam(), manner);
    over.session->startTimer(100ms);
    // A microphone that goes on until the session has given up.
    ASSERT_TRUE(QtTestLoop::runUntil([&] {
      over.append(3200);
      over.clockQueue.drain();
      over.clock.advance(100ms);
      return !over.reason.isEmpty();
    }));
    EXPECT_EQ(over.reason, u"send_failed"_s);
    over.finish();
    ASSERT_TRUE(QtTestLoop::runUntil([&] { return over.hasReturned; }));
    EXPECT_FALSE(over.text);
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return over.connection.server.openCount() == 0; }));
  }
}

TEST_P(QtWebSocketTest, ACloseInTheMiddleOfThirtyMegabytesReleasesTheWaiter) {
  SessionOverQt over(GetParam(), Manner::ResetsOnMessage);
  over.append(32'000'000);
  over.finish();
  // Over TLS all of it may count as sent before the reset is seen; the time-out is for that.
  QtTestLoop::runUntil([&] { return over.connection.server.openCount() == 0; });
  ASSERT_TRUE(QtTestLoop::runUntil([&] {
    over.clock.advance(100ms);
    return over.hasReturned;
  }));
  EXPECT_FALSE(over.text);
  EXPECT_FALSE(over.reason.isEmpty());
}

TEST_P(QtWebSocketTest, APeerThatStallsIsLeftAtTheTimeout) {
  SessionOverQt over(GetParam(), Manner::Accepts);
  over.connection.server.stall();
  over.append(32'000'000);
  over.finish();
  ASSERT_TRUE(QtTestLoop::runUntil([&] { return over.clock.sleeperCount() == 1; }));
  over.clock.advance(5'999ms);
  EXPECT_FALSE(over.hasReturned);
  over.clock.advance(1ms);
  ASSERT_TRUE(QtTestLoop::runUntil([&] { return over.hasReturned && !over.reason.isEmpty(); }));
  EXPECT_EQ(over.reason, u"timeout"_s);
  over.session.reset();
  over.connection.server.resume();
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return over.connection.server.openCount() == 0; }));
}

TEST_P(QtWebSocketTest, ASocketThatNeverCameToBeOpenRefusesEverySend) {
  const QtTestLoop loop;
  QtMainThread mainThread;
  QtWebSocket socket(mainThread, std::make_unique<QWebSocket>());
  EXPECT_TRUE(socket.sendBinary("a").isComplete());
  EXPECT_TRUE(socket.sendText(u"a"_s).isComplete());
  socket.close(normalWebSocketClosure);
}

}  // namespace
}  // namespace vemo
