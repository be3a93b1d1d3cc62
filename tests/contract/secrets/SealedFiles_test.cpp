// The sealed secrets on a disk that others have been at.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <functional>

#include "fakes/FakeClock.h"
#include "fakes/FakeSecretBackend.h"
#include "platform/sealed/SealedSecretBackend.h"
#include "storage/DebugLog.h"
#include "storage/SecureTokenStore.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using Found = std::expected<QByteArray, SecretError>;

const Found failed = std::unexpected(SecretError::Failed);
const Found notFound = std::unexpected(SecretError::NotFound);

class SealedFilesTest : public testing::Test {
 protected:
  std::unique_ptr<SealedSecretBackend> open(const QByteArray& machine = "machine one") {
    return std::make_unique<SealedSecretBackend>(
        folder, machine, [this](const QString& line) { lines.append(line); });
  }
  Found find() { return open()->find(service, account); }
  void add(const QByteArray& secret = "secret") {
    ASSERT_TRUE(open()->add(service, account, secret));
  }

  /// find() and remove() fail and the log says why; add() begins anew.
  void expectRefusedAndReplaceable(const QString& reason) {
    const auto backend = open();
    EXPECT_EQ(backend->find(service, account), failed);
    EXPECT_EQ(backend->find(service, account), failed);
    EXPECT_FALSE(backend->remove(service, account));
    EXPECT_THAT(lines, ElementsAre(u"sealed secrets: a file is "_s + reason)) << "told once";
    EXPECT_TRUE(backend->add(service, account, "fresh"));
    EXPECT_EQ(backend->find(service, account), Found("fresh"));
    EXPECT_EQ(modeOf(sealedFile), 0600);
    EXPECT_EQ(modeOf(keyFile), 0600);
  }

  static QByteArray read(const QString& path) {
    QFile file(path);
    EXPECT_TRUE(file.open(QIODevice::ReadOnly));
    return file.readAll();
  }
  /// Leaves the mode as it is.
  static void overwrite(const QString& path, const QByteArray& content) {
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly | QIODevice::Truncate));
    file.write(content);
  }
  static int modeOf(const QString& path) {
    struct stat status{};
    EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &status), 0);
    return static_cast<int>(status.st_mode & 07777);
  }
  static void setMode(const QString& path, mode_t mode) {
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), mode), 0);
  }

  QTemporaryDir place;
  const QString folder = place.filePath(u"state/vemo/secrets"_s);
  const QString keyFile = folder + u"/key"_s;
  const QString sealedFile = folder + u"/sealed"_s;
  const QString service = u"brelmox.Vemo"_s;
  const QString account = u"authToken"_s;
  QStringList lines;
};

TEST_F(SealedFilesTest, ASecretSurvivesARestartAndNothingOnDiskHoldsItInClear) {
  add("very secret token");
  EXPECT_EQ(find(), Found("very secret token"));
  for (const QString& path : {keyFile, sealedFile}) {
    EXPECT_FALSE(read(path).contains("very secret"));
    EXPECT_FALSE(read(path).contains("authToken"));
    EXPECT_EQ(modeOf(path), 0600);
  }
  EXPECT_EQ(modeOf(folder), 0700);
  EXPECT_THAT(lines, IsEmpty());
}

TEST_F(SealedFilesTest, EveryWritingHasANonceOfItsOwn) {
  add("secret");
  const QByteArray first = read(sealedFile);
  add("secret");
  EXPECT_NE(read(sealedFile), first);
}

TEST_F(SealedFilesTest, LookingMakesNoFiles) {
  EXPECT_EQ(find(), notFound);
  EXPECT_FALSE(open()->remove(service, account));
  EXPECT_FALSE(QDir(folder).exists());
}

TEST_F(SealedFilesTest, TheLastRemovalRemovesTheFile) {
  add();
  ASSERT_TRUE(open()->remove(service, account));
  EXPECT_FALSE(QFile::exists(sealedFile));
  EXPECT_EQ(find(), notFound);
}

TEST_F(SealedFilesTest, WithoutAPlaceOrAMachineThereIsNoStore) {
  SealedSecretBackend nowhere(QString(), "machine", {});
  EXPECT_EQ(nowhere.find(service, account), Found(std::unexpected(SecretError::Unavailable)));
  const auto anywhere = open("");
  EXPECT_EQ(anywhere->find(service, account), Found(std::unexpected(SecretError::Unavailable)));
  EXPECT_EQ(anywhere->add(service, account, "x").error(), SecretError::Unavailable);
  EXPECT_EQ(anywhere->remove(service, account).error(), SecretError::Unavailable);
}

TEST_F(SealedFilesTest, TheFilesOfAnotherMachineDoNotOpen) {
  add();
  const auto elsewhere = open("machine two");
  EXPECT_EQ(elsewhere->find(service, account), failed);
  EXPECT_THAT(lines, ElementsAre(u"sealed secrets: a file is damaged, or sealed elsewhere"_s));
  EXPECT_EQ(find(), Found("secret")) << "looking spoils nothing";
}

TEST_F(SealedFilesTest, ATruncatedFileIsRefusedAtEveryLength) {
  add();
  const QByteArray whole = read(sealedFile);
  for (qsizetype length = 0; length < whole.size(); ++length) {
    overwrite(sealedFile, whole.first(length));
    ASSERT_EQ(find(), failed) << length;
  }
  lines.clear();
  expectRefusedAndReplaceable(u"damaged, or sealed elsewhere"_s);
}

TEST_F(SealedFilesTest, AnyChangedBitIsNoticed) {
  add();
  const QByteArray whole = read(sealedFile);
  for (qsizetype position = 0; position < whole.size(); ++position) {
    QByteArray changed = whole;
    changed[position] = static_cast<char>(changed[position] ^ 1);
    overwrite(sealedFile, changed);
    ASSERT_EQ(find(), failed) << position;
  }
}

TEST_F(SealedFilesTest, AKeyOfAnotherLengthIsNoKey) {
  for (const qsizetype length : {0, 31}) {
    add();
    overwrite(keyFile, QByteArray(length, 'k'));
    lines.clear();
    expectRefusedAndReplaceable(u"damaged, or sealed elsewhere"_s);
  }
  overwrite(keyFile, QByteArray(33, 'k'));
  lines.clear();
  expectRefusedAndReplaceable(u"too large"_s);
}

TEST_F(SealedFilesTest, ALostKeyMakesTheBoxUseless) {
  add();
  ASSERT_TRUE(QFile::remove(keyFile));
  expectRefusedAndReplaceable(u"damaged, or sealed elsewhere"_s);
}

TEST_F(SealedFilesTest, AnOversizedFileIsNotRead) {
  add();
  ASSERT_EQ(::truncate(QFile::encodeName(sealedFile).constData(), maximumSealedSize + 1), 0);
  expectRefusedAndReplaceable(u"too large"_s);
}

TEST_F(SealedFilesTest, MoreThanTheFileMayHoldIsNotWritten) {
  add();
  EXPECT_FALSE(open()->add(service, u"other"_s, QByteArray(maximumSealedSize, 'x')));
  EXPECT_EQ(find(), Found("secret"));
}

TEST_F(SealedFilesTest, AFileThatOthersMayReadIsRefused) {
  for (const mode_t mode : {0604, 0640, 0602, 0620}) {
    add();
    setMode(sealedFile, mode);
    lines.clear();
    expectRefusedAndReplaceable(u"open to other users"_s);
  }
}

TEST_F(SealedFilesTest, AKeyThatOthersCouldReadIsReplacedByAnother) {
  add();
  const QByteArray known = read(keyFile);
  setMode(keyFile, 0644);
  expectRefusedAndReplaceable(u"open to other users"_s);
  EXPECT_NE(read(keyFile), known);
}

TEST_F(SealedFilesTest, ALinkIsNotFollowedAndItsTargetStaysAsItIs) {
  for (const QString& path : {sealedFile, keyFile}) {
    add();
    const QString elsewhere = place.filePath(u"elsewhere"_s);
    QFile::remove(elsewhere);
    ASSERT_TRUE(QFile::rename(path, elsewhere));
    ASSERT_TRUE(QFile::link(elsewhere, path));
    const QByteArray target = read(elsewhere);
    lines.clear();
    expectRefusedAndReplaceable(u"not a plain file"_s);
    EXPECT_EQ(read(elsewhere), target);
  }
}

TEST_F(SealedFilesTest, APipeIsRefusedWithoutWaitingForItsOtherEnd) {
  add();
  ASSERT_TRUE(QFile::remove(sealedFile));
  ASSERT_EQ(::mkfifo(QFile::encodeName(sealedFile).constData(), 0600), 0);
  expectRefusedAndReplaceable(u"not a plain file"_s);
}

TEST_F(SealedFilesTest, AFolderInTheWayIsAnErrorThatStays) {
  add();
  ASSERT_TRUE(QFile::remove(sealedFile));
  ASSERT_TRUE(QDir(folder).mkdir(u"sealed"_s));
  EXPECT_EQ(find(), failed);
  EXPECT_FALSE(open()->add(service, account, "fresh"));
}

TEST_F(SealedFilesTest, AFolderThatOthersMayWriteToTakesNoSecrets) {
  add();
  setMode(folder, 0770);
  EXPECT_FALSE(open()->add(service, account, "fresh"));
  EXPECT_EQ(lines.last(), u"sealed secrets: a file is open to other users"_s);
  setMode(folder, 0750);
  EXPECT_TRUE(open()->add(service, account, "fresh")) << "reading the folder tells only names";
}

/// Only root can give a file away; anybody else finds root's files.
TEST_F(SealedFilesTest, AFileOfAnotherOwnerIsRefused) {
  QByteArray path = "/etc/hostname";
  if (::geteuid() == 0) {
    add();
    path = QFile::encodeName(sealedFile);
    ASSERT_EQ(::chown(path.constData(), 65534, 65534), 0);
    EXPECT_EQ(find(), failed);
    EXPECT_THAT(lines, ElementsAre(u"sealed secrets: a file is of another owner"_s));
  }
  const auto content = readOwnFile(path, maximumSealedSize);
  ASSERT_FALSE(content);
  EXPECT_EQ(content.error(), FileTrouble::OtherOwner);
}

TEST_F(SealedFilesTest, WhatAKillLeftOfAWritingIsNoHindrance) {
  add();
  overwrite(sealedFile + u".unfinished"_s, "half");
  add("newer");
  EXPECT_EQ(find(), Found("newer"));
  EXPECT_FALSE(QFile::exists(sealedFile + u".unfinished"_s));
}

TEST_F(SealedFilesTest, AnUmaskThatTakesEverythingDoesNotLockTheUserOut) {
  const mode_t before = ::umask(0777);
  add();
  ::umask(before);
  EXPECT_EQ(modeOf(sealedFile), 0600);
  EXPECT_EQ(find(), Found("secret"));
}

// Behind a keyring.

class SealedPairTest : public SealedFilesTest {
 protected:
  SealedPairTest() : clock(mainThread), debugLog(clock, QString()) {}

  SecureTokenStore tokens() { return SecureTokenStore({&keyring, sealed.get()}, debugLog); }

  FakeMainThread mainThread;
  FakeClock clock;
  DebugLog debugLog;
  FakeSecretBackend keyring;
  const std::unique_ptr<SealedSecretBackend> sealed = open();
};

TEST_F(SealedPairTest, WithoutAKeyringATokenOutlivesTheProgram) {
  keyring.failEverythingWith(SecretError::Unavailable);
  EXPECT_TRUE(tokens().write(u"token"_s, account));
  EXPECT_EQ(tokens().read(account), u"token"_s);
}

TEST_F(SealedPairTest, AKeyringThatComesLaterTakesTheTokenOver) {
  keyring.failEverythingWith(SecretError::Unavailable);
  EXPECT_TRUE(tokens().write(u"token"_s, account));
  keyring.failEverythingWith({});
  EXPECT_EQ(tokens().read(account), u"token"_s);
  EXPECT_EQ(keyring.items.begin()->second, "token");
  EXPECT_FALSE(QFile::exists(sealedFile));
}

TEST_F(SealedPairTest, ASignOutLeavesNothingInEither) {
  ASSERT_TRUE(sealed->add(service, account, "old"));
  EXPECT_TRUE(tokens().write(u"token"_s, account));
  EXPECT_TRUE(tokens().remove(account));
  EXPECT_THAT(keyring.items, IsEmpty());
  EXPECT_FALSE(QFile::exists(sealedFile));
}

TEST_F(SealedPairTest, ADamagedBoxIsAbsenceAndASignInHealsIt) {
  keyring.failEverythingWith(SecretError::Unavailable);
  EXPECT_TRUE(tokens().write(u"token"_s, account));
  overwrite(sealedFile, "not a box");
  EXPECT_EQ(tokens().read(account), std::nullopt);
  EXPECT_TRUE(tokens().write(u"another"_s, account));
  EXPECT_EQ(tokens().read(account), u"another"_s);
}

}  // namespace
}  // namespace vemo
