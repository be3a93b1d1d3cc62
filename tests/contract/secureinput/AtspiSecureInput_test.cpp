#include "platform/atspi/AtspiSecureInput.h"

#include <gtest/gtest.h>

#include <QDBusMessage>
#include <chrono>
#include <optional>

#include "ScriptedAccessibility.h"
#include "fakes/OnceWithin.h"
#include "fakes/QtTestLoop.h"
#include "platform/gio/GioThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

constexpr unsigned passwordText = 40;
constexpr unsigned plainText = 61;
constexpr unsigned panel = 39;
constexpr unsigned frame = 23;

/// The 50 ms, and what a machine whose cores are all taken needs to wake a thread up.
constexpr auto mostOnTheMainThread = 100ms;

const QString program = u"/org/a11y/atspi/accessible/root"_s;
const QString window = u"/org/a11y/atspi/accessible/1"_s;
const QString box = u"/org/a11y/atspi/accessible/2"_s;
const QString password = u"/org/a11y/atspi/accessible/3"_s;
const QString name = u"/org/a11y/atspi/accessible/4"_s;

/// A form with a password and a name in a window in front; nothing has the focus yet.
class AtspiSecureInputTest : public testing::Test, protected QtTestLoop {
 protected:
  AtspiSecureInputTest() {
    qputenv("DBUS_SESSION_BUS_ADDRESS", desktop.sessionBus().address().toUtf8());
    desktop.sessionBus().start();
    desktop.set(window, {.role = frame, .isActive = true, .parent = program});
    desktop.set(box, {.role = panel, .parent = window});
    desktop.set(password, {.role = passwordText, .parent = box});
    desktop.set(name, {.role = plainText, .parent = box});
  }

  void listen() {
    secureInput.emplace(thread);
    ASSERT_TRUE(runUntil([this] { return desktop.isListenedTo(); }));
  }

  void startListening() {
    desktop.start();
    listen();
  }

  /// The focus moves as a well-behaved program says it.
  void focus(const QString& path, unsigned role) {
    desktop.set(path, {.role = role, .isFocused = true, .parent = box});
    desktop.reportFocus(path);
  }

  bool becomes(bool isActive) {
    return runUntil([&] { return secureInput->isActive() == isActive; });
  }

  /// The bus keeps the order, so a question that is asked on it has its answer after the report.
  void settle() {
    const int before = desktop.questions();
    focus(password, passwordText);
    ASSERT_TRUE(becomes(true));
    ASSERT_GT(desktop.questions(), before);
  }

  /// In one of many tries.
  template <typename Call>
  static bool isQuick(Call call) {
    return isOnceWithin(mostOnTheMainThread, call, 100);
  }

  bool isNoQuickly() const {
    return isQuick([this] { EXPECT_FALSE(secureInput->isActive()); });
  }

  ScriptedAccessibility desktop;
  GioThread thread;
  std::optional<AtspiSecureInput> secureInput;
};

TEST_F(AtspiSecureInputTest, APasswordFieldWithTheFocusIsSecureAndAnOrdinaryFieldIsNot) {
  startListening();
  EXPECT_FALSE(secureInput->isActive());
  focus(password, passwordText);
  EXPECT_TRUE(becomes(true));
  focus(name, plainText);
  EXPECT_TRUE(becomes(false));
  focus(password, passwordText);
  EXPECT_TRUE(becomes(true));
  desktop.reportFocus(password, false);
  EXPECT_TRUE(becomes(false));
}

TEST_F(AtspiSecureInputTest, TheFocusThatAnotherObjectLosesChangesNothing) {
  startListening();
  settle();
  desktop.reportFocus(name, false);
  const int before = desktop.questions();
  EXPECT_TRUE(becomes(true));
  EXPECT_GT(desktop.questions(), before);
}

TEST_F(AtspiSecureInputTest, AFieldThatBeginsToShowItsPasswordIsSecureNoLonger) {
  startListening();
  settle();
  desktop.set(password, {.role = plainText, .isFocused = true, .parent = box});
  EXPECT_FALSE(secureInput->isActive());
}

TEST_F(AtspiSecureInputTest, AFieldThatHasLostTheFocusUnreportedIsNotSecure) {
  startListening();
  settle();
  desktop.set(password, {.role = passwordText, .isFocused = false, .parent = box});
  EXPECT_FALSE(secureInput->isActive());
}

TEST_F(AtspiSecureInputTest, AFieldThatKeepsTheFocusInAWindowBehindIsNotSecure) {
  startListening();
  settle();
  desktop.set(window, {.role = frame, .isActive = false, .parent = program});
  EXPECT_FALSE(secureInput->isActive());
  desktop.set(window, {.role = frame, .isActive = true, .parent = program});
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, APasswordFieldWhoseWindowCannotBeFoundIsSecure) {
  startListening();
  settle();
  desktop.set(box, {.role = panel, .parent = {}});
  EXPECT_TRUE(becomes(true));
  desktop.remove(box);
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, APasswordFieldWhoseWindowIsSlowToAnswerIsSecure) {
  startListening();
  settle();
  desktop.set(box, {.role = panel, .parent = window, .isSilent = true});
  EXPECT_TRUE(becomes(true));
  EXPECT_TRUE(isQuick([this] { static_cast<void>(secureInput->isActive()); }));
}

TEST_F(AtspiSecureInputTest, AncestorsInACircleEndWithinTheLimit) {
  startListening();
  settle();
  desktop.set(box, {.role = panel, .parent = password});
  EXPECT_TRUE(isQuick([this] { static_cast<void>(secureInput->isActive()); }));
  desktop.set(box, {.role = panel, .parent = window});
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, AFocusGivenBeforeTheStartIsFound) {
  desktop.set(password, {.role = passwordText, .isFocused = true, .parent = box});
  startListening();
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, TheSearchLooksIntoContainersThatCountAsFocusedThemselves) {
  desktop.set(box, {.role = panel, .isFocused = true, .parent = window});
  desktop.set(password, {.role = passwordText, .isFocused = true, .parent = box});
  startListening();
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, TheSearchPassesOverWindowsBehind) {
  const QString behind = u"/org/a11y/atspi/accessible/0"_s;
  desktop.set(behind, {.role = frame, .parent = program});
  desktop.set(password, {.role = passwordText, .isFocused = true, .parent = behind});
  desktop.set(name, {.role = passwordText, .isFocused = true, .parent = box});
  startListening();
  ASSERT_TRUE(becomes(true));
  desktop.set(name, {.role = plainText, .isFocused = true, .parent = box});
  EXPECT_FALSE(secureInput->isActive()) << "it is the field in front that was found";
}

TEST_F(AtspiSecureInputTest, AProgramThatNeverAnswersCostsAtMost50msAndIsUnknown) {
  startListening();
  settle();
  desktop.setSilent(true);
  EXPECT_TRUE(isNoQuickly());
  desktop.setSilent(false);
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, AFrozenAccessibilityBusCostsAtMost50msAndIsUnknown) {
  startListening();
  settle();
  desktop.bus().freeze();
  EXPECT_TRUE(isNoQuickly());
  desktop.bus().thaw();
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, AFrozenSessionBusHoldsUpNeitherTheStartNorAQuestionNorTheEnd) {
  desktop.sessionBus().freeze();
  secureInput.emplace(thread);
  EXPECT_TRUE(isNoQuickly());
  EXPECT_TRUE(isQuick([this] { secureInput.emplace(thread); }))
      << "each start ends the one before it";
  desktop.sessionBus().thaw();
}

TEST_F(AtspiSecureInputTest, WithoutAnAccessibilityBusNothingIsSecureUntilThereIsOne) {
  secureInput.emplace(thread);
  EXPECT_TRUE(isNoQuickly());
  desktop.set(password, {.role = passwordText, .isFocused = true, .parent = box});
  desktop.start();
  EXPECT_TRUE(becomes(true));
}

TEST_F(AtspiSecureInputTest, WithoutASessionBusNothingIsSecure) {
  desktop.sessionBus().kill();
  secureInput.emplace(thread);
  EXPECT_TRUE(isNoQuickly());
}

TEST_F(AtspiSecureInputTest, AnAccessibilityBusThatRestartsIsFollowedAgain) {
  startListening();
  settle();
  desktop.kill();
  EXPECT_TRUE(becomes(false));
  desktop.start();
  EXPECT_TRUE(becomes(true));
  focus(name, plainText);
  EXPECT_TRUE(becomes(false));
}

TEST_F(AtspiSecureInputTest, ARegistryThatRestartsIsAskedForReportsAgain) {
  startListening();
  settle();
  QDBusConnection registry(u"registry"_s);
  registry.unregisterService(u"org.a11y.atspi.Registry"_s);
  desktop.forgetListeners();
  registry.registerService(u"org.a11y.atspi.Registry"_s);
  EXPECT_TRUE(runUntil([this] { return desktop.isListenedTo(); }));
}

TEST_F(AtspiSecureInputTest, AProgramThatHasEndedIsUnknown) {
  startListening();
  settle();
  QDBusConnection::disconnectFromBus(u"program"_s);
  EXPECT_TRUE(becomes(false));
}

TEST_F(AtspiSecureInputTest, ReportsAndAnswersOfAnotherShapeAreLeftAlone) {
  startListening();
  settle();
  auto report =
      QDBusMessage::createSignal(name, u"org.a11y.atspi.Event.Object"_s, u"StateChanged"_s);
  report << u"focused"_s << u"yes"_s;
  QDBusConnection(u"program"_s).send(report);
  EXPECT_TRUE(becomes(true));
  desktop.setAnswersNonsense(true);
  EXPECT_TRUE(isNoQuickly());
  desktop.setAnswersNonsense(false);
  EXPECT_TRUE(becomes(true));
}

}  // namespace
}  // namespace vemo
