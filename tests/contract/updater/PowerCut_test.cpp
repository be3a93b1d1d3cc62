// An installation that is killed at any moment: what starts is the old version or the new one.
#include <sys/time.h>
#include <sys/wait.h>
#include <unistd.h>

#include <random>

#include "UpdaterFixture.h"

namespace vemo {

class PowerCutTest : public testing::Test {
 protected:
  PowerCutTest() {
    makeCopy(root);
    makeVersion(made, "1.1.0", QByteArray(200'000, 'b'));
    const auto packed = packUpdate(made, archive);
    if (packed) files = *packed;
  }

  /// In a process of its own, which is killed after so long. Whether it was done before that.
  bool installAndKill(std::chrono::microseconds after) {
    const pid_t child = fork();
    if (child == 0) {
      // Nobody handles the alarm, so it ends the process where it stands.
      const itimerval limit{
          .it_interval = {},
          .it_value = {.tv_sec = after.count() / 1'000'000, .tv_usec = after.count() % 1'000'000}};
      setitimer(ITIMER_REAL, &limit, nullptr);
      SelfContainedCopy copy(root);
      QDir(copy.stagingFolder(2)).removeRecursively();
      const bool isDone = unpackUpdate(archive, files, copy.stagingFolder(2)) && copy.install(2);
      _exit(isDone ? 0 : 1);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(!WIFEXITED(status) || WEXITSTATUS(status) == 0);
    return WIFEXITED(status);
  }

  void backToTheOldVersion() {
    QFile::remove(root + u"/current"_s);
    QFile::link(u"versions/1"_s, root + u"/current"_s);
  }

  QTemporaryDir folder;
  const QString root = folder.filePath(u"vemo"_s);
  const QString made = folder.filePath(u"made"_s);
  const QString archive = folder.filePath(u"vemo.tar.xz"_s);
  std::vector<AppcastFile> files;
};

TEST_F(PowerCutTest, AKillAtAnyMomentLeavesTheOldVersionOrTheNewOne) {
  ASSERT_FALSE(files.empty());
  std::mt19937 random(7);
  std::chrono::microseconds whole(2000);
  while (!installAndKill(whole)) whole *= 2;  // however long it takes on this machine
  backToTheOldVersion();
  std::uniform_int_distribution<int> microseconds(1, static_cast<int>(whole.count()));
  int old = 0;
  int fresh = 0;
  const int asked = qEnvironmentVariableIntValue("VEMO_POWER_CUTS");
  const int cuts = asked > 0 ? asked : 100;
  for (int i = 0; i < cuts; ++i) {
    installAndKill(std::chrono::microseconds(microseconds(random)));
    const QByteArray started = startedVersion(root);
    if (started == "Vemo 1.0.0") {
      ++old;
    } else {
      ASSERT_EQ(started, "Vemo 1.1.0") << "after kill " << i;
      ++fresh;
      QFile ballast(root + u"/current/lib/ballast"_s);
      ASSERT_TRUE(ballast.open(QIODevice::ReadOnly));
      ASSERT_EQ(ballast.size(), 200'005);
    }
    backToTheOldVersion();
  }
  EXPECT_GT(old, 0);
  EXPECT_GT(fresh, 0);
}

class SelfContainedCopyTest : public PowerCutTest {
 protected:
  SelfContainedCopy copy{root};

  void installNext() {
    ASSERT_TRUE(unpackUpdate(archive, files, copy.stagingFolder(2)));
    ASSERT_TRUE(copy.install(2));
  }
};

TEST_F(SelfContainedCopyTest, IsFoundAroundItsProgramAndNowhereElse) {
  const auto found = SelfContainedCopy::around(root + u"/current/bin/vemo"_s);
  ASSERT_TRUE(found);
  EXPECT_EQ(found->currentBuild(), 1U);
  EXPECT_FALSE(SelfContainedCopy::around(u"/usr/bin/env"_s));
  EXPECT_FALSE(SelfContainedCopy::around(made + u"/bin/vemo"_s));
  EXPECT_FALSE(SelfContainedCopy::around(root + u"/nothing"_s));
}

TEST_F(SelfContainedCopyTest, TheOldVersionStaysUntilTheNewOneHasStartedWell) {
  installNext();
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::Goes);
  EXPECT_TRUE(QFile::exists(root + u"/versions/1/bin/vemo"_s));
  copy.startedWell();
  EXPECT_FALSE(QFile::exists(root + u"/versions/1"_s));
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::Goes);
}

TEST_F(SelfContainedCopyTest, AVersionThatEndsTwiceBeforeItHasStartedWellIsGivenUp) {
  installNext();
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::Goes);
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::Goes);
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::RolledBack);
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  EXPECT_EQ(copy.refusedBuild(), 2U);
  EXPECT_EQ(copy.beginStart(), SelfContainedCopy::Start::Goes);
}

}  // namespace vemo
