// Processes that are really killed, and what the next one hears of it.
#include "platform/posix/SignalCrashRecorder.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QFile>
#include <QTemporaryDir>
#include <csignal>
#include <optional>
#include <thread>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ExitedWithCode;
using testing::IsEmpty;
using testing::KilledBySignal;
using testing::SizeIs;

class SignalCrashRecorderTest : public testing::Test {
 protected:
  SignalCrashRecorderTest() { testing::GTEST_FLAG(death_test_style) = "fast"; }

  /// In a process of its own: fails with the signal while a recorder is there.
  void dieOf(int signal, const QByteArray& build = "1.2.0 (34)") const {
    const SignalCrashRecorder recorder(file, build);
    raise(signal);
  }

  CrashDiagnostics::Payload take() const {
    SignalCrashRecorder recorder(file, "the next build");
    CrashDiagnostics::Payload payload;
    recorder.subscribe([&](CrashDiagnostics::Payload told) { payload = std::move(told); });
    return payload;
  }

  QByteArray content() const {
    QFile notes(file);
    return notes.open(QIODevice::ReadOnly) ? notes.readAll() : "(no file)";
  }

  QTemporaryDir folder;
  const QString file = folder.filePath(u"crashes"_s);
};

using SignalCrashRecorderDeathTest = SignalCrashRecorderTest;

TEST_F(SignalCrashRecorderDeathTest, EachFatalSignalKillsAsEverAndIsToldOnceAtTheNextStart) {
  for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT, SIGTRAP, SIGSYS}) {
    EXPECT_EXIT(dieOf(signal), KilledBySignal(signal), "") << signal;
    const auto crashes = take();
    ASSERT_THAT(crashes, SizeIs(1)) << signal;
    EXPECT_EQ(crashes[0].signal, signal);
    EXPECT_EQ(crashes[0].applicationBuildVersion, u"1.2.0 (34)"_s);
    EXPECT_FALSE(crashes[0].terminationReason);
    EXPECT_THAT(take(), IsEmpty());
  }
}

TEST_F(SignalCrashRecorderDeathTest, AnAbortIsTold) {
  EXPECT_EXIT(
      {
        const SignalCrashRecorder recorder(file, "34");
        std::abort();
      },
      KilledBySignal(SIGABRT), "");
  EXPECT_THAT(take(), SizeIs(1));
}

TEST_F(SignalCrashRecorderDeathTest, AFaultOnAnotherThreadIsTold) {
  EXPECT_EXIT(
      {
        const SignalCrashRecorder recorder(file, "34");
        std::thread([] { raise(SIGSEGV); }).join();
      },
      KilledBySignal(SIGSEGV), "");
  EXPECT_THAT(take(), SizeIs(1));
}

TEST_F(SignalCrashRecorderDeathTest, SignalsThatAskAProgramToEndLeaveNoNote) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP, SIGKILL})
    EXPECT_EXIT(dieOf(signal), KilledBySignal(signal), "");
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(SignalCrashRecorderDeathTest, CrashesThatNobodyHasTakenAddUpToSixtyFour) {
  for (int crash = 0; crash < 66; ++crash) EXPECT_EXIT(dieOf(SIGSEGV), KilledBySignal(SIGSEGV), "");
  EXPECT_THAT(take(), SizeIs(64));
}

TEST_F(SignalCrashRecorderDeathTest, AStartThatFindsAFullFileNotesItsOwnCrashOnceTheFileIsRead) {
  for (int crash = 0; crash < 64; ++crash) EXPECT_EXIT(dieOf(SIGSEGV), KilledBySignal(SIGSEGV), "");
  EXPECT_EXIT(
      {
        SignalCrashRecorder recorder(file, "34");
        recorder.subscribe([](CrashDiagnostics::Payload) {});
        raise(SIGBUS);
      },
      KilledBySignal(SIGBUS), "");
  const auto crashes = take();
  ASSERT_THAT(crashes, SizeIs(1));
  EXPECT_EQ(crashes[0].signal, SIGBUS);
}

TEST_F(SignalCrashRecorderDeathTest, ALongBuildIsCutAndNothingOfMemoryIsInTheNote) {
  const QByteArray secret = "what the user said";
  EXPECT_EXIT(dieOf(SIGSEGV, QByteArray(40, 'b') + secret), KilledBySignal(SIGSEGV), "");
  EXPECT_EQ(content().size(), 56);
  EXPECT_FALSE(content().contains("said"));
  EXPECT_EQ(take().at(0).applicationBuildVersion, QString(31, u'b'));
}

TEST_F(SignalCrashRecorderTest, TheFileIsTheUsersAlone) {
  const SignalCrashRecorder recorder(file, "34");
  struct stat status{};
  ASSERT_EQ(stat(QFile::encodeName(file).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0600);
}

TEST_F(SignalCrashRecorderTest, WithoutACrashNothingIsTold) {
  EXPECT_THAT(take(), IsEmpty());
}

TEST_F(SignalCrashRecorderTest, BytesThatAreNoNoteArePassedOver) {
  QFile notes(file);
  for (const QByteArray& bytes : {QByteArray(55, 'x'), QByteArray(560, '\xff'),
                                  QByteArray("VEMOCRS1"), QByteArray(1'000'000, '\0')}) {
    ASSERT_TRUE(notes.open(QIODevice::WriteOnly | QIODevice::Truncate));
    notes.write(bytes);
    notes.close();
    EXPECT_THAT(take(), IsEmpty());
  }
}

TEST_F(SignalCrashRecorderDeathTest, WhereNoFileCanBeMadeAFaultKillsAsEver) {
  const QString nowhere = folder.filePath(u"missing/crashes"_s);
  EXPECT_EXIT(
      {
        const SignalCrashRecorder recorder(nowhere, "34");
        raise(SIGSEGV);
      },
      KilledBySignal(SIGSEGV), "");
  QFile::link(u"/etc/passwd"_s, file);
  EXPECT_THAT(take(), IsEmpty()) << "a link is not followed";
}

}  // namespace
}  // namespace vemo
