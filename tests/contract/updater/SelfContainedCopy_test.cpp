#include <thread>

#include "CopyFixture.h"
#include "platform/updater/VersionCheck.h"

namespace vemo {

using Start = SelfContainedCopy::Start;

class SelfContainedCopyTest : public CopyFixture {
 protected:
  /// A start that ends before it has gone well, as by a crash.
  Start crashingStart() { return SelfContainedCopy(root).beginStart(); }

  void startWell() {
    SelfContainedCopy copy(root);
    ASSERT_EQ(copy.beginStart(), Start::Goes);
    copy.startedWell();
  }

  /// As another process of the program does that runs this build.
  std::shared_ptr<FolderLock> running(quint64 build) const {
    return FolderLock::take(versionFolder(build), FolderLock::Kind::Shared);
  }

  quint64 previous() const {
    return QFile::symLinkTarget(root + u"/previous"_s).section(u'/', -1).toULongLong();
  }
};

TEST_F(SelfContainedCopyTest, IsFoundAroundItsProgramAndNowhereElse) {
  const auto found = SelfContainedCopy::around(root + u"/current/bin/vemo"_s);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->currentBuild(), 1U);
  EXPECT_EQ(found->program(), root + u"/current/bin/vemo"_s);
  EXPECT_FALSE(SelfContainedCopy::around(u"/usr/bin/env"_s));
  EXPECT_FALSE(SelfContainedCopy::around(folder.filePath(u"made-2/bin/vemo"_s)));
  EXPECT_FALSE(SelfContainedCopy::around(root + u"/nothing"_s));
}

TEST_F(SelfContainedCopyTest, IsNoneWhereAnotherVersionIsTheCurrentOne) {
  ASSERT_TRUE(install(2));
  EXPECT_TRUE(SelfContainedCopy::around(versionFolder(2) + u"/bin/vemo"_s));
  EXPECT_FALSE(SelfContainedCopy::around(versionFolder(1) + u"/bin/vemo"_s));
}

TEST_F(SelfContainedCopyTest, IsNoneWhereEverybodyMayWrite) {
  const QString program = root + u"/current/bin/vemo"_s;
  for (const QString& open : {root, root + u"/versions"_s}) {
    const auto permissions = QFile::permissions(open);
    QFile::setPermissions(open, permissions | QFile::WriteOther);
    EXPECT_FALSE(SelfContainedCopy::around(program));
    QFile::setPermissions(open, permissions);
    EXPECT_TRUE(SelfContainedCopy::around(program));
  }
}

TEST_F(SelfContainedCopyTest, TheOldVersionStaysUntilTheNewOneHasStartedWell) {
  ASSERT_TRUE(install(2));
  SelfContainedCopy copy(root);
  EXPECT_EQ(copy.beginStart(), Start::Goes);
  EXPECT_TRUE(QFile::exists(versionFolder(1) + u"/bin/vemo"_s));
  copy.startedWell();
  EXPECT_FALSE(QFile::exists(versionFolder(1)));
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
  EXPECT_EQ(copy.beginStart(), Start::Goes);
}

TEST_F(SelfContainedCopyTest, AVersionThatCrashesTwiceBeforeItHasStartedWellIsGivenUp) {
  ASSERT_TRUE(install(2));
  EXPECT_EQ(crashingStart(), Start::Goes);
  EXPECT_EQ(crashingStart(), Start::Goes);
  EXPECT_EQ(crashingStart(), Start::RolledBack);
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  EXPECT_EQ(SelfContainedCopy(root).refusedBuild(), 2U);
  EXPECT_EQ(crashingStart(), Start::Goes);
}

TEST_F(SelfContainedCopyTest, AVersionThatEndsRegularlyIsNotGivenUpHoweverSoonThatIs) {
  ASSERT_TRUE(install(2));
  EXPECT_EQ(crashingStart(), Start::Goes);
  for (int i = 0; i < 5; ++i) {
    SelfContainedCopy copy(root);
    ASSERT_EQ(copy.beginStart(), Start::Goes) << i;
    copy.takeBackStart();
    copy.takeBackStart();  // once is all
  }
  EXPECT_EQ(crashingStart(), Start::Goes);
  EXPECT_EQ(crashingStart(), Start::RolledBack);
}

TEST_F(SelfContainedCopyTest, WhoStartsItWhileItRunsDoesNotCount) {
  ASSERT_TRUE(install(2));
  SelfContainedCopy first(root);
  ASSERT_EQ(first.beginStart(), Start::Goes);
  for (int i = 0; i < 5; ++i) {
    SelfContainedCopy second(root);
    EXPECT_EQ(second.beginStart(), Start::Goes) << i;
    second.takeBackStart();
  }
  first.takeBackStart();
  EXPECT_FALSE(QFile::exists(root + u"/trial"_s));
}

TEST_F(SelfContainedCopyTest, ARegularEndTakesBackItsOwnStartAlone) {
  ASSERT_TRUE(install(2));
  SelfContainedCopy two(root);
  ASSERT_EQ(two.beginStart(), Start::Goes);
  ASSERT_TRUE(install(3));
  crashingStart();
  two.takeBackStart();
  crashingStart();
  EXPECT_EQ(crashingStart(), Start::RolledBack);
}

TEST_F(SelfContainedCopyTest, NoVersionGoesWhileAnotherTakesItsPlace) {
  ASSERT_TRUE(install(2));
  SelfContainedCopy two(root);
  auto installation = FolderLock::await(root);
  two.startedWell();
  EXPECT_TRUE(QFile::exists(versionFolder(1)));
  EXPECT_EQ(previous(), 1U);
  installation.reset();
  two.startedWell();
  EXPECT_FALSE(QFile::exists(versionFolder(1)));
}

TEST_F(SelfContainedCopyTest, AVersionOnTrialIsNothingToGoBackTo) {
  ASSERT_TRUE(install(2));
  SelfContainedCopy two(root);
  ASSERT_EQ(two.beginStart(), Start::Goes);
  ASSERT_TRUE(install(3));
  two.startedWell();  // too late: the next one is on trial
  EXPECT_EQ(previous(), 1U);
  EXPECT_TRUE(QFile::exists(versionFolder(1)));
  EXPECT_TRUE(QFile::exists(versionFolder(2)));
  crashingStart();
  crashingStart();
  EXPECT_EQ(crashingStart(), Start::RolledBack);
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
}

TEST_F(SelfContainedCopyTest, WhatIsRefusedIsTheNewestThatWas) {
  const SelfContainedCopy copy(root);
  copy.refuse(3);
  copy.refuse(2);
  EXPECT_EQ(copy.refusedBuild(), 3U);
}

TEST_F(SelfContainedCopyTest, OnlyNewerVersionsAreInstalled) {
  ASSERT_TRUE(install(3));
  EXPECT_FALSE(install(3));
  EXPECT_FALSE(install(2));
  EXPECT_EQ(startedVersion(root), "Vemo 1.2.0");
}

TEST_F(SelfContainedCopyTest, AVersionThatAnotherProcessRunsStaysUntilItEnds) {
  auto other = running(1);
  ASSERT_TRUE(install(2));
  startWell();
  EXPECT_TRUE(QFile::exists(versionFolder(1) + u"/bin/vemo"_s));
  other.reset();
  startWell();
  EXPECT_FALSE(QFile::exists(versionFolder(1)));
}

TEST_F(SelfContainedCopyTest, AVersionThatAnotherProcessRunsIsNotReplacedByAnInstallation) {
  ASSERT_TRUE(install(2));
  crashingStart();
  crashingStart();
  ASSERT_EQ(crashingStart(), Start::RolledBack);
  auto other = running(2);
  EXPECT_FALSE(install(2));
  other.reset();
  EXPECT_TRUE(install(2));
}

TEST_F(SelfContainedCopyTest, WhatIsTheUsersAmongTheVersionsStays) {
  const QString letters = folder.filePath(u"letters"_s);
  writeTestFile(letters + u"/letter"_s, "Dear", false);
  writeTestFile(root + u"/versions/notes/note"_s, "mine", false);
  QFile::link(letters, root + u"/versions/7"_s);
  QFile::link(letters, root + u"/versions/.staging-8"_s);
  QFile::link(u"2"_s, root + u"/versions/newest"_s);
  ASSERT_TRUE(install(2));
  startWell();
  SelfContainedCopy(root).keepOnly({});
  EXPECT_TRUE(QFile::exists(letters + u"/letter"_s));
  EXPECT_TRUE(QFile::exists(root + u"/versions/notes/note"_s));
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
  EXPECT_FALSE(QFileInfo(root + u"/versions/.staging-8"_s).isSymLink());
}

TEST_F(SelfContainedCopyTest, ALinkInTheWayOfAnInstallationGoesAndWhatItLeadsToStays) {
  const QString letters = folder.filePath(u"letters"_s);
  writeTestFile(letters + u"/letter"_s, "Dear", false);
  QFile::link(letters, versionFolder(2));
  EXPECT_TRUE(install(2));
  EXPECT_TRUE(QFile::exists(letters + u"/letter"_s));
}

TEST(FolderLockTest, ManyShareAFolderOrOneHasIt) {
  using Kind = FolderLock::Kind;
  const QTemporaryDir folder;
  auto one = FolderLock::take(folder.path(), Kind::Exclusive);
  ASSERT_TRUE(one);
  EXPECT_FALSE(FolderLock::take(folder.path(), Kind::Shared));
  one->share();
  const auto other = FolderLock::take(folder.path(), Kind::Shared);
  EXPECT_TRUE(other);
  one.reset();
  EXPECT_FALSE(FolderLock::take(folder.path(), Kind::Exclusive));
  EXPECT_FALSE(FolderLock::take(folder.filePath(u"nothing"_s), Kind::Shared));
}

TEST(FolderLockTest, WhoAwaitsItGetsItAfterWhoHasIt) {
  const QTemporaryDir folder;
  auto one = FolderLock::await(folder.path());
  std::shared_ptr<FolderLock> other;
  std::jthread waiting([&] { other = FolderLock::await(folder.path()); });
  one.reset();
  waiting.join();
  EXPECT_TRUE(other);
}

TEST(VersionCheckTest, WhatIsWrongWithAVersionIsFinalAndThatItDoesNotAnswerIsNot) {
  const QTemporaryDir folder;
  const auto told = [&folder](const QByteArray& script, const std::stop_token& stop = {}) {
    writeTestFile(folder.filePath(u"bin/vemo"_s), "#!/bin/sh\n" + script, true);
    return checkVersion(folder.path(), u"1.1.0"_s, 2, stop);
  };
  EXPECT_TRUE(told("[ $1 = --check ] && echo 'Vemo 1.1.0 (2)'"));
  for (const QByteArray& script : {"echo 'Vemo 1.1.0 (22)'", "echo 'Vemo 1.1.0 (2)'; exit 1",
                                   "echo 'Vemo 1.1.0 (2)'; kill -6 $$", "true"}) {
    const auto refused = told(script);
    ASSERT_FALSE(refused) << script.constData();
    EXPECT_TRUE(refused.error().isFinal) << script.constData();
  }
  const auto endedForMemory = told("echo 'Vemo 1.1.0 (2)'; kill -9 $$");
  ASSERT_FALSE(endedForMemory);
  EXPECT_FALSE(endedForMemory.error().isFinal);
  std::stop_source stop;
  stop.request_stop();
  const auto stopped = told("exec sleep 600", stop.get_token());
  ASSERT_FALSE(stopped);
  EXPECT_FALSE(stopped.error().isFinal);
}

}  // namespace vemo
