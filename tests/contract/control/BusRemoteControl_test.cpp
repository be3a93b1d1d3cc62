// The two ends of the control on a real session bus.

#include "platform/xdg/BusRemoteControl.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <atomic>
#include <future>
#include <vector>

#include "ports/RemoteControl.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

class RecordingRemoteControl : public RemoteControl {
 public:
  QString toggle() override { return note("toggle"); }
  QString start() override { return note("start"); }
  QString stop() override { return note("stop"); }
  QString status() const override { return u"idle: Sign in to connect"_s; }
  void quit() override { note("quit"); }
  QString signIn() override { return note("signIn"); }
  QString cancelSignIn() override { return note("cancelSignIn"); }
  QString signOut() override { return note("signOut"); }
  void reopen() override { note("reopen"); }
  void open(const QString& address) override { note(("open " + address.toUtf8()).constData()); }

  std::vector<std::string> calls;

 private:
  QString note(const char* call) {
    calls.emplace_back(call);
    return QString::fromUtf8(call) + u" done"_s;
  }
};

class BusRemoteControlTest : public testing::Test {
 protected:
  /// Sends as another process would, while this one's event loop runs.
  std::expected<QString, QString> send(const QString& command, const QStringList& arguments = {}) {
    auto answer = std::async(std::launch::async,
                             [command, arguments] { return sendCommand(command, arguments); });
    while (answer.wait_for(std::chrono::seconds(0)) != std::future_status::ready)
      QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
    return answer.get();
  }

  int m_argumentCount = 0;
  QCoreApplication m_application{m_argumentCount, nullptr};
  RecordingRemoteControl control;
};

TEST_F(BusRemoteControlTest, WithoutARunningProgramTheCommandSaysSo) {
  EXPECT_EQ(send(u"toggle"_s).error(), u"Vemo isn't running."_s);
}

TEST_F(BusRemoteControlTest, AProgramThatHasTheNameAndServesNothingYetIsStillStarting) {
  const auto bus = BusRemoteControl::create();
  EXPECT_EQ(send(u"toggle"_s).error(), u"Vemo is still starting."_s);
}

TEST_F(BusRemoteControlTest, ACommandThatComesBeforeTheEventLoopRunsWaitsForIt) {
  const auto bus = BusRemoteControl::create();
  ASSERT_TRUE(bus);
  auto other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s);
  auto call = QDBusMessage::createMethodCall(u"brelmox.Vemo"_s, u"/brelmox/Vemo"_s,
                                             u"brelmox.Vemo"_s, u"toggle"_s);
  const auto pending = other.asyncCall(call);
  // Through the same queues behind it: by then the call has come to this program's end of the bus.
  other.call(QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(), u"/"_s,
                                            u"org.freedesktop.DBus.Peer"_s, u"Ping"_s));
  (*bus)->serve(control);
  while (!pending.isFinished()) QCoreApplication::processEvents(QEventLoop::AllEvents, 10);
  EXPECT_EQ(pending.reply().arguments().value(0).toString(), u"toggle done"_s);
  QDBusConnection::disconnectFromBus(u"other"_s);
}

TEST_F(BusRemoteControlTest, CommandsReachTheProgramAndBringItsAnswerBack) {
  const auto bus = BusRemoteControl::create();
  ASSERT_TRUE(bus);
  (*bus)->serve(control);
  EXPECT_EQ(send(u"toggle"_s), u"toggle done"_s);
  EXPECT_EQ(send(u"start"_s), u"start done"_s);
  EXPECT_EQ(send(u"stop"_s), u"stop done"_s);
  EXPECT_EQ(send(u"status"_s), u"idle: Sign in to connect"_s);
  EXPECT_EQ(send(u"quit"_s), QString());
  EXPECT_EQ(send(u"signIn"_s), u"signIn done"_s);
  EXPECT_EQ(send(u"cancelSignIn"_s), u"cancelSignIn done"_s);
  EXPECT_EQ(send(u"signOut"_s), u"signOut done"_s);
  EXPECT_EQ(send(u"open"_s, {u"vemo://a?b=c"_s}), QString());
  EXPECT_THAT(control.calls, ElementsAre("toggle", "start", "stop", "quit", "signIn",
                                         "cancelSignIn", "signOut", "open vemo://a?b=c"));
}

TEST_F(BusRemoteControlTest, ACommandThatDoesNotExistIsAnErrorAndNoCall) {
  const auto bus = BusRemoteControl::create();
  (*bus)->serve(control);
  const auto answer = send(u"deleteLater"_s);
  ASSERT_FALSE(answer);
  EXPECT_TRUE(answer.error().startsWith(u"Vemo doesn't answer: "_s));
  EXPECT_TRUE(control.calls.empty());
}

TEST_F(BusRemoteControlTest, TheNameIsFreeAgainWhenTheProgramHasGone) {
  {
    const auto bus = BusRemoteControl::create();
  }
  EXPECT_EQ(send(u"status"_s).error(), u"Vemo isn't running."_s);
  EXPECT_TRUE(BusRemoteControl::create());
}

TEST_F(BusRemoteControlTest, ANameThatAnotherProgramOwnsIsTaken) {
  auto other = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"other"_s);
  ASSERT_TRUE(other.registerService(u"brelmox.Vemo"_s));
  const auto bus = BusRemoteControl::create();
  ASSERT_FALSE(bus);
  EXPECT_EQ(bus.error(), BusNameError::Taken);
  QDBusConnection::disconnectFromBus(u"other"_s);
}

}  // namespace
}  // namespace vemo
