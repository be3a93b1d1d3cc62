// The life of a real keyring under a program that goes on: locked, unlocked, silent, killed,
// started again.
#include <gmock/gmock.h>

#include <functional>
#include <thread>

#include "PrivateBus.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeSecretBackend.h"
#include "platform/gio/GioThread.h"
#include "platform/secretservice/KeyringWatch.h"
#include "platform/secretservice/SecretServiceBackend.h"
#include "storage/DebugLog.h"
#include "storage/SecureTokenStore.h"
#include "storage/TokenReader.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using Found = std::expected<QByteArray, SecretError>;

constexpr auto generousLimit = 60s;
constexpr auto password = "keyring life";

class KeyringLifeTest : public testing::Test {
 protected:
  /// A process is bound to the session bus that it meets first, so there is one for all tests.
  static void SetUpTestSuite() {
    if (bus) return;
    bus = std::make_unique<PrivateBus>();
    bus->start();
    ::setenv("DBUS_SESSION_BUS_ADDRESS", bus->address().toUtf8().constData(), 1);
  }

  KeyringLifeTest() { startKeyring(); }
  ~KeyringLifeTest() override {
    if (keyring) PrivateBus::kill(*keyring);
  }

  void startKeyring() {
    keyring = &bus->startProcess(u"gnome-keyring-daemon"_s,
                                 {u"--foreground"_s, u"--unlock"_s, u"--components=secrets"_s,
                                  u"--control-directory="_s + bus->folder() + u"/keyring"_s});
    sendPassword(*keyring);
    waitUntil([this] { return patient.add(service, u"probe"_s, "x").has_value(); });
  }

  static void sendPassword(QProcess& process) {
    ASSERT_TRUE(process.waitForStarted());
    process.write(password);
    process.closeWriteChannel();
    process.waitForBytesWritten();
  }

  void killKeyring() {
    PrivateBus::kill(*std::exchange(keyring, nullptr));
    waitUntil([this] { return !patient.find(service, account); });
  }
  void stopKeyring() { ::kill(static_cast<pid_t>(keyring->processId()), SIGSTOP); }
  void continueKeyring() { ::kill(static_cast<pid_t>(keyring->processId()), SIGCONT); }

  static void lockKeyring() {
    QProcess process;
    process.setProcessEnvironment(bus->environment());
    process.start(u"dbus-send"_s,
                  {u"--session"_s, u"--dest=org.freedesktop.secrets"_s, u"--print-reply"_s,
                   u"/org/freedesktop/secrets"_s, u"org.freedesktop.Secret.Service.Lock"_s,
                   u"array:objpath:/org/freedesktop/secrets/aliases/default"_s});
    ASSERT_TRUE(process.waitForFinished());
    ASSERT_EQ(process.exitCode(), 0);
  }

  static void unlockKeyring() {
    QProcess process;
    process.setProcessEnvironment(bus->environment());
    process.start(QStringLiteral(UNLOCK_KEYRING), QStringList());
    sendPassword(process);
    ASSERT_TRUE(process.waitForFinished());
    ASSERT_EQ(process.exitCode(), 0);
  }

  static void waitUntil(const std::function<bool()>& isSo) {
    const auto end = std::chrono::steady_clock::now() + generousLimit;
    while (!isSo()) {
      ASSERT_LT(std::chrono::steady_clock::now(), end);
      std::this_thread::yield();
    }
  }

  static inline std::unique_ptr<PrivateBus> bus;

  const QString service = u"brelmox.Vemo"_s;
  const QString account = u"authToken"_s;
  QProcess* keyring = nullptr;
  std::stop_source giveUp;
  SecretServiceBackend patient{generousLimit, giveUp.get_token()};
};

TEST_F(KeyringLifeTest, ALockedKeyringIsFailedAndAnUnlockedOneAnswersAgain) {
  ASSERT_TRUE(patient.add(service, account, "secret"));
  lockKeyring();
  EXPECT_EQ(patient.find(service, account), Found(std::unexpected(SecretError::Failed)));
  unlockKeyring();
  EXPECT_EQ(patient.find(service, account), Found("secret"));
}

TEST_F(KeyringLifeTest, AKeyringKilledInTheMiddleOfACallFailsItAndServesAgainOnceRestarted) {
  ASSERT_TRUE(patient.add(service, account, "secret"));
  stopKeyring();
  std::optional<Found> answer;
  std::jthread caller([&] { answer = patient.find(service, account); });
  PrivateBus::kill(*std::exchange(keyring, nullptr));
  caller.join();
  ASSERT_TRUE(answer);
  EXPECT_FALSE(answer->has_value());
  EXPECT_EQ(patient.find(service, account), Found(std::unexpected(SecretError::Unavailable)));
  startKeyring();
  EXPECT_EQ(patient.find(service, account), Found("secret"));
}

TEST_F(KeyringLifeTest, AKeyringThatWasSilentForAWhileServesAgain) {
  ASSERT_TRUE(patient.add(service, account, "secret"));
  SecretServiceBackend hasty(200ms);
  stopKeyring();
  EXPECT_EQ(hasty.find(service, account), Found(std::unexpected(SecretError::Failed)));
  continueKeyring();
  waitUntil([&] { return hasty.find(service, account).has_value(); });
}

TEST_F(KeyringLifeTest, GivingUpEndsACallAtOnce) {
  stopKeyring();
  std::optional<Found> answer;
  {
    std::jthread caller([&] { answer = patient.find(service, account); });
    giveUp.request_stop();
  }
  EXPECT_EQ(answer, Found(std::unexpected(SecretError::Failed)));
  continueKeyring();
}

// A program's start, and what comes after it.

class KeyringStartTest : public KeyringLifeTest {
 protected:
  ~KeyringStartTest() override {
    watch.reset();
    reader.reset();
  }

  void startProgram() {
    reader.emplace(TokenReader::Neighbours{.tokens = tokens,
                                           .backends = {&reading, &sealed},
                                           .giveUp = giveUpReading,
                                           .mainThread = mainThread,
                                           .clock = clock},
                   std::vector{account});
    watch.emplace(gio, mainThread, [this] { reader->keyringChanged(); });
  }

  /// On a clock that stands still, so that only the keyring's own signals help.
  void waitForToken(const QString& token) {
    waitUntil([&] {
      mainThread.drain();
      return tokens.read(account) == token;
    });
  }
  void waitForFirstAnswer() {
    waitUntil([&] {
      mainThread.drain();
      return !tokens.isExpected(account);
    });
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  DebugLog debugLog{clock, QString()};
  SecretServiceBackend hasty{200ms};
  std::stop_source giveUpReading;
  SecretServiceBackend reading{5s, giveUpReading.get_token()};
  FakeSecretBackend sealed;
  SecureTokenStore tokens{{&hasty, &sealed}, debugLog};
  GioThread gio;
  std::optional<TokenReader> reader;
  std::optional<KeyringWatch> watch;
};

TEST_F(KeyringStartTest, ATokenArrivesAfterAStartThatAsksNobody) {
  ASSERT_TRUE(patient.add(service, account, "token"));
  startProgram();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  waitForToken(u"token"_s);
}

TEST_F(KeyringStartTest, AKeyringUnlockedLaterTellsSoAndBringsTheToken) {
  ASSERT_TRUE(patient.add(service, account, "token"));
  lockKeyring();
  startProgram();
  waitForFirstAnswer();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  unlockKeyring();
  waitForToken(u"token"_s);
}

TEST_F(KeyringStartTest, AKeyringThatStartsLaterTellsSoAndBringsTheToken) {
  ASSERT_TRUE(patient.add(service, account, "token"));
  killKeyring();
  startProgram();
  waitForFirstAnswer();
  EXPECT_EQ(tokens.read(account), std::nullopt);
  startKeyring();
  waitForToken(u"token"_s);
}

TEST_F(KeyringStartTest, ASignOutWhileTheKeyringIsLockedIsDoneOnceItIsUnlocked) {
  ASSERT_TRUE(patient.add(service, account, "token"));
  startProgram();
  waitForToken(u"token"_s);
  lockKeyring();
  EXPECT_FALSE(tokens.remove(account));
  reader->secretsChanged();
  unlockKeyring();
  waitUntil([&] {
    mainThread.drain();
    return tokens.standing(account) == SecureTokenStore::Standing::Settled;
  });
  EXPECT_EQ(patient.find(service, account), Found(std::unexpected(SecretError::NotFound)));
}

TEST_F(KeyringStartTest, AnEndDuringTheFirstQuestionWaitsForNoKeyring) {
  stopKeyring();
  startProgram();
  const auto start = std::chrono::steady_clock::now();
  watch.reset();
  reader.reset();
  EXPECT_LT(std::chrono::steady_clock::now() - start, 3s) << "far below the reader's patience";
  continueKeyring();
}

}  // namespace
}  // namespace vemo
