// The keyring adapter on desktops without a keyring, and with one that doesn't answer.
#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

constexpr int generousLimitMs = 60'000;

/// The limit of 200 ms, and what a busy machine may add to it.
constexpr int longestWaitMs = 1'000;

class SecretServiceTroubleTest : public testing::TestWithParam<const char*> {
 protected:
  struct Answer {
    QString outcome;
    int heldMs = 0;
    int heldBySecondCallMs = 0;
  };

  ~SecretServiceTroubleTest() override {
    for (auto& process : m_processes) {
      ::kill(static_cast<pid_t>(process->processId()), SIGKILL);
      process->waitForFinished();
    }
  }

  /// A session bus on which nothing can be started.
  void startBus() {
    QFile configuration(m_folder.filePath(u"bus.conf"_s));
    ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write(
        "<busconfig><type>session</type><listen>unix:dir=" + QFile::encodeName(m_folder.path()) +
        "</listen><policy context=\"default\">"
        "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
        "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    m_busAddress = start(u"dbus-daemon"_s, {u"--nofork"_s, u"--print-address"_s,
                                            u"--config-file=%1"_s.arg(configuration.fileName())});
    ASSERT_TRUE(m_busAddress.startsWith(u"unix:"_s));
  }

  /// Starts the program on the bus and returns the first line that it prints.
  QString start(const QString& program, const QStringList& arguments = {}) {
    auto& process = m_processes.emplace_back(std::make_unique<QProcess>());
    process->setProcessEnvironment(environment());
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(program, arguments);
    while (!process->canReadLine() && process->waitForReadyRead(generousLimitMs)) {
    }
    return QString::fromUtf8(process->readLine()).trimmed();
  }

  Answer probe(const QStringList& firstLimit = {}) {
    QProcess process;
    process.setProcessEnvironment(environment());
    process.start(QStringLiteral(SECRET_PROBE),
                  QStringList(QString::fromLatin1(GetParam())) + firstLimit);
    EXPECT_TRUE(process.waitForFinished(generousLimitMs));
    EXPECT_EQ(process.exitStatus(), QProcess::NormalExit);
    EXPECT_EQ(process.exitCode(), 0);
    const auto words = QString::fromUtf8(process.readAll()).trimmed().split(u' ');
    return {words.value(0), words.value(1).toInt(), words.value(3).toInt()};
  }

  void stopBus() { ::kill(static_cast<pid_t>(m_processes.front()->processId()), SIGSTOP); }

 private:
  QProcessEnvironment environment() const {
    auto variables = QProcessEnvironment::systemEnvironment();
    variables.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_busAddress);
    return variables;
  }

  QTemporaryDir m_folder;
  QString m_busAddress = u"unix:path=/nonexistent/bus"_s;
  std::vector<std::unique_ptr<QProcess>> m_processes;
};

TEST_P(SecretServiceTroubleTest, WithoutASessionBusThereIsNoStore) {
  EXPECT_EQ(probe().outcome, u"Unavailable"_s);
}

TEST_P(SecretServiceTroubleTest, WithoutAKeyringOnTheBusThereIsNoStore) {
  startBus();
  EXPECT_EQ(probe().outcome, u"Unavailable"_s);
}

TEST_P(SecretServiceTroubleTest, AKeyringThatNeverAnswersHoldsTheCallerNoLongerThanTheLimit) {
  startBus();
  ASSERT_EQ(start(QStringLiteral(SILENT_KEYRING)), u"ready"_s);
  const auto answer = probe();
  EXPECT_EQ(answer.outcome, u"Failed"_s);
  EXPECT_GE(answer.heldMs, 200);
  EXPECT_LT(answer.heldMs, longestWaitMs);
}

TEST_P(SecretServiceTroubleTest, OnlyTheFirstCallHasTheLimitOfTheFirst) {
  startBus();
  ASSERT_EQ(start(QStringLiteral(SILENT_KEYRING)), u"ready"_s);
  const auto answer = probe({u"1500"_s});
  EXPECT_GE(answer.heldMs, 1500);
  EXPECT_GE(answer.heldBySecondCallMs, 200);
  EXPECT_LT(answer.heldBySecondCallMs, longestWaitMs);
}

TEST_P(SecretServiceTroubleTest, ABusThatNeverAnswersHoldsTheCallerNoLongerThanTheLimit) {
  startBus();
  stopBus();
  const auto answer = probe();
  EXPECT_EQ(answer.outcome, u"Failed"_s);
  EXPECT_GE(answer.heldMs, 200);
  EXPECT_LT(answer.heldMs, longestWaitMs);
}

INSTANTIATE_TEST_SUITE_P(Operations, SecretServiceTroubleTest,
                         testing::Values("find", "add", "remove"),
                         [](const auto& operation) { return std::string(operation.param); });

}  // namespace
}  // namespace vemo
