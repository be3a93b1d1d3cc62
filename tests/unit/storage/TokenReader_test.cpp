#include "storage/TokenReader.h"

#include <thread>

#include "StorageTest.h"
#include "fakes/FakeSecretBackend.h"
#include "storage/SecureTokenStore.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;
using Standing = SecureTokenStore::Standing;

class TokenReaderTest : public StorageTest {
 protected:
  static inline const QString account = u"authToken"_s;
  static inline const QString otherAccount = u"slackApiToken"_s;
  static inline const FakeSecretBackend::Item item{u"brelmox.Vemo"_s, u"authToken"_s};

  ~TokenReaderTest() override { reader.reset(); }

  void start() {
    reader.emplace(TokenReader::Neighbours{.tokens = tokens,
                                           .backends = {&keyring, &sealed},
                                           .giveUp = giveUp,
                                           .mainThread = mainThread,
                                           .clock = clock},
                   std::vector{account, otherAccount});
    observation = reader->arrived.observe([this](const QString& name) { news.append(name); });
  }

  /// Lets the questions that are due be asked, answered and heard.
  void settle() {
    clock.advance(0s);
    reader->waitUntilAnswered();
    clock.advance(0s);
  }
  void startAndSettle() {
    start();
    settle();
    news.clear();
    keyring.calls.clear();
  }
  void unlock() {
    keyring.failEverythingWith({});
    reader->keyringChanged();
    settle();
  }
  void advance(Clock::Duration duration) {
    clock.advance(duration);
    settle();
  }

  FakeSecretBackend keyring;
  FakeSecretBackend sealed;
  SecureTokenStore tokens{{&keyring, &sealed}, debugLog};
  std::stop_source giveUp;
  std::optional<TokenReader> reader;
  Observation observation;
  QStringList news;
};

TEST_F(TokenReaderTest, UntilTheAnswerATokenReadsAsAbsentAndNobodyWaits) {
  keyring.items[item] = "token";
  std::stop_source mayAnswer;
  keyring.onFound = [&] {
    while (!mayAnswer.stop_requested()) std::this_thread::yield();
  };
  start();
  EXPECT_TRUE(tokens.isExpected(account));
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_EQ(tokens.read(account), std::nullopt);
  mayAnswer.request_stop();
  settle();
  EXPECT_FALSE(tokens.isExpected(account));
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(keyring.calls, SizeIs(2)) << "one question for each account";
}

TEST_F(TokenReaderTest, EveryFirstAnswerIsToldAbsenceIncluded) {
  keyring.items[item] = "token";
  start();
  EXPECT_THAT(news, IsEmpty());
  settle();
  EXPECT_THAT(news, ElementsAre(account, otherAccount));
  EXPECT_EQ(tokens.read(otherAccount), std::nullopt);
}

TEST_F(TokenReaderTest, WhenAllIsSettledNothingRuns) {
  keyring.items[item] = "token";
  startAndSettle();
  advance(24h);
  reader->keyringChanged();
  reader->secretsChanged();
  settle();
  EXPECT_THAT(keyring.calls, IsEmpty());
}

TEST_F(TokenReaderTest, AnAbsenceIsSettledAndStaysInvisibleWhatAnotherProcessWrites) {
  startAndSettle();
  keyring.items[item] = "token";
  reader->keyringChanged();
  advance(24h);
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_THAT(keyring.calls, IsEmpty());
}

TEST_F(TokenReaderTest, AKeyringUnlockedLaterBringsTheToken) {
  keyring.items[item] = "token";
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  EXPECT_FALSE(tokens.isExpected(account));
  EXPECT_EQ(tokens.read(account), std::nullopt);
  unlock();
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(news, ElementsAre(account));
}

TEST_F(TokenReaderTest, AKeyringThatTellsNothingIsAskedAtGrowingIntervals) {
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  for (const auto pause : {1s, 2s, 4s, 8s, 16s, 32s, 64s, 120s, 120s}) {
    advance(pause - 1ms);
    EXPECT_THAT(keyring.calls, IsEmpty());
    advance(1ms);
    EXPECT_THAT(keyring.calls, SizeIs(2));
    keyring.calls.clear();
  }
  keyring.failEverythingWith({});
  keyring.items[item] = "token";
  advance(120s);
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(news, ElementsAre(account));
}

TEST_F(TokenReaderTest, AChangeOfTheKeyringBeginsTheIntervalsAnew) {
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  for (int round = 0; round < 5; ++round) advance(30s);
  reader->keyringChanged();
  settle();
  keyring.calls.clear();
  advance(999ms);
  EXPECT_THAT(keyring.calls, IsEmpty());
  advance(1ms);
  EXPECT_THAT(keyring.calls, SizeIs(2));
}

TEST_F(TokenReaderTest, AMissingKeyringIsAskedWhenOneComesAndNotBefore) {
  keyring.failEverythingWith(SecretError::Unavailable);
  startAndSettle();
  reader->secretsChanged();
  advance(24h);
  EXPECT_THAT(keyring.calls, IsEmpty());
  keyring.failEverythingWith({});
  keyring.items[item] = "token";
  reader->keyringChanged();
  settle();
  EXPECT_EQ(tokens.read(account), u"token"_s);
}

TEST_F(TokenReaderTest, AChangeDuringAQuestionIsNotMissed) {
  keyring.failEverythingWith(SecretError::Failed);
  start();
  mainThread.drain();
  reader->keyringChanged();
  reader->waitUntilAnswered();
  keyring.failEverythingWith({});
  keyring.items[item] = "token";
  clock.advance(0s);
  settle();
  EXPECT_EQ(tokens.read(account), u"token"_s);
}

TEST_F(TokenReaderTest, ASealedTokenCountsWhileTheKeyringIsLocked) {
  sealed.items[item] = "token";
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  EXPECT_EQ(tokens.read(account), u"token"_s);
}

TEST_F(TokenReaderTest, ALockedKeyringIsOfferedNoSealedTokenAndGetsItOnceItIsUnlocked) {
  sealed.items[item] = "token";
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  advance(1s);
  EXPECT_THAT(keyring.calls, Not(Contains(u"add brelmox.Vemo authToken"_s)));
  EXPECT_EQ(sealed.items.at(item), "token");
  unlock();
  EXPECT_EQ(keyring.items.at(item), "token");
  EXPECT_THAT(sealed.items, IsEmpty());
  EXPECT_EQ(tokens.standing(account), Standing::Settled);
  EXPECT_THAT(news, IsEmpty());
}

TEST_F(TokenReaderTest, ATokenThatASilentKeyringDidNotTakeMovesThereOnceItAnswers) {
  startAndSettle();
  keyring.addFailure = SecretError::Failed;
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  reader->secretsChanged();
  settle();
  EXPECT_EQ(sealed.items.at(item), "token");
  keyring.addFailure.reset();
  advance(1s);
  EXPECT_EQ(keyring.items.at(item), "token");
  EXPECT_THAT(sealed.items, IsEmpty());
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(news, IsEmpty());
}

TEST_F(TokenReaderTest, ATokenThatAMissingKeyringDidNotTakeMovesWhenOneComesAndNothingAsksBefore) {
  keyring.failEverythingWith(SecretError::Unavailable);
  startAndSettle();
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  reader->secretsChanged();
  keyring.calls.clear();
  advance(10min);
  EXPECT_THAT(keyring.calls, IsEmpty());
  EXPECT_EQ(sealed.items.at(item), "token");
  unlock();
  EXPECT_EQ(keyring.items.at(item), "token");
  EXPECT_THAT(sealed.items, IsEmpty());
}

TEST_F(TokenReaderTest, ASignOutWhileTheKeyringIsGoneIsDoneWhenItIsBack) {
  keyring.items[item] = "token";
  startAndSettle();
  keyring.failEverythingWith(SecretError::Unavailable);
  tokens.remove(account);
  unlock();
  EXPECT_THAT(keyring.items, IsEmpty());
  EXPECT_EQ(tokens.standing(account), Standing::Settled);
}

TEST_F(TokenReaderTest, AnOldTokenOfAKeyringUnlockedLaterGivesWayToTheOneInUse) {
  keyring.items[item] = "old";
  sealed.items[item] = "new";
  keyring.failEverythingWith(SecretError::Failed);
  startAndSettle();
  EXPECT_EQ(tokens.read(account), u"new"_s);
  unlock();
  EXPECT_EQ(tokens.read(account), u"new"_s);
  EXPECT_EQ(keyring.items.at(item), "new");
  EXPECT_THAT(sealed.items, IsEmpty());
  EXPECT_THAT(news, IsEmpty());
}

TEST_F(TokenReaderTest, AKeyringThatRefusesAgainAndAgainIsLoggedOnce) {
  sealed.items[item] = "token";
  keyring.addFailure = SecretError::Failed;
  startAndSettle();
  advance(1s);
  advance(2s);
  EXPECT_GT(keyring.calls.size(), 2U);
  EXPECT_THAT(logged(), ElementsAre(u"keychain: promotion failed (OSStatus -25291)"_s));
}

TEST_F(TokenReaderTest, ASignInMeanwhileCountsMoreThanTheAnswer) {
  keyring.items[item] = "old";
  keyring.onFound = [this] {
    keyring.onFound = nullptr;
    EXPECT_TRUE(tokens.write(u"new"_s, account));
  };
  startAndSettle();
  EXPECT_EQ(tokens.read(account), u"new"_s);
}

TEST_F(TokenReaderTest, ASignOutMeanwhileIsNotUndoneByAPromotion) {
  sealed.items[item] = "token";
  sealed.onFound = [this] {
    sealed.onFound = nullptr;
    tokens.remove(account);
  };
  startAndSettle();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_THAT(keyring.items, IsEmpty());
  EXPECT_THAT(sealed.items, IsEmpty());
}

TEST_F(TokenReaderTest, ASignOutThatALockedKeyringRefusedIsDoneOnceItIsUnlocked) {
  keyring.items[item] = "token";
  startAndSettle();
  keyring.removeFailure = SecretError::Failed;
  EXPECT_FALSE(tokens.remove(account));
  reader->secretsChanged();
  settle();
  EXPECT_EQ(keyring.items.count(item), 1);
  keyring.removeFailure.reset();
  reader->keyringChanged();
  settle();
  EXPECT_EQ(keyring.items.count(item), 0);
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_EQ(tokens.standing(account), Standing::Settled);
}

TEST_F(TokenReaderTest, AnOldTokenThatALockedKeyringKeptGoesAndTheSealedNewOneTakesItsPlace) {
  keyring.items[item] = "old";
  startAndSettle();
  keyring.failEverythingWith(SecretError::Failed);
  EXPECT_TRUE(tokens.write(u"new"_s, account));
  EXPECT_EQ(sealed.items.at(item), "new");
  reader->secretsChanged();
  settle();
  unlock();
  EXPECT_EQ(keyring.items.at(item), "new");
  EXPECT_THAT(sealed.items, IsEmpty());
  EXPECT_EQ(tokens.read(account), u"new"_s);
  EXPECT_EQ(SecureTokenStore({&keyring, &sealed}, debugLog).read(account), u"new"_s);
}

TEST_F(TokenReaderTest, ATokenThatIsStillSealedDoesNotSignInAgainAfterARepeatedRemoval) {
  keyring.items[item] = "token";
  startAndSettle();
  sealed.items[item] = "token";
  keyring.removeFailure = sealed.removeFailure = SecretError::Failed;
  EXPECT_FALSE(tokens.remove(account));
  keyring.removeFailure.reset();
  reader->secretsChanged();
  settle();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_THAT(keyring.items, IsEmpty());
}

TEST_F(TokenReaderTest, ASignInDuringTheRepeatedRemovalIsPutBack) {
  startAndSettle();
  keyring.removeFailure = SecretError::Failed;
  tokens.remove(account);
  keyring.removeFailure.reset();
  EXPECT_EQ(tokens.standing(account), Standing::Open);
  keyring.onRemoved = [this] {
    keyring.onRemoved = nullptr;
    EXPECT_TRUE(tokens.write(u"new"_s, account));
    keyring.items.erase(item);  // as if the removal had come last
  };
  reader->secretsChanged();
  settle();
  EXPECT_EQ(keyring.items.at(item), "new");
  EXPECT_EQ(tokens.read(account), u"new"_s);
}

TEST_F(TokenReaderTest, ItsEndWaitsForNoKeyring) {
  keyring.onFound = [this] {
    while (!giveUp.stop_requested()) std::this_thread::yield();
  };
  start();
  reader.reset();
  EXPECT_TRUE(giveUp.stop_requested());
}

}  // namespace
}  // namespace vemo
