// What every SecretBackend promises, held by the fake, the keyring of the desktop and the sealed
// file.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <string>
#include <thread>
#include <tuple>
#include <vector>

#include "fakes/FakeClock.h"
#include "fakes/FakeSecretBackend.h"
#include "platform/sealed/SealedSecretBackend.h"
#include "platform/secretservice/SecretServiceBackend.h"
#include "storage/DebugLog.h"
#include "storage/SecureTokenStore.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using Found = std::expected<QByteArray, SecretError>;

/// On a busy machine a keyring that answers may take longer than its users would wait.
constexpr std::chrono::seconds generousLimit{20};

struct Subject {
  const char* name;
  std::unique_ptr<SecretBackend> (*make)();
};

class SecretBackendContract : public testing::TestWithParam<Subject> {
 protected:
  ~SecretBackendContract() override {
    for (const QString& account : {one, two}) {
      std::ignore = backend->remove(service, account);
      std::ignore = backend->remove(otherService, account);
    }
  }

  void add(const QString& account, const QByteArray& secret) {
    ASSERT_TRUE(backend->add(service, account, secret));
  }

  const QString service = u"brelmox.Vemo.contract"_s;
  const QString otherService = u"brelmox.Vemo.contract.other"_s;
  const QString one = u"one"_s;
  const QString two = u"two कुंजी"_s;
  const std::unique_ptr<SecretBackend> backend = GetParam().make();
};

TEST_P(SecretBackendContract, AnItemThatWasNeverAddedIsNotFound) {
  EXPECT_EQ(backend->find(service, one), Found(std::unexpected(SecretError::NotFound)));
  const auto removed = backend->remove(service, one);
  ASSERT_FALSE(removed);
  EXPECT_EQ(removed.error(), SecretError::NotFound);
}

TEST_P(SecretBackendContract, AnAddedItemIsFound) {
  add(one, "secret");
  EXPECT_EQ(backend->find(service, one), Found("secret"));
}

TEST_P(SecretBackendContract, AnItemComesBackByteForByte) {
  for (const QByteArray& secret :
       {QByteArray("नमस्ते"), QByteArray("a\nb\0c", 5), QByteArray("\xff\xfe"), QByteArray(""),
        QByteArray(20'000, 'x')}) {
    add(one, secret);
    EXPECT_EQ(backend->find(service, one), Found(secret));
  }
}

TEST_P(SecretBackendContract, AddingAgainReplaces) {
  add(one, "old");
  add(one, "new");
  EXPECT_EQ(backend->find(service, one), Found("new"));
  EXPECT_TRUE(backend->remove(service, one));
  EXPECT_EQ(backend->find(service, one), Found(std::unexpected(SecretError::NotFound)));
}

TEST_P(SecretBackendContract, ItemsOfOtherAccountsAndServicesAreApart) {
  add(one, "first");
  add(two, "second");
  ASSERT_TRUE(backend->add(otherService, one, "third"));
  EXPECT_TRUE(backend->remove(service, one));
  EXPECT_EQ(backend->find(service, one), Found(std::unexpected(SecretError::NotFound)));
  EXPECT_EQ(backend->find(service, two), Found("second"));
  EXPECT_EQ(backend->find(otherService, one), Found("third"));
}

TEST_P(SecretBackendContract, ManyThreadsMayUseItAtOnce) {
  add(one, "secret");
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this] {
      for (int round = 0; round < 5; ++round)
        EXPECT_EQ(backend->find(service, one), Found("secret"));
    });
  }
  for (auto& thread : threads) thread.join();
}

std::unique_ptr<SecretBackend> makeFake() {
  return std::make_unique<FakeSecretBackend>();
}

std::unique_ptr<SecretBackend> makeSecretService() {
  return std::make_unique<SecretServiceBackend>(generousLimit);
}

std::unique_ptr<SecretBackend> makeSealed() {
  static const QTemporaryDir folder;
  return std::make_unique<SealedSecretBackend>(folder.filePath(u"secrets"_s), "machine"_ba,
                                               [](const QString&) {});
}

INSTANTIATE_TEST_SUITE_P(Backends, SecretBackendContract,
                         testing::Values(Subject{"Fake", &makeFake},
                                         Subject{"SecretService", &makeSecretService},
                                         Subject{"Sealed", &makeSealed}),
                         [](const auto& subject) { return std::string(subject.param.name); });

class SecretServiceTest : public testing::Test {
 protected:
  ~SecretServiceTest() override { std::ignore = backend.remove(service, account); }

  static void runSecretTool(const QStringList& arguments, const QByteArray& input = {}) {
    QProcess tool;
    tool.start(u"secret-tool"_s, arguments);
    tool.write(input);
    tool.closeWriteChannel();
    ASSERT_TRUE(tool.waitForFinished());
    ASSERT_EQ(tool.exitCode(), 0) << tool.readAllStandardError().data();
    output() = tool.readAllStandardOutput();
  }
  static QByteArray& output() {
    static QByteArray bytes;
    return bytes;
  }

  const QString service = u"brelmox.Vemo"_s;
  const QString account = u"authToken"_s;
  SecretServiceBackend backend{generousLimit};
};

TEST_F(SecretServiceTest, AnItemStoredByHandIsFoundAndRemoved) {
  runSecretTool({u"store"_s, u"--label=Vemo"_s, u"service"_s, service, u"account"_s, account},
                "by hand");
  EXPECT_EQ(backend.find(service, account), Found("by hand"));
  EXPECT_TRUE(backend.remove(service, account));
  EXPECT_EQ(backend.find(service, account), Found(std::unexpected(SecretError::NotFound)));
}

TEST_F(SecretServiceTest, AnItemOfThisProgramIsFoundByHand) {
  ASSERT_TRUE(backend.add(service, account, "stored here"));
  runSecretTool({u"lookup"_s, u"service"_s, service, u"account"_s, account});
  EXPECT_EQ(output(), "stored here");
}

TEST_F(SecretServiceTest, ATokenStoreFindsItsTokenAfterARestart) {
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  DebugLog debugLog(clock, QString());
  EXPECT_TRUE(SecureTokenStore({&backend}, debugLog).write(u"token"_s, account));
  EXPECT_EQ(SecureTokenStore({&backend}, debugLog).read(account), u"token"_s);
  EXPECT_TRUE(SecureTokenStore({&backend}, debugLog).remove(account));
  EXPECT_EQ(SecureTokenStore({&backend}, debugLog).read(account), std::nullopt);
}

}  // namespace
}  // namespace vemo
