// What every alert promises, held against the fake and the window.

#include <gtest/gtest.h>

#include <QTest>

#include "QtGuiFixture.h"
#include "fakes/FakeCriticalAlert.h"
#include "platform/qt/QtCriticalAlert.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

struct FakeAlertWorld {
  FakeCriticalAlert alert;
  void closeByUser() { alert.close(); }
};

struct QtAlertWorld {
  QtCriticalAlert alert;
  static void closeByUser() {
    for (QWindow* window : QGuiApplication::topLevelWindows())
      if (window->isVisible()) QTest::keyClick(window, Qt::Key_Escape);
  }
};

template <typename World>
class CriticalAlertContract : public QtGuiFixture {
 protected:
  void show() {
    world.alert.show(
        {.message = u"Move it"_s, .informative = u"It can't stay."_s, .button = u"Quit"_s},
        [this] { ++closings; });
  }

  World world;
  int closings = 0;
};

using Worlds = testing::Types<FakeAlertWorld, QtAlertWorld>;
TYPED_TEST_SUITE(CriticalAlertContract, Worlds);

TYPED_TEST(CriticalAlertContract, UntilItIsClosedNothingIsTold) {
  this->show();
  QCoreApplication::processEvents();
  EXPECT_EQ(this->closings, 0);
}

TYPED_TEST(CriticalAlertContract, ItsClosingIsToldOnce) {
  this->show();
  this->world.closeByUser();
  EXPECT_TRUE(QtTestLoop::runUntil([this] { return this->closings == 1; }));
  QCoreApplication::processEvents();
  EXPECT_EQ(this->closings, 1);
}

TYPED_TEST(CriticalAlertContract, OneThatWasClosedCanBeShownAgain) {
  for (int round = 1; round <= 2; ++round) {
    this->show();
    this->world.closeByUser();
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return this->closings == round; }));
  }
}

}  // namespace
}  // namespace vemo
