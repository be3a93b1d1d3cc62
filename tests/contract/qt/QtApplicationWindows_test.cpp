#include "platform/qt/QtApplicationWindows.h"

#include <QWindow>

#include "QtGuiFixture.h"

namespace vemo {
namespace {

class QtApplicationWindowsTest : public QtGuiFixture {
 protected:
  QtApplicationWindows windows;
};

TEST_F(QtApplicationWindowsTest, WithoutWindowsNothingHappens) {
  windows.bringForward();
}

TEST_F(QtApplicationWindowsTest, AMainWindowIsShownAndBecomesTheActiveOne) {
  QWindow window;
  windows.bringForward();
  EXPECT_TRUE(window.isVisible());
  EXPECT_TRUE(QtTestLoop::runUntil([&window] { return window.isActive(); }));
}

TEST_F(QtApplicationWindowsTest, AMinimizedWindowComesBack) {
  QWindow window;
  window.showMinimized();
  windows.bringForward();
  EXPECT_FALSE(window.windowStates().testFlag(Qt::WindowMinimized));
}

TEST_F(QtApplicationWindowsTest, ThePillAndMenusStayAsTheyAre) {
  QWindow pill;
  pill.setFlags(Qt::Window | Qt::WindowDoesNotAcceptFocus);
  QWindow menu;
  menu.setFlags(Qt::Popup);
  windows.bringForward();
  EXPECT_FALSE(pill.isVisible());
  EXPECT_FALSE(menu.isVisible());
}

}  // namespace
}  // namespace vemo
