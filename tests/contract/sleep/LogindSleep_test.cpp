#include "platform/logind/LogindSleep.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <QThread>
#include <optional>

#include "contract/bus/PrivateBus.h"
#include "fakes/OnceWithin.h"
#include "fakes/QtTestLoop.h"
#include "platform/gio/GioThread.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

/// Beside those that isHeard() leaves on their way.
constexpr int manyNotices = 500;

/// A system bus, and on it a logind that says what the test has it say.
class LogindSleepTest : public testing::Test, protected QtTestLoop {
 protected:
  LogindSleepTest() { qputenv("DBUS_SYSTEM_BUS_ADDRESS", bus.address().toUtf8()); }
  ~LogindSleepTest() override { qunsetenv("DBUS_SYSTEM_BUS_ADDRESS"); }

  void startBus() {
    bus.start();
    logind.emplace(bus.connect(u"logind"_s));
    ASSERT_TRUE(logind->registerService(u"org.freedesktop.login1"_s));
  }

  void listen() {
    sleep.emplace(thread, mainThread, [this] { ++wakes; });
  }

  static void tell(QDBusConnection& from, bool isAboutToSleep) {
    auto signal = QDBusMessage::createSignal(
        u"/org/freedesktop/login1"_s, u"org.freedesktop.login1.Manager"_s, u"PrepareForSleep"_s);
    signal << isAboutToSleep;
    ASSERT_TRUE(from.send(signal));
  }

  /// Has the machine sleep and wake until it is noticed: nothing tells when the adapter listens.
  bool isHeard() {
    const int before = wakes;
    return runUntil([this, before] {
      ++wakesOnTheWay;
      tell(*logind, true);
      tell(*logind, false);
      return wakes > before;
    });
  }

  PrivateBus bus;
  QtMainThread mainThread;
  GioThread thread;
  std::optional<QDBusConnection> logind;
  std::optional<LogindSleep> sleep;
  int wakes = 0;
  int wakesOnTheWay = 0;  ///< at most: isHeard() doesn't wait for those after the first
};

TEST_F(LogindSleepTest, WakingIsToldAndFallingAsleepIsNot) {
  startBus();
  listen();
  ASSERT_TRUE(isHeard());
  const int before = wakes;
  for (int i = 0; i < manyNotices; ++i) tell(*logind, true);
  tell(*logind, false);
  ASSERT_TRUE(runUntil([&] { return wakes > before; }));
  EXPECT_LT(wakes - before, wakesOnTheWay + manyNotices);
}

TEST_F(LogindSleepTest, WakingIsToldOnTheMainThread) {
  startBus();
  Qt::HANDLE toldOn = nullptr;
  sleep.emplace(thread, mainThread, [&] {
    ++wakes;
    toldOn = QThread::currentThreadId();
  });
  ASSERT_TRUE(isHeard());
  EXPECT_EQ(toldOn, QThread::currentThreadId());
}

TEST_F(LogindSleepTest, AnotherProgramsNoticeIsNoWaking) {
  startBus();
  listen();
  ASSERT_TRUE(isHeard());
  auto stranger = bus.connect(u"stranger"_s);
  const int before = wakes;
  for (int i = 0; i < manyNotices; ++i) tell(stranger, false);
  tell(*logind, false);
  ASSERT_TRUE(runUntil([&] { return wakes > before; }));
  EXPECT_LT(wakes - before, wakesOnTheWay + manyNotices);
}

TEST_F(LogindSleepTest, WithoutASystemBusNothingIsToldAndNothingIsWaitedFor) {
  EXPECT_TRUE(isOnceWithin(std::chrono::milliseconds(50), [this] { listen(); }, 8));
  sleep.reset();
  EXPECT_EQ(wakes, 0);
}

TEST_F(LogindSleepTest, AFrozenBusHoldsUpNeitherTheStartNorTheEnd) {
  startBus();
  bus.freeze();
  EXPECT_TRUE(isOnceWithin(std::chrono::seconds(2), [this] {
    listen();
    sleep.reset();
  }));
  bus.thaw();
}

TEST_F(LogindSleepTest, ABusThatRestartsIsListenedToAgain) {
  startBus();
  listen();
  ASSERT_TRUE(isHeard());
  bus.kill();
  startBus();
  EXPECT_TRUE(isHeard());
}

TEST_F(LogindSleepTest, AfterTheEndNothingIsTold) {
  startBus();
  listen();
  ASSERT_TRUE(isHeard());
  tell(*logind, false);
  sleep.reset();
  const int before = wakes;
  QCoreApplication::processEvents();
  EXPECT_EQ(wakes, before);
}

}  // namespace
}  // namespace vemo
