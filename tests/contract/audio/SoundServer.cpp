#include "SoundServer.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <chrono>

using namespace Qt::Literals::StringLiterals;

namespace vemo {

QStringList SoundServer::microphoneModules() {
  return {u"module-null-sink sink_name=mic norewinds=1"_s,
          u"module-remap-source master=mic.monitor source_name=virtmic"_s};
}

QStringList SoundServer::monitorAlone() {
  return {u"module-null-sink sink_name=speakers norewinds=1"_s};
}

SoundServer::SoundServer(QStringList modules) : m_modules(std::move(modules)) {
  pointTo();
}

SoundServer::~SoundServer() {
  kill();
}

void SoundServer::start() {
  QStringList arguments{u"-n"_s,
                        u"--exit-idle-time=-1"_s,
                        u"--daemonize=no"_s,
                        u"--use-pid-file=no"_s,
                        u"--realtime=no"_s,
                        u"--high-priority=no"_s};
  for (const QString& module : m_modules) arguments << u"--load="_s + module;
  arguments << u"--load=module-native-protocol-unix auth-anonymous=1 socket="_s +
                   m_folder.filePath(u"native"_s);
  // Two servers can't share a bus, which would be found in the run-time folder, or their own
  // folders.
  QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
  environment.remove(u"DBUS_SESSION_BUS_ADDRESS"_s);
  environment.insert(u"XDG_RUNTIME_DIR"_s, m_folder.path());
  environment.insert(u"PULSE_RUNTIME_PATH"_s, m_folder.filePath(u"runtime"_s));
  environment.insert(u"PULSE_STATE_PATH"_s, m_folder.filePath(u"state"_s));
  m_process.setProcessEnvironment(environment);
  m_process.setStandardErrorFile(QProcess::nullDevice());
  m_process.setStandardOutputFile(QProcess::nullDevice());
  m_process.start(u"pulseaudio"_s, arguments);
  ASSERT_TRUE(m_process.waitForStarted());

  const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds(20);
  while (control({u"info"_s}).isEmpty()) {
    ASSERT_FALSE(m_process.waitForFinished(20)) << "the sound server ended";
    ASSERT_LT(std::chrono::steady_clock::now(), deadline) << "the sound server doesn't answer";
  }
  if (m_modules == microphoneModules()) control({u"set-default-source"_s, u"virtmic"_s});
}

void SoundServer::kill() {
  if (m_process.state() == QProcess::NotRunning) return;
  m_process.kill();
  m_process.waitForFinished();
}

void SoundServer::freeze() {
  signal(SIGSTOP);
}
void SoundServer::thaw() {
  signal(SIGCONT);
}

void SoundServer::pointTo() const {
  qputenv("PULSE_SERVER", "unix:" + m_folder.filePath(u"native"_s).toUtf8());
}

QString SoundServer::control(const QStringList& arguments) const {
  QProcess pactl;
  pactl.setStandardErrorFile(QProcess::nullDevice());
  pactl.start(u"pactl"_s, arguments);
  pactl.waitForFinished();
  return QString::fromUtf8(pactl.readAllStandardOutput()).trimmed();
}

QString SoundServer::load(const QString& module) const {
  return control(QStringList{u"load-module"_s} + module.split(u' '));
}

void SoundServer::signal(int number) const {
  ASSERT_GT(m_process.processId(), 0) << "the sound server isn't running";
  ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
}

}  // namespace vemo
