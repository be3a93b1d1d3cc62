#include "contract/bus/PrivateBus.h"

#include <gtest/gtest.h>
#include <signal.h>

#include <QFile>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr int generousLimitMs = 60'000;

}  // namespace

PrivateBus::PrivateBus() {
  QFile configuration(m_folder.filePath(u"bus.conf"_s));
  EXPECT_TRUE(configuration.open(QIODevice::WriteOnly));
  configuration.write("<busconfig><type>session</type><listen>" + address().toUtf8() +
                      "</listen><auth>EXTERNAL</auth><policy context=\"default\">"
                      "<allow send_destination=\"*\" eavesdrop=\"true\"/>"
                      "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
}

PrivateBus::~PrivateBus() {
  kill();
}

QString PrivateBus::address() const {
  return u"unix:path="_s + m_folder.filePath(u"bus"_s);
}

void PrivateBus::start() {
  m_process.setStandardErrorFile(QProcess::nullDevice());
  m_process.start(u"dbus-daemon"_s, {u"--nofork"_s, u"--nopidfile"_s, u"--print-address"_s,
                                     u"--config-file="_s + m_folder.filePath(u"bus.conf"_s)});
  while (!m_process.canReadLine() && m_process.waitForReadyRead(generousLimitMs)) {
  }
  ASSERT_TRUE(m_process.readLine().startsWith("unix:")) << "the bus doesn't start";
}

void PrivateBus::kill() {
  if (m_process.state() == QProcess::NotRunning) return;
  m_process.kill();
  m_process.waitForFinished();
  QFile::remove(m_folder.filePath(u"bus"_s));
}

void PrivateBus::freeze() {
  signal(SIGSTOP);
}

void PrivateBus::thaw() {
  signal(SIGCONT);
}

QDBusConnection PrivateBus::connect(const QString& name) const {
  QDBusConnection::disconnectFromBus(name);
  auto connection = QDBusConnection::connectToBus(address(), name);
  EXPECT_TRUE(connection.isConnected());
  return connection;
}

void PrivateBus::signal(int number) const {
  ASSERT_GT(m_process.processId(), 0) << "the bus isn't running";
  ASSERT_EQ(::kill(static_cast<pid_t>(m_process.processId()), number), 0);
}

}  // namespace vemo
