// Keys struck in a window of this program, with the server's own events.
#include "platform/x11/X11LocalKeyMonitor.h"

#include <xkbcommon/xkbcommon-keysyms.h>

#include <QGuiApplication>
#include <QKeyEvent>
#include <QRasterWindow>

#include "KeyListener.h"
#include "contract/x11/VirtualUser.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using Handling = LocalKeyMonitor::Handling;

constexpr xcb_keycode_t aPlace = 38;
constexpr xcb_keycode_t rightAltPlace = 108;

class NotingWindow : public QRasterWindow {
 public:
  std::vector<int> pressed;
  std::vector<int> released;

 protected:
  void keyPressEvent(QKeyEvent* event) override { pressed.push_back(event->key()); }
  void keyReleaseEvent(QKeyEvent* event) override { released.push_back(event->key()); }
};

class X11LocalKeyMonitorTest : public testing::Test, protected TestApplication<QGuiApplication> {
 protected:
  X11LocalKeyMonitorTest() { focus(window); }

  /// Without a window manager nobody else gives a window the focus.
  void focus(QWindow& target) {
    target.setGeometry(0, 0, 100, 100);
    target.show();
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return target.isExposed(); }));
    EXPECT_TRUE(QtTestLoop::runUntil([&] {
      xcb_set_input_focus(connection->xcb(), XCB_INPUT_FOCUS_PARENT, target.winId(),
                          XCB_CURRENT_TIME);
      connection->synchronize();
      return QGuiApplication::focusWindow() == &target;
    }));
  }

  void start() {
    monitor.start([this](const KeyEvent& event) {
      events.push_back(event);
      return handling;
    });
  }

  /// Waits for as many events, and for what else is on its way.
  std::vector<KeyEvent> takeEvents(std::size_t count) {
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return events.size() >= count; }));
    settle();
    return std::exchange(events, {});
  }

  /// All that was typed before has arrived when a message to the window itself has.
  void settle() {
    struct Seen : QAbstractNativeEventFilter {
      bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
        const auto* event = static_cast<xcb_generic_event_t*>(message);
        isDone |= (event->response_type & 0x7F) == XCB_CLIENT_MESSAGE;
        return false;
      }
      bool isDone = false;
    } seen;
    QCoreApplication::instance()->installNativeEventFilter(&seen);
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = window.winId();
    message.type = connection->atom("VEMO_TEST");
    connection->synchronize();
    xcb_send_event(connection->xcb(), 0, window.winId(), 0,
                   reinterpret_cast<const char*>(&message));
    connection->synchronize();
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return seen.isDone; }));
    QCoreApplication::processEvents();
  }

  std::unique_ptr<X11Connection> connection = X11Connection::create();
  NotingWindow window;
  VirtualUser user;
  X11LocalKeyMonitor monitor;
  Handling handling = Handling::Swallow;
  std::vector<KeyEvent> events;
};

TEST_F(X11LocalKeyMonitorTest, BeforeItStartsTheWindowGetsEveryKey) {
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return !window.released.empty(); }));
  EXPECT_THAT(window.pressed, ElementsAre(Qt::Key_A));
  EXPECT_THAT(events, IsEmpty());
}

TEST_F(X11LocalKeyMonitorTest, ASwallowedKeyReachesNoWindowNeitherGoingDownNorComingUp) {
  start();
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  EXPECT_THAT(takeEvents(2), ElementsAre(keyDown(0), keyUp(0)));
  EXPECT_THAT(window.pressed, IsEmpty());
  EXPECT_THAT(window.released, IsEmpty());
}

TEST_F(X11LocalKeyMonitorTest, AKeyThatIsPassedOnReachesTheWindow) {
  handling = Handling::PassOn;
  start();
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  EXPECT_THAT(takeEvents(2), ElementsAre(keyDown(0), keyUp(0)));
  EXPECT_THAT(window.pressed, ElementsAre(Qt::Key_A));
  EXPECT_THAT(window.released, ElementsAre(Qt::Key_A));
}

TEST_F(X11LocalKeyMonitorTest, AChordTellsItsModifiers) {
  start();
  user.press(XKB_KEY_Control_L);
  user.press(XKB_KEY_Shift_R);
  user.press(XKB_KEY_F8);
  user.release(XKB_KEY_F8);
  user.release(XKB_KEY_Shift_R);
  user.release(XKB_KEY_Control_L);
  EXPECT_THAT(
      takeEvents(6),
      ElementsAre(flagsChanged(59, ControlFlag), flagsChanged(60, ControlFlag | ShiftFlag),
                  keyDown(100, ControlFlag | ShiftFlag), keyUp(100, ControlFlag | ShiftFlag),
                  flagsChanged(60, ControlFlag), flagsChanged(59, 0)));
  EXPECT_THAT(window.pressed, IsEmpty());
}

TEST_F(X11LocalKeyMonitorTest, AltIsOptionAndSuperIsCommandOnEitherSide) {
  start();
  for (const auto key : {XKB_KEY_Alt_L, XKB_KEY_Alt_R, XKB_KEY_Super_L, XKB_KEY_Super_R}) {
    user.press(key);
    user.release(key);
  }
  EXPECT_THAT(takeEvents(8), ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(58, 0),
                                         flagsChanged(61, OptionFlag), flagsChanged(61, 0),
                                         flagsChanged(55, CommandFlag), flagsChanged(55, 0),
                                         flagsChanged(54, CommandFlag), flagsChanged(54, 0)));
}

TEST_F(X11LocalKeyMonitorTest, OneAltThatComesUpLeavesTheOthersFlag) {
  start();
  user.press(XKB_KEY_Alt_L);
  user.press(XKB_KEY_Alt_R);
  user.release(XKB_KEY_Alt_R);
  user.release(XKB_KEY_Alt_L);
  EXPECT_THAT(takeEvents(4), ElementsAre(flagsChanged(58, OptionFlag), flagsChanged(61, OptionFlag),
                                         flagsChanged(61, OptionFlag), flagsChanged(58, 0)));
}

TEST_F(X11LocalKeyMonitorTest, ARightAltThatTypesTheThirdLevelIsNoOption) {
  user.chooseLayout(u"de"_s);
  start();
  user.pressPlace(rightAltPlace);
  user.press(XKB_KEY_q);
  user.release(XKB_KEY_q);
  user.releasePlace(rightAltPlace);
  EXPECT_THAT(takeEvents(4),
              ElementsAre(keyDown(256 + 100), keyDown(12), keyUp(12), keyUp(256 + 100)));
}

TEST_F(X11LocalKeyMonitorTest, ScrollLockStandsForFnWhereNoKeyIsFn) {
  start();
  user.press(XKB_KEY_Scroll_Lock);
  user.release(XKB_KEY_Scroll_Lock);
  EXPECT_THAT(takeEvents(2), ElementsAre(flagsChanged(63, FnFlag), flagsChanged(63, 0)));
}

TEST_F(X11LocalKeyMonitorTest, AHeldKeyThatRepeatsIsToldOnceAndStaysSwallowed) {
  start();
  user.press(XKB_KEY_a);
  // The server's own key repeats on as long as it's held.
  struct Presses : QAbstractNativeEventFilter {
    bool nativeEventFilter(const QByteArray&, void* message, qintptr*) override {
      const auto* event = static_cast<xcb_generic_event_t*>(message);
      count += (event->response_type & 0x7F) == XCB_KEY_PRESS;
      return false;
    }
    int count = 0;
  } presses;
  QCoreApplication::instance()->installNativeEventFilter(&presses);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return presses.count >= 3; }));
  user.release(XKB_KEY_a);
  EXPECT_THAT(takeEvents(2), ElementsAre(keyDown(0), keyUp(0)));
  EXPECT_THAT(window.pressed, IsEmpty());
  EXPECT_THAT(window.released, IsEmpty());
}

TEST_F(X11LocalKeyMonitorTest, TheHalvesOfARepetitionMayComeApart) {
  start();
  user.press(XKB_KEY_a);
  takeEvents(1);
  xcb_key_release_event_t half{};
  half.response_type = XCB_KEY_RELEASE;
  half.detail = aPlace;
  EXPECT_TRUE(monitor.nativeEventFilter("xcb_generic_event_t", &half, nullptr));
  EXPECT_THAT(takeEvents(0), IsEmpty());
  half.response_type = XCB_KEY_PRESS;
  EXPECT_TRUE(monitor.nativeEventFilter("xcb_generic_event_t", &half, nullptr));
  EXPECT_THAT(takeEvents(0), IsEmpty());
  user.release(XKB_KEY_a);
  EXPECT_THAT(takeEvents(1), ElementsAre(keyUp(0)));
  EXPECT_THAT(window.pressed, IsEmpty());
}

TEST_F(X11LocalKeyMonitorTest, ARepetitionThatIsHandledAfterTheKeyIsUpIsNoSecondStroke) {
  start();
  user.press(XKB_KEY_a);
  takeEvents(1);
  // The server's word is ahead of the events that are on their way.
  user.release(XKB_KEY_a);
  xcb_key_release_event_t half{};
  half.detail = aPlace;
  half.time = 7;
  for (const std::uint8_t type : {XCB_KEY_RELEASE, XCB_KEY_PRESS}) {
    half.response_type = type;
    EXPECT_TRUE(monitor.nativeEventFilter("xcb_generic_event_t", &half, nullptr));
  }
  EXPECT_THAT(takeEvents(1), ElementsAre(keyUp(0)));
  EXPECT_THAT(window.pressed, IsEmpty());
  EXPECT_THAT(window.released, IsEmpty());
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  EXPECT_THAT(takeEvents(2), ElementsAre(keyDown(0), keyUp(0)));
}

TEST_F(X11LocalKeyMonitorTest, AKeyThatIsHeldBeyondTheMonitoringStaysSwallowedWhileItRepeats) {
  user.stopRepeats();  // But for those that the test makes.
  start();
  user.press(XKB_KEY_a);
  takeEvents(1);
  monitor.stop();
  xcb_key_release_event_t half{};
  half.detail = aPlace;
  for (const std::uint8_t type : {XCB_KEY_RELEASE, XCB_KEY_PRESS}) {
    half.response_type = type;
    EXPECT_TRUE(monitor.nativeEventFilter("xcb_generic_event_t", &half, nullptr));
  }
  user.release(XKB_KEY_a);
  user.press(XKB_KEY_b);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return !window.pressed.empty(); }));
  EXPECT_THAT(window.pressed, ElementsAre(Qt::Key_B));
  user.release(XKB_KEY_b);
}

TEST_F(X11LocalKeyMonitorTest, AHandlerMayEndTheMonitoringAndItsKeyStaysSwallowed) {
  monitor.start([this](const KeyEvent& event) {
    events.push_back(event);
    monitor.stop();
    return Handling::Swallow;
  });
  user.press(XKB_KEY_Escape);
  user.release(XKB_KEY_Escape);
  user.press(XKB_KEY_b);
  user.release(XKB_KEY_b);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return !window.released.empty(); }));
  EXPECT_THAT(events, ElementsAre(keyDown(53)));
  EXPECT_THAT(window.pressed, ElementsAre(Qt::Key_B));
  EXPECT_THAT(window.released, ElementsAre(Qt::Key_B));
}

TEST_F(X11LocalKeyMonitorTest, KeysHeldWhileTheFocusLeavesCountAsUp) {
  start();
  user.press(XKB_KEY_Alt_L);
  takeEvents(1);
  xcb_set_input_focus(connection->xcb(), XCB_INPUT_FOCUS_POINTER_ROOT, connection->root(),
                      XCB_CURRENT_TIME);
  connection->synchronize();
  EXPECT_THAT(takeEvents(1), ElementsAre(flagsChanged(58, 0)));
}

TEST_F(X11LocalKeyMonitorTest, KeysOfOtherWindowsAreNotTold) {
  start();
  xcb_set_input_focus(connection->xcb(), XCB_INPUT_FOCUS_POINTER_ROOT, connection->root(),
                      XCB_CURRENT_TIME);
  connection->synchronize();
  EXPECT_TRUE(QtTestLoop::runUntil([] { return !QGuiApplication::focusWindow(); }));
  xcb_warp_pointer(connection->xcb(), XCB_NONE, connection->root(), 0, 0, 0, 0, 600, 400);
  user.press(XKB_KEY_a);
  user.release(XKB_KEY_a);
  settle();
  EXPECT_THAT(events, IsEmpty());
}

}  // namespace
}  // namespace vemo
