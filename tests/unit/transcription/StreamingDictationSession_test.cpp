#include "transcription/StreamingDictationSession.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <span>
#include <string>
#include <thread>

#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakeWebSocket.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

const FakeWebSocket::Message endMessage{FakeWebSocket::Kind::Text, R"({"event":"end"})"};

class StreamingDictationSessionTest : public testing::Test {
 protected:
  struct Finishing {
    bool hasReturned = false;
    std::optional<QString> text;
  };

  StreamingDictationSessionTest() {
    session->onUnusable = [this](const QString& reason) {
      reasons.push_back(reason.toStdString());
    };
  }

  void append(std::size_t size, char value = 'a') {
    const std::string audio(size, value);
    session->append(std::as_bytes(std::span(audio)));
  }

  /// Starts finish() and runs it till it waits or has returned.
  std::shared_ptr<Finishing> finish(Clock::Duration timeout = 6s) {
    auto finishing = std::make_shared<Finishing>();
    finishTask = scope.start([this, timeout, finishing](std::stop_token stop) {
      return keep(session->finish(timeout, stop), finishing);
    });
    mainThread.drain();
    return finishing;
  }

  std::vector<qsizetype> sizes() const {
    std::vector<qsizetype> result;
    for (const auto& message : peer->messages) {
      if (message.kind == FakeWebSocket::Kind::Binary) result.push_back(message.payload.size());
    }
    return result;
  }

  qsizetype notUsedLines() { return storage.logMessages().filter(u"streaming: not used"_s).size(); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  std::shared_ptr<FakeWebSocket::Peer> peer = std::make_shared<FakeWebSocket::Peer>(mainThread);
  std::unique_ptr<StreamingDictationSession> session = std::make_unique<StreamingDictationSession>(
      std::make_unique<FakeWebSocket>(peer), clock, mainThread, storage.debugLog);
  std::vector<std::string> reasons;
  StartedTask finishTask;
  TaskScope scope{mainThread};

 private:
  static Task<> keep(Task<std::optional<QString>> finishing, std::shared_ptr<Finishing> kept) {
    kept->text = co_await std::move(finishing);
    kept->hasReturned = true;
  }
};

TEST_F(StreamingDictationSessionTest, FinishAfterMarkUnusableReturnsNothingWithoutSendingAnything) {
  peer->drop();
  append(3200);
  finish();
  ASSERT_THAT(reasons, ElementsAre("send_failed"));
  const auto again = finish();
  EXPECT_TRUE(again->hasReturned);
  EXPECT_FALSE(again->text);
  EXPECT_THAT(peer->messages, IsEmpty());
}

TEST_F(StreamingDictationSessionTest, FinishTwiceResumesBothCallersTogether) {
  const auto first = finish();
  const auto second = finish();
  EXPECT_FALSE(first->hasReturned || second->hasReturned);
  session->takeDone(u"both"_s);
  mainThread.drain();
  EXPECT_EQ(first->text, u"both"_s);
  EXPECT_EQ(second->text, u"both"_s);
}

TEST_F(StreamingDictationSessionTest, FinishTwiceWithoutAnAnswerGivesBothNothing) {
  const auto first = finish();
  const auto second = finish();
  clock.advance(6s);
  EXPECT_TRUE(first->hasReturned && second->hasReturned);
  EXPECT_FALSE(first->text || second->text);
}

TEST_F(StreamingDictationSessionTest, AFailingSendFollowedByTheTimeoutIsOneLogLineAndOneCall) {
  peer->manner = FakeWebSocket::Manner::Stalls;
  append(100);
  const auto finishing = finish();
  EXPECT_FALSE(finishing->hasReturned);
  peer->drop();
  mainThread.drain();
  EXPECT_TRUE(finishing->hasReturned);
  clock.advance(10s);
  EXPECT_THAT(reasons, ElementsAre("send_failed"));
  EXPECT_EQ(notUsedLines(), 1);
  EXPECT_TRUE(storage.hasLogged(u"streaming: not used (send_failed)"_s));
}

TEST_F(StreamingDictationSessionTest, AFlushOf3300BytesSends3200AndKeeps100) {
  session->startTimer(100ms);
  mainThread.drain();
  append(3300);
  clock.advance(100ms);
  EXPECT_THAT(sizes(), ElementsAre(3200));
  clock.advance(1s);
  EXPECT_THAT(sizes(), ElementsAre(3200));
  finish();
  EXPECT_THAT(sizes(), ElementsAre(3200, 100));
}

TEST_F(StreamingDictationSessionTest, FinishWith3300BytesSends3200AndThen100AndThenTheEnd) {
  append(3300);
  finish();
  EXPECT_THAT(sizes(), ElementsAre(3200, 100));
  EXPECT_EQ(peer->messages.back(), endMessage);
}

TEST_F(StreamingDictationSessionTest, AFlushOf3199BytesSendsNothingAndOf3200AllOfThem) {
  session->startTimer(100ms);
  mainThread.drain();
  append(3199);
  clock.advance(100ms);
  EXPECT_THAT(sizes(), IsEmpty());
  append(1);
  clock.advance(100ms);
  EXPECT_THAT(sizes(), ElementsAre(3200));
}

TEST_F(StreamingDictationSessionTest, AnEmptyBufferAtTheFinishSendsTheEndMessageAlone) {
  finish();
  EXPECT_THAT(peer->messages, ElementsAre(endMessage));
}

TEST_F(StreamingDictationSessionTest, AFinishAfterTheFinalTextReturnsItAndSendsNothing) {
  session->takeDone(u"early"_s);
  const auto finishing = finish();
  EXPECT_EQ(finishing->text, u"early"_s);
  EXPECT_THAT(peer->messages, IsEmpty());
}

TEST_F(StreamingDictationSessionTest, AFailingEndMessageHasItsOwnReason) {
  peer->drop();
  const auto finishing = finish();
  EXPECT_TRUE(finishing->hasReturned);
  EXPECT_THAT(reasons, ElementsAre("send_end_failed"));
  EXPECT_TRUE(storage.hasLogged(u"streaming: not used (send_end_failed)"_s));
}

TEST_F(StreamingDictationSessionTest, TheTimeoutGivesUpAtItsMomentAndNotBefore) {
  const auto finishing = finish(6s);
  clock.advance(5'999ms);
  EXPECT_FALSE(finishing->hasReturned);
  EXPECT_TRUE(peer->isOpen);
  clock.advance(1ms);
  EXPECT_TRUE(finishing->hasReturned);
  EXPECT_THAT(reasons, ElementsAre("timeout"));
  EXPECT_THAT(peer->closeCodes, ElementsAre(1000));
}

TEST_F(StreamingDictationSessionTest, AFinalTextJustBeforeTheTimeoutStands) {
  const auto finishing = finish(6s);
  clock.advance(5'999ms);
  session->takeDone(u"in time"_s);
  clock.advance(10s);
  EXPECT_EQ(finishing->text, u"in time"_s);
  EXPECT_THAT(reasons, IsEmpty());
  EXPECT_EQ(notUsedLines(), 0);
}

TEST_F(StreamingDictationSessionTest, AFinalTextAfterGivingUpChangesNothing) {
  const auto finishing = finish(1s);
  clock.advance(1s);
  session->takeDone(u"late"_s);
  mainThread.drain();
  EXPECT_FALSE(finishing->text);
  EXPECT_FALSE(finish()->text);
}

TEST_F(StreamingDictationSessionTest, CancelResumesWaitersWithoutALogLineOrACall) {
  const auto finishing = finish();
  session->cancel();
  EXPECT_FALSE(finishing->hasReturned) << "resumed inside cancel()";
  mainThread.drain();
  EXPECT_TRUE(finishing->hasReturned);
  EXPECT_FALSE(finishing->text);
  EXPECT_THAT(peer->closeCodes, ElementsAre(1000));
  EXPECT_THAT(reasons, IsEmpty());
  EXPECT_EQ(notUsedLines(), 0);
}

TEST_F(StreamingDictationSessionTest, ARequestedStopEndsTheWait) {
  const auto finishing = finish();
  finishTask.cancel();
  mainThread.drain();
  EXPECT_TRUE(finishing->hasReturned);
  EXPECT_FALSE(finishing->text);
}

TEST_F(StreamingDictationSessionTest, EveryOutcomeLeavesNoTimerAndKeepsNoFurtherAudio) {
  for (const auto& outcome : {+[](StreamingDictationSession& s) { s.cancel(); },
                              +[](StreamingDictationSession& s) { s.takeDone(u"done"_s); }}) {
    peer = std::make_shared<FakeWebSocket::Peer>(mainThread);
    session = std::make_unique<StreamingDictationSession>(std::make_unique<FakeWebSocket>(peer),
                                                          clock, mainThread, storage.debugLog);
    session->startTimer(100ms);
    finish();
    outcome(*session);
    mainThread.drain();
    append(6400);
    session->startTimer(100ms);
    clock.advance(1s);
    EXPECT_THAT(sizes(), IsEmpty());
    EXPECT_EQ(clock.sleeperCount(), 0u);
    EXPECT_EQ(scope.unfinishedCount(), 0u);
  }
}

TEST_F(StreamingDictationSessionTest, AStalledConnectionIsLeftAtTheTimeout) {
  peer->manner = FakeWebSocket::Manner::Stalls;
  append(64'000);
  const auto finishing = finish(6s);
  EXPECT_EQ(peer->pending.size(), 21u);
  clock.advance(6s);
  EXPECT_TRUE(finishing->hasReturned);
  EXPECT_THAT(reasons, ElementsAre("timeout"));
  EXPECT_THAT(peer->pending, IsEmpty());
}

TEST_F(StreamingDictationSessionTest, ASessionThatGoesLeavesItsSendsAndItsCallUndone) {
  peer->manner = FakeWebSocket::Manner::Stalls;
  session->startTimer(100ms);
  mainThread.drain();
  append(3200);
  clock.advance(100ms);
  const auto sends = peer->pending;
  session.reset();
  for (const auto& send : sends) send.complete(std::unexpected(WebSocketError::ConnectionLost));
  clock.advance(10s);
  EXPECT_TRUE(peer->isDestroyed);
  EXPECT_EQ(clock.sleeperCount(), 0u);
  EXPECT_THAT(reasons, IsEmpty());
}

TEST_F(StreamingDictationSessionTest, TheCallAboutGivingUpMayDestroyTheSession) {
  session->onUnusable = [this](const QString&) { session.reset(); };
  session->startTimer(100ms);
  mainThread.drain();
  peer->drop();
  append(3200);
  clock.advance(100ms);
  EXPECT_FALSE(session);
  EXPECT_TRUE(peer->isDestroyed);
}

TEST_F(StreamingDictationSessionTest, AudioFromAnotherThreadGoesOutWholeAndInOrder) {
  session->startTimer(10ms);
  mainThread.drain();
  std::thread capture([this] {
    for (int block = 0; block < 200; ++block) append(997, static_cast<char>('a' + block % 26));
  });
  for (int round = 0; round < 100; ++round) clock.advance(10ms);
  capture.join();
  finish();
  QByteArray sent;
  for (const auto& message : peer->messages) {
    if (message.kind == FakeWebSocket::Kind::Binary) sent += message.payload;
  }
  QByteArray expected;
  for (int block = 0; block < 200; ++block)
    expected += QByteArray(997, static_cast<char>('a' + block % 26));
  EXPECT_TRUE(sent == expected);
  EXPECT_LE(std::ranges::max(sizes()), 3200);
}

TEST_F(StreamingDictationSessionTest, TheLiveTextIsWhatIsFinalAndWhatIsPartial) {
  QStringList live;
  session->onText = [&live](const QString& text) { live.append(text); };
  session->takePartial(u"hel"_s);
  session->takeFinal(u"Hello."_s);
  session->takePartial(u"wor"_s);
  session->takeDone(u"Hello. World."_s);
  session->takePartial(u"more"_s);
  EXPECT_EQ(live, QStringList({u"hel"_s, u"Hello."_s, u"Hello. wor"_s}));
}

}  // namespace
}  // namespace vemo
