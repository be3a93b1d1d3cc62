#include "platform/qt/QtSystemEvents.h"

#include <memory>

#include "QtGuiFixture.h"

namespace vemo {
namespace {

class QtSystemEventsTest : public QtGuiFixture {};

TEST_F(QtSystemEventsTest, ComingToTheFrontIsTold) {
  QtSystemEvents events;
  int count = 0;
  events.onDidBecomeActive = [&count] { ++count; };
  Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
  EXPECT_EQ(count, 1);
}

TEST_F(QtSystemEventsTest, NobodyNeedsToListenAndNothingComesAfterTheEnd) {
  int count = 0;
  auto gone = std::make_unique<QtSystemEvents>();
  gone->onDidBecomeActive = [&count] { ++count; };
  gone.reset();
  const QtSystemEvents deaf;
  Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationActive);
  EXPECT_EQ(count, 0);
}

TEST_F(QtSystemEventsTest, GoingToTheBackIsNotTold) {
  QtSystemEvents events;
  int count = 0;
  events.onDidBecomeActive = [&count] { ++count; };
  Q_EMIT qGuiApp->applicationStateChanged(Qt::ApplicationInactive);
  EXPECT_EQ(count, 0);
}

}  // namespace
}  // namespace vemo
