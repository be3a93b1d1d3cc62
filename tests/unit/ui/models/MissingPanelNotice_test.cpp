#include "ui/models/MissingPanelNotice.h"

#include <gtest/gtest.h>

#include <QStringList>

#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakeScenes.h"
#include "fakes/FakeStatusItem.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class MissingPanelNoticeTest : public testing::Test {
 protected:
  MissingPanelNoticeTest() {
    item.onHostKnown = [this] { notice.hostKnown(); };
    scenes.open(Scene::Main);
  }

  /// As the main window opens, and closes, on a person's wish.
  void openWindow() {
    scenes.open(Scene::Main);
    notice.windowsChanged();
  }
  void closeWindow() {
    scenes.close(Scene::Main);
    notice.windowsChanged();
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  FakeStatusItem item;
  FakeScenes scenes;
  QStringList logged;
  QStringList told;
  MissingPanelNotice notice{{.mainThread = mainThread,
                             .clock = clock,
                             .item = item,
                             .scenes = scenes,
                             .log = [this](const QString& line) { logged.append(line); },
                             .showToast = [this](const QString& text) { told.append(text); }}};

  const QStringList noPanel{
      u"tray: no panel shows status items here; the menu is in the main window"_s};
  const QStringList menuIsHere{
      u"Your panel doesn't show Vemo's icon. Its menu is in this window."_s};
};

TEST_F(MissingPanelNoticeTest, NothingIsToldWhileNobodyKnows) {
  clock.advance(1h);
  EXPECT_TRUE(logged.isEmpty());
  EXPECT_TRUE(told.isEmpty());
}

TEST_F(MissingPanelNoticeTest, AMissingPanelIsToldAfterTheGraceTimeAndNotBefore) {
  item.setHost(false);
  clock.advance(9999ms);
  EXPECT_TRUE(logged.isEmpty());
  EXPECT_TRUE(told.isEmpty());
  clock.advance(1ms);
  EXPECT_EQ(logged, noPanel);
  EXPECT_EQ(told, menuIsHere);
}

TEST_F(MissingPanelNoticeTest, APanelThatIsThereIsNoNews) {
  item.setHost(true);
  clock.advance(1h);
  EXPECT_TRUE(logged.isEmpty());
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

TEST_F(MissingPanelNoticeTest, APanelThatComesWithinTheGraceTimeKeepsItFromBeingTold) {
  item.setHost(false);
  clock.advance(9999ms);
  item.setHost(true);
  clock.advance(1h);
  EXPECT_TRUE(logged.isEmpty());
  EXPECT_TRUE(told.isEmpty());
}

TEST_F(MissingPanelNoticeTest, APanelThatComesLaterDoesNotHaveItToldAgainWhenItGoes) {
  item.setHost(false);
  clock.advance(10s);
  item.setHost(true);
  item.setHost(false);
  clock.advance(1h);
  EXPECT_EQ(logged, noPanel);
  EXPECT_EQ(told, menuIsHere);
}

TEST_F(MissingPanelNoticeTest, APanelThatIsStartedAnewHasTheGraceTimeEachTime) {
  item.setHost(true);
  for (int restart = 0; restart < 3; ++restart) {
    item.setHost(false);
    clock.advance(9s);
    item.setHost(true);
    clock.advance(9s);
  }
  EXPECT_TRUE(logged.isEmpty());
  item.setHost(false);
  clock.advance(10s);
  EXPECT_EQ(logged, noPanel) << "and one that stays away is missing";
  EXPECT_EQ(told, menuIsHere);
}

TEST_F(MissingPanelNoticeTest, WhoHasClosedTheWindowIsToldWhenItOpensAgainAndOnce) {
  item.setHost(false);
  closeWindow();
  clock.advance(10s);
  EXPECT_EQ(logged, noPanel);
  EXPECT_TRUE(told.isEmpty()) << "nobody would see it";
  openWindow();
  EXPECT_EQ(told, menuIsHere);
  closeWindow();
  openWindow();
  EXPECT_EQ(told, menuIsHere);
}

TEST_F(MissingPanelNoticeTest, AWindowThatOpensWithinTheGraceTimeSaysNothingYet) {
  item.setHost(false);
  openWindow();
  EXPECT_TRUE(told.isEmpty());
}

TEST_F(MissingPanelNoticeTest, WhoHasGotAPanelBeforeTheWindowOpensIsNotTold) {
  closeWindow();
  item.setHost(false);
  clock.advance(10s);
  item.setHost(true);
  openWindow();
  EXPECT_TRUE(told.isEmpty());
}

TEST_F(MissingPanelNoticeTest, APanelThatCameLateAndIsStartedAnewHasTheGraceTime) {
  closeWindow();
  item.setHost(false);
  clock.advance(10s);
  item.setHost(true);
  item.setHost(false);
  openWindow();
  EXPECT_TRUE(told.isEmpty());
  clock.advance(10s);
  EXPECT_EQ(told, menuIsHere);
}

TEST_F(MissingPanelNoticeTest, TheSettingsWindowIsNotWhereTheMenuIs) {
  closeWindow();
  scenes.open(Scene::Settings);
  item.setHost(false);
  clock.advance(10s);
  EXPECT_TRUE(told.isEmpty());
}

}  // namespace
}  // namespace vemo
