// The program is killed just before each of its changes to the disk, one after the other: what
// starts then is the old version or the new one, and the next installation goes as ever. And what a
// kill can't show: that everything has reached the disk before something leads to it.
#include <sys/mman.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <QDirIterator>
#include <set>

#include "CopyFixture.h"
#include "SystemCalls.h"

namespace vemo {

class PowerCutTest : public CopyFixture {
 protected:
  PowerCutTest() { isFlushing = false; }
  ~PowerCutTest() override { isFlushing = true; }

  /// Does `what` in a process of its own, which is killed before its nth change; whether it was
  /// done before that.
  bool cutAt(int n, const std::function<void()>& what) {
    const pid_t child = fork();
    if (child == 0) {
      int changes = 0;
      beforeSystemCall = [&changes, n](const SystemCall&) {
        if (++changes == n) ::kill(getpid(), SIGKILL);
      };
      what();
      _exit(0);
    }
    int status = 0;
    waitpid(child, &status, 0);
    EXPECT_TRUE(WIFEXITED(status) ? WEXITSTATUS(status) == 0 : WTERMSIG(status) == SIGKILL);
    return WIFEXITED(status);
  }

  /// Kills `what` at each of its changes, each time from what `before` has made; how often.
  int cutEverywhere(const std::function<void()>& before, const std::function<void()>& what) {
    int cuts = 0;
    for (bool isDone = false; !isDone && !HasFailure(); ++cuts) {
      SCOPED_TRACE(cuts + 1);
      QDir(root).removeRecursively();
      makeCopy(root);
      before();
      isDone = cutAt(cuts + 1, what);
      expectAWholeVersion();
      ++startsAfter[SelfContainedCopy(root).currentBuild()];
      expectThatAnInstallationGoes();
    }
    RecordProperty("cuts", cuts - 1);
    return cuts - 1;
  }

  void expectAWholeVersion() {
    const quint64 build = SelfContainedCopy(root).currentBuild();
    QFile program(root + u"/current/bin/vemo"_s);
    EXPECT_TRUE(program.open(QIODevice::ReadOnly));
    EXPECT_EQ(program.readAll(), programTelling(versionOf(build), build));
    EXPECT_TRUE(program.permissions().testFlag(QFile::ExeOwner));
    const qint64 ballast = build == 1 ? 5 : 100'005;
    EXPECT_EQ(QFileInfo(root + u"/current/lib/ballast"_s).size(), ballast);
  }

  void expectThatAnInstallationGoes() {
    if (SelfContainedCopy(root).currentBuild() == 3) return;
    EXPECT_TRUE(install(3));
    EXPECT_EQ(SelfContainedCopy(root).currentBuild(), 3U);
    expectAWholeVersion();
  }

  void startBadly(int times) {
    for (int i = 0; i < times; ++i) SelfContainedCopy(root).beginStart();
  }

  QHash<quint64, int> startsAfter;  ///< by the build that starts after a cut
};

TEST_F(PowerCutTest, AnInstallationThatIsCutAnywhereLeavesTheOldVersionOrTheNewOne) {
  const int cuts = cutEverywhere([] {}, [this] { install(2); });
  EXPECT_GT(cuts, 50);
  EXPECT_GT(startsAfter[1], 0);
  EXPECT_GT(startsAfter[2], 1) << "also cut after the new one had its place";
}

TEST_F(PowerCutTest, SoDoesOneOverWhatACutOneHasLeft) {
  const auto leaveHalf = [this] {
    makeVersion(root + u"/versions/.staging-2"_s, "half", 2);
    makeVersion(versionFolder(2), "half", 2);
    QFile::link(u"versions/2"_s, root + u"/current.new"_s);
  };
  EXPECT_GT(cutEverywhere(leaveHalf, [this] { install(2); }), 50);
  EXPECT_GT(startsAfter[2], 1);
}

TEST_F(PowerCutTest, SoDoesOneOverAVersionOnTrial) {
  const auto installTwo = [this] {
    install(2);
    startBadly(1);
  };
  EXPECT_GT(cutEverywhere(installTwo, [this] { install(3); }), 50);
  EXPECT_GT(startsAfter[2], 0);
  EXPECT_GT(startsAfter[3], 1);
}

TEST_F(PowerCutTest, AReturnToTheOldVersionThatIsCutAnywhereLeavesOneOfBoth) {
  const auto failTwice = [this] {
    install(2);
    startBadly(2);
  };
  EXPECT_GT(cutEverywhere(failTwice, [this] { startBadly(1); }), 5);
  EXPECT_GT(startsAfter[1], 0);
  EXPECT_GT(startsAfter[2], 0);
}

TEST_F(PowerCutTest, LettingGoOfTheOldVersionThatIsCutAnywhereLeavesTheNewOne) {
  const auto startOnce = [this] { install(2); };
  const auto startWell = [this] {
    SelfContainedCopy copy(root);
    copy.beginStart();
    copy.startedWell();
  };
  EXPECT_GT(cutEverywhere(startOnce, startWell), 8);
  EXPECT_EQ(startsAfter.keys(), QList<quint64>{2});
}

/// Notes what has been flushed, by inode, and looks at it when something is renamed.
class ReachedTheDiskTest : public CopyFixture {
 protected:
  ReachedTheDiskTest() {
    beforeSystemCall = [this](const SystemCall& call) {
      const std::string_view name = call.name;
      struct stat status{};
      if (name == "fsync" && fstat(call.descriptor, &status) == 0) m_flushed.insert(status.st_ino);
      if (name != "rename") return;
      const QString made = QFile::decodeName(call.path);
      if (made == versionFolder(2)) unflushedFiles = unflushed(versionFolder(u".staging-2"_s));
      if (made == root + u"/current"_s) {
        isVersionFlushedFirst = isFlushed(root + u"/versions"_s);
        m_flushed.erase(inode(root));
      }
    };
  }
  ~ReachedTheDiskTest() override { beforeSystemCall = nullptr; }

  using CopyFixture::versionFolder;
  QString versionFolder(const QString& name) const { return root + u"/versions/"_s + name; }

  static ino_t inode(const QString& path) {
    struct stat status{};
    EXPECT_EQ(::stat(QFile::encodeName(path).constData(), &status), 0) << qPrintable(path);
    return status.st_ino;
  }
  bool isFlushed(const QString& path) const { return m_flushed.contains(inode(path)); }

  QStringList unflushed(const QString& folder) const {
    QStringList paths;
    QDirIterator entries(folder, QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot,
                         QDirIterator::Subdirectories);
    if (!isFlushed(folder)) paths.append(folder);
    while (entries.hasNext())
      if (const QString path = entries.next(); !isFlushed(path)) paths.append(path);
    return paths;
  }

  std::optional<QStringList> unflushedFiles;
  std::optional<bool> isVersionFlushedFirst;

 private:
  std::set<ino_t> m_flushed;
};

TEST_F(ReachedTheDiskTest, WholeVersionsBeforeTheyGetTheirNamesAndTheirNamesBeforeTheyAreCurrent) {
  ASSERT_TRUE(install(2));
  ASSERT_TRUE(unflushedFiles && isVersionFlushedFirst);
  EXPECT_TRUE(unflushedFiles->isEmpty()) << qPrintable(unflushedFiles->join(u'\n'));
  EXPECT_TRUE(*isVersionFlushedFirst);
  EXPECT_TRUE(isFlushed(root)) << "and what is current before the program ends";
}

}  // namespace vemo
