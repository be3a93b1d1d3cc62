#include "storage/SecureTokenStore.h"

#include <thread>

#include "StorageTest.h"
#include "fakes/FakeSecretBackend.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class SecureTokenStoreTest : public StorageTest {
 protected:
  static inline const QString account = u"authToken"_s;
  static inline const FakeSecretBackend::Item item{u"brelmox.Vemo"_s, u"authToken"_s};

  SecureTokenStore store() { return SecureTokenStore({&first, &second}, debugLog); }

  FakeSecretBackend first;
  FakeSecretBackend second;
  SecureTokenStore tokens{{&first, &second}, debugLog};
};

TEST_F(SecureTokenStoreTest, AWrittenTokenIsReadWithoutAskingABackend) {
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  first.calls.clear();
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(first.calls, IsEmpty());
  EXPECT_EQ(first.items.at(item), "token");
  EXPECT_THAT(second.items, IsEmpty());
}

TEST_F(SecureTokenStoreTest, AWriteDeletesEverywhereAndThenAddsToTheFirst) {
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  EXPECT_THAT(first.calls,
              ElementsAre(u"remove brelmox.Vemo authToken"_s, u"add brelmox.Vemo authToken"_s));
  EXPECT_THAT(second.calls, ElementsAre(u"remove brelmox.Vemo authToken"_s));
}

TEST_F(SecureTokenStoreTest, TheFirstReadAsksAndFurtherReadsDoNot) {
  first.items[item] = "token";
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_THAT(first.calls, SizeIs(1));
  EXPECT_THAT(second.calls, IsEmpty());
}

TEST_F(SecureTokenStoreTest, AfterDeleteAReadIsAbsentWithoutABackendCall) {
  first.items[item] = "token";
  EXPECT_TRUE(tokens.remove(account));
  first.calls.clear();
  second.calls.clear();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_THAT(first.calls, IsEmpty());
  EXPECT_THAT(second.calls, IsEmpty());
}

TEST_F(SecureTokenStoreTest, AnItemOnlyInTheLegacyBackendIsReturnedAndMovesOnTheSameRead) {
  second.items[item] = "token";
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_EQ(first.items.at(item), "token");
  EXPECT_THAT(second.items, IsEmpty());
  EXPECT_THAT(logged(), ElementsAre(u"keychain: moved item into the data protection keychain"_s));
}

TEST_F(SecureTokenStoreTest, AnItemInBothIsReadFromTheFirstAndTheLegacyCopyStaysUntilAWrite) {
  first.items[item] = "new";
  second.items[item] = "old";
  EXPECT_EQ(tokens.read(account), u"new"_s);
  EXPECT_EQ(second.items.at(item), "old");
  EXPECT_TRUE(tokens.write(u"newer"_s, account));
  EXPECT_THAT(second.items, IsEmpty());
}

TEST_F(SecureTokenStoreTest, ALegacyCopyGoesWithADelete) {
  first.items[item] = "new";
  second.items[item] = "old";
  EXPECT_TRUE(tokens.remove(account));
  EXPECT_THAT(first.items, IsEmpty());
  EXPECT_THAT(second.items, IsEmpty());
}

TEST_F(SecureTokenStoreTest, WithTheEntitlementMissingTheLegacyBackendServesWithoutALogLine) {
  first.failEverythingWith(SecretError::Unavailable);
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_EQ(store().read(account), u"token"_s);
  EXPECT_EQ(second.items.at(item), "token");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(SecureTokenStoreTest, AnItemHoldingAnEmptyValueReadsAsAbsent) {
  first.items[item] = "";
  EXPECT_EQ(tokens.read(account), std::nullopt);
}

TEST_F(SecureTokenStoreTest, AnEmptyOrUnreadableItemIsPassedOverForTheNextBackend) {
  for (const QByteArray& unusable : {QByteArray(""), QByteArray("\xff\xfe")}) {
    first.items[item] = unusable;
    second.items[item] = "token";
    EXPECT_EQ(store().read(account), u"token"_s);
  }
}

TEST_F(SecureTokenStoreTest, ATokenThatAnotherProcessWritesLaterStaysInvisibleUntilRestart) {
  EXPECT_EQ(tokens.read(account), std::nullopt);
  first.items[item] = "token";
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_EQ(store().read(account), u"token"_s);
}

TEST_F(SecureTokenStoreTest, AFailureToReadIsAbsenceAndStaysSo) {
  first.items[item] = "token";
  first.findFailure = SecretError::Failed;
  EXPECT_EQ(tokens.read(account), std::nullopt);
  first.findFailure.reset();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(SecureTokenStoreTest, AFailedPromotionIsLoggedAndDoesNotFailTheRead) {
  second.items[item] = "token";
  first.addFailure = SecretError::Failed;
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_EQ(second.items.at(item), "token");
  EXPECT_THAT(logged(), ElementsAre(u"keychain: promotion failed (OSStatus -25291)"_s));
}

TEST_F(SecureTokenStoreTest, ALegacyItemThatCanNotBeDeletedAfterItsMoveDoesNotMatter) {
  second.items[item] = "token";
  second.removeFailure = SecretError::Failed;
  EXPECT_EQ(tokens.read(account), u"token"_s);
  EXPECT_EQ(first.items.at(item), "token");
  EXPECT_THAT(logged(), ElementsAre(u"keychain: moved item into the data protection keychain"_s));
}

TEST_F(SecureTokenStoreTest, AnyFailureOfTheFirstBackendLetsAWriteGoToTheSecond) {
  first.addFailure = SecretError::Failed;
  EXPECT_TRUE(tokens.write(u"token"_s, account));
  EXPECT_EQ(second.items.at(item), "token");
  EXPECT_THAT(logged(), IsEmpty());
}

TEST_F(SecureTokenStoreTest, AWriteThatNoBackendTakesIsFalseAndTheOldValueIsGone) {
  EXPECT_TRUE(tokens.write(u"old"_s, account));
  first.addFailure = SecretError::Unavailable;
  second.addFailure = SecretError::Failed;
  EXPECT_FALSE(tokens.write(u"new"_s, account));
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_EQ(store().read(account), std::nullopt);
  EXPECT_THAT(logged(),
              ElementsAre(u"keychain: write failed for both backends (OSStatus -25291)"_s));
}

TEST_F(SecureTokenStoreTest, TheLogLineOfAFailedWriteHasTheLastStatus) {
  first.addFailure = SecretError::Failed;
  second.addFailure = SecretError::Unavailable;
  EXPECT_FALSE(tokens.write(u"new"_s, account));
  second.addFailure = SecretError::NotFound;
  EXPECT_FALSE(tokens.write(u"new"_s, account));
  EXPECT_THAT(logged(),
              ElementsAre(u"keychain: write failed for both backends (OSStatus -34018)"_s,
                          u"keychain: write failed for both backends (OSStatus -25300)"_s));
}

TEST_F(SecureTokenStoreTest, AValueThatHasNoUtf8FormIsNotWrittenAndNothingIsDeleted) {
  EXPECT_TRUE(tokens.write(u"old"_s, account));
  EXPECT_FALSE(tokens.write(u"bad "_s + QChar(0xd800), account));
  EXPECT_EQ(tokens.read(account), u"old"_s);
  EXPECT_EQ(first.items.at(item), "old");
}

TEST_F(SecureTokenStoreTest, ADeleteSucceedsWhenNothingWasThereAndFailsWhenABackendFails) {
  EXPECT_TRUE(tokens.remove(account));
  first.removeFailure = SecretError::Failed;
  second.items[item] = "token";
  EXPECT_FALSE(tokens.remove(account));
  EXPECT_THAT(second.items, IsEmpty());
  first.removeFailure = SecretError::Unavailable;
  EXPECT_FALSE(tokens.remove(account));
}

TEST_F(SecureTokenStoreTest, AccountsAreApart) {
  EXPECT_TRUE(tokens.write(u"one"_s, u"authToken"_s));
  EXPECT_TRUE(tokens.write(u"two"_s, u"slackApiToken"_s));
  EXPECT_TRUE(tokens.remove(u"authToken"_s));
  EXPECT_EQ(tokens.read(u"slackApiToken"_s), u"two"_s);
}

TEST_F(SecureTokenStoreTest, OneBackendAloneIsEnough) {
  SecureTokenStore single({&first}, debugLog);
  EXPECT_TRUE(single.write(u"token"_s, account));
  EXPECT_EQ(SecureTokenStore({&first}, debugLog).read(account), u"token"_s);
  EXPECT_TRUE(single.remove(account));
  EXPECT_EQ(SecureTokenStore({&first}, debugLog).read(account), std::nullopt);
}

TEST_F(SecureTokenStoreTest, AWriteDuringAColdReadIsWhatLaterReadsSee) {
  first.items[item] = "old";
  first.onFound = [this] {
    first.onFound = nullptr;
    EXPECT_TRUE(tokens.write(u"new"_s, account));
  };
  EXPECT_EQ(tokens.read(account), u"old"_s);
  EXPECT_EQ(tokens.read(account), u"new"_s);
}

TEST_F(SecureTokenStoreTest, TheLockIsNotHeldAcrossABackendCall) {
  EXPECT_TRUE(tokens.write(u"slack"_s, u"slackApiToken"_s));
  std::optional<QString> readMeanwhile;
  first.onFound = [&] {
    std::thread([&] { readMeanwhile = tokens.read(u"slackApiToken"_s); }).join();
  };
  EXPECT_EQ(tokens.read(account), std::nullopt);
  EXPECT_EQ(readMeanwhile, u"slack"_s);
}

TEST_F(SecureTokenStoreTest, ManyThreadsMayReadWriteAndDeleteAtOnce) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int round = 0; round < 300; ++round) {
        if (thread == 0) EXPECT_TRUE(tokens.write(u"token"_s, account));
        if (thread == 1) EXPECT_TRUE(tokens.remove(account));
        const auto token = tokens.read(account);
        EXPECT_TRUE(!token || *token == u"token"_s);
      }
    });
  }
  for (auto& thread : threads) thread.join();
}

TEST_F(SecureTokenStoreTest, NoLogLineHoldsASecretOrAnAccount) {
  first.addFailure = second.addFailure = SecretError::Failed;
  tokens.write(u"verysecret"_s, account);
  second.items[item] = "verysecret";
  store().read(account);
  EXPECT_FALSE(logged().join(u'\n').contains(u"verysecret"_s));
  EXPECT_FALSE(logged().join(u'\n').contains(account));
}

}  // namespace
}  // namespace vemo
