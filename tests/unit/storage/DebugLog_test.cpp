#include "storage/DebugLog.h"

#include <fcntl.h>

#include <array>
#include <thread>
#include <vector>

#include "StorageTest.h"
#include "storage/Settings.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using testing::ElementsAre;

/// Stands in for standard output while it lives.
class Redirection {
 public:
  explicit Redirection(int descriptor) : m_saved(::dup(STDOUT_FILENO)) {
    ::dup2(descriptor, STDOUT_FILENO);
  }
  ~Redirection() {
    ::dup2(m_saved, STDOUT_FILENO);
    ::close(m_saved);
  }
  Redirection(const Redirection&) = delete;
  Redirection& operator=(const Redirection&) = delete;

 private:
  const int m_saved;
};

struct Pipe {
  Pipe() { EXPECT_EQ(::pipe2(ends.data(), O_CLOEXEC), 0); }
  ~Pipe() {
    ::close(ends[0]);
    ::close(ends[1]);
  }
  std::array<int, 2> ends{};
};

class DebugLogTest : public StorageTest {
 protected:
  const QString current = path(u"log/debug.log"_s);
  const QString previous = path(u"log/debug.1.log"_s);

  void logLine(const QString& message) {
    debugLog(message);
    debugLog.waitUntilWritten();
  }

  void makeFolder() { ASSERT_TRUE(QDir().mkpath(path(u"log"_s))); }
};

TEST_F(DebugLogTest, ALineHasTheTimeTheLabelAndTheMessage) {
  clock.setWallTime(std::chrono::sys_days{std::chrono::year{2026} / 3 / 14} +
                    std::chrono::milliseconds{34'013'999});
  logLine(u"audio: started"_s);
  EXPECT_EQ(contentOf(current), "2026-03-14T09:26:53Z [Vemo] audio: started\n");
}

TEST_F(DebugLogTest, LinesFollowEachOtherInOrder) {
  for (int number = 0; number < 100; ++number) debugLog(QString::number(number));
  const QStringList lines = logged();
  ASSERT_EQ(lines.size(), 100);
  for (int number = 0; number < 100; ++number) EXPECT_EQ(lines[number], QString::number(number));
}

TEST_F(DebugLogTest, ALineStaysALineWhateverTheMessageHolds) {
  logLine(u"a\nb\r\u0000c\u0085d\u2028e\u2029f\u007fg\u001b[31mh"_s);
  EXPECT_EQ(contentOf(current), "2026-03-14T00:00:00Z [Vemo] a b  c d e f g [31mh\n");
  logLine(u"नमस्ते \U0001F44D"_s);
  EXPECT_TRUE(contentOf(current).endsWith("[Vemo] नमस्ते 👍\n"));
}

TEST_F(DebugLogTest, OnlyTheUserCanReadFolderAndFile) {
  const mode_t previousMask = ::umask(0);
  DebugLog nested(clock, path(u"state/Logs/Vemo"_s));
  nested(u"line"_s);
  nested.waitUntilWritten();
  ::umask(previousMask);
  EXPECT_EQ(modeOf(path(u"state/Logs"_s)), 0700u);
  EXPECT_EQ(modeOf(path(u"state/Logs/Vemo"_s)), 0700u);
  EXPECT_EQ(modeOf(path(u"state/Logs/Vemo/debug.log"_s)), 0600u);
}

TEST_F(DebugLogTest, ALogOfExactlyAMillionBytesTakesOneMoreLineWithoutRotating) {
  makeFolder();
  write(current, QByteArray(1'000'000, 'x'));
  logLine(u"line"_s);
  EXPECT_FALSE(QFile::exists(previous));
  EXPECT_TRUE(contentOf(current).endsWith("x2026-03-14T00:00:00Z [Vemo] line\n"));
}

TEST_F(DebugLogTest, ALogOfAMillionAndOneBytesBecomesThePreviousOne) {
  makeFolder();
  write(current, QByteArray(1'000'001, 'x'));
  logLine(u"line"_s);
  EXPECT_EQ(contentOf(previous), QByteArray(1'000'001, 'x'));
  EXPECT_EQ(contentOf(current), "2026-03-14T00:00:00Z [Vemo] line\n");
}

TEST_F(DebugLogTest, RotationReplacesThePreviousLogAndNeverAppendsToIt) {
  makeFolder();
  write(previous, "older");
  write(current, QByteArray(1'000'001, 'x'));
  logLine(u"line"_s);
  EXPECT_EQ(contentOf(previous), QByteArray(1'000'001, 'x'));
}

TEST_F(DebugLogTest, ASymbolicLinkAtThePathMakesTheOpenFailAndTheLineIsDropped) {
  makeFolder();
  const QString target = path(u"target"_s);
  write(target, QByteArray(1'000'001, 't'));
  ASSERT_TRUE(QFile::link(target, current));
  logLine(u"line"_s);
  EXPECT_EQ(contentOf(target), QByteArray(1'000'001, 't'));
  EXPECT_TRUE(QFileInfo(current).isSymLink());
  EXPECT_FALSE(QFile::exists(previous));
}

TEST_F(DebugLogTest, APipeAtThePathHoldsNothingUp) {
  makeFolder();
  ASSERT_EQ(::mkfifo(QFile::encodeName(current).constData(), 0600), 0);
  logLine(u"line"_s);
}

TEST_F(DebugLogTest, InAReadOnlyFolderNothingCrashesAndStandardOutputStillHasTheLine) {
  makeFolder();
  testing::internal::CaptureStdout();
  {
    const ReadOnlyFolder folder(path(u"log"_s));
    logLine(u"line"_s);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "2026-03-14T00:00:00Z [Vemo] line\n");
  EXPECT_FALSE(QFile::exists(current));
}

TEST_F(DebugLogTest, WithoutAFolderLinesGoToStandardOutputAlone) {
  testing::internal::CaptureStdout();
  {
    DebugLog homeless(clock, QString());
    homeless(u"line"_s);
  }
  EXPECT_EQ(testing::internal::GetCapturedStdout(), "2026-03-14T00:00:00Z [Vemo] line\n");
  EXPECT_FALSE(QFile::exists(u"/debug.log"_s));
}

TEST_F(DebugLogTest, AFullDiskIsIgnored) {
  logLine(u"before"_s);
  {
    const FullDisk disk(static_cast<rlim_t>(QFileInfo(current).size()));
    logLine(u"during"_s);
  }
  logLine(u"after"_s);
  EXPECT_THAT(logged(), ElementsAre(u"before"_s, u"after"_s));
}

TEST_F(DebugLogTest, AReaderOfStandardOutputThatHasGoneDoesNotEndTheProgram) {
  Pipe pipe;
  {
    const Redirection redirection(pipe.ends[1]);
    ::close(std::exchange(pipe.ends[0], -1));
    logLine(u"line"_s);
  }
  EXPECT_THAT(logged(), ElementsAre(u"line"_s));
}

TEST_F(DebugLogTest, AReaderOfStandardOutputThatDoesNotReadHoldsNothingUp) {
  Pipe pipe;
  {
    const Redirection redirection(pipe.ends[1]);
    for (int number = 0; number < 200; ++number) debugLog(QString(1000, u'x'));
    debugLog(QString(1'000'000, u'y'));
  }
  EXPECT_EQ(logged().size(), 201);
}

TEST_F(DebugLogTest, WithStandardOutputClosedAtStartNoOtherFileGetsTheLines) {
  const QString other = path(u"other"_s);
  const int saved = ::dup(STDOUT_FILENO);
  ::close(STDOUT_FILENO);
  {
    DebugLog log(clock, path(u"log"_s));
    const int reused = ::open(QFile::encodeName(other).constData(), O_WRONLY | O_CREAT, 0600);
    log(u"line"_s);
    log.waitUntilWritten();
    EXPECT_EQ(reused, STDOUT_FILENO);
  }
  ::dup2(saved, STDOUT_FILENO);
  ::close(saved);
  EXPECT_EQ(contentOf(other), "");
  EXPECT_THAT(logged(), ElementsAre(u"line"_s));
}

TEST_F(DebugLogTest, LinesOfManyThreadsStayWholeAndInTheOrderOfTheirThread) {
  std::vector<std::thread> threads;
  for (int thread = 0; thread < 4; ++thread) {
    threads.emplace_back([this, thread] {
      for (int number = 0; number < 200; ++number) debugLog(u"%1 %2"_s.arg(thread).arg(number));
    });
  }
  for (auto& thread : threads) thread.join();
  std::array<int, 4> next{};
  const QStringList lines = logged();
  EXPECT_EQ(lines.size(), 800);
  for (const QString& line : lines) {
    const int thread = line.section(u' ', 0, 0).toInt();
    EXPECT_EQ(line.section(u' ', 1), QString::number(next.at(thread)++));
  }
}

TEST_F(DebugLogTest, ThePurgeDeletesBothLogsAndItsOwnLineIsTheFirstOfTheNewOne) {
  makeFolder();
  write(current, "what was said");
  write(previous, "what was said before");
  Settings settings(path(u"settings.json"_s), debugLog);
  debugLog.purgeLegacyLogIfNeeded(settings);
  EXPECT_THAT(logged(),
              ElementsAre(u"debuglog: purged pre-fix log that may have contained transcripts"_s));
  EXPECT_FALSE(QFile::exists(previous));
  EXPECT_EQ(settings.get(keys::debugLogTranscriptPurgeDone), true);
}

TEST_F(DebugLogTest, ThePurgeRunsOnceAndASecondStartLeavesTheNewLogInPlace) {
  const QString file = path(u"settings.json"_s);
  {
    Settings settings(file, debugLog);
    debugLog.purgeLegacyLogIfNeeded(settings);
  }
  const QByteArray afterPurge = (logLine(u"line"_s), contentOf(current));
  Settings settings(file, debugLog);
  DebugLog secondStart(clock, path(u"log"_s));
  secondStart.purgeLegacyLogIfNeeded(settings);
  secondStart.waitUntilWritten();
  EXPECT_EQ(contentOf(current), afterPurge);
}

}  // namespace
}  // namespace vemo
