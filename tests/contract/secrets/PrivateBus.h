// A session bus on which nothing is started unless a test starts it.
#pragma once

#include <gtest/gtest.h>
#include <signal.h>
#include <sys/prctl.h>

#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <memory>
#include <vector>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

class PrivateBus {
 public:
  static constexpr int generousLimitMs = 60'000;

  ~PrivateBus() {
    for (auto& process : m_processes) kill(*process);
  }

  void start() {
    QFile configuration(m_folder.filePath(u"bus.conf"_s));
    ASSERT_TRUE(configuration.open(QIODevice::WriteOnly));
    configuration.write(
        "<busconfig><type>session</type><listen>unix:dir=" + QFile::encodeName(m_folder.path()) +
        "</listen><policy context=\"default\">"
        "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
        "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
    configuration.close();
    QProcess& bus = startProcess(
        u"dbus-daemon"_s,
        {u"--nofork"_s, u"--print-address"_s, u"--config-file=%1"_s.arg(configuration.fileName())});
    m_address = firstLineOf(bus);
    ASSERT_TRUE(m_address.startsWith(u"unix:"_s));
  }

  /// It hears nothing from now on.
  void stop() { ::kill(static_cast<pid_t>(m_processes.front()->processId()), SIGSTOP); }

  /// A program on the bus, at home in the bus's folder.
  QProcess& startProcess(const QString& program, const QStringList& arguments = {}) {
    auto& process = m_processes.emplace_back(std::make_unique<QProcess>());
    process->setProcessEnvironment(environment());
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    // A test that dies leaves nothing running.
    process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    process->start(program, arguments);
    return *process;
  }

  static QString firstLineOf(QProcess& process) {
    while (!process.canReadLine() && process.waitForReadyRead(generousLimitMs)) {
    }
    return QString::fromUtf8(process.readLine()).trimmed();
  }

  static void kill(QProcess& process) {
    if (process.state() == QProcess::NotRunning) return;
    ::kill(static_cast<pid_t>(process.processId()), SIGKILL);
    process.waitForFinished();
  }

  QProcessEnvironment environment() const {
    auto variables = QProcessEnvironment::systemEnvironment();
    variables.insert(u"DBUS_SESSION_BUS_ADDRESS"_s, m_address);
    for (const auto& name : {u"HOME"_s, u"XDG_DATA_HOME"_s, u"XDG_RUNTIME_DIR"_s})
      variables.insert(name, m_folder.path());
    return variables;
  }

  QString address() const { return m_address; }
  QString folder() const { return m_folder.path(); }

 private:
  QTemporaryDir m_folder;
  QString m_address = u"unix:path=/nonexistent/bus"_s;
  std::vector<std::unique_ptr<QProcess>> m_processes;
};

}  // namespace vemo
