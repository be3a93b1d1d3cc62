#include "ui/models/SettingsModel.h"

#include <gmock/gmock.h>

#include "desktop/VirtualKeys.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using testing::Contains;

TEST(SettingsModelTest, ClosingAllSheetsWhileTheRecorderIsOpenRemovesTheKeyMonitor) {
  SettingsOnFakes offline(u"settings-recorder"_s);
  EXPECT_TRUE(offline.model().hasOpenSheet());
  EXPECT_TRUE(offline.keys().isStarted());
  offline.model().closeSheets();
  EXPECT_FALSE(offline.model().recorder()->isOpen());
  EXPECT_FALSE(offline.keys().isStarted());
  EXPECT_FALSE(offline.model().hasOpenSheet());
}

TEST(SettingsModelTest, ClosingAllSheetsClosesEveryDialog) {
  for (const auto& state : {u"settings-delete-dialog"_s, u"settings-not-deleted"_s,
                            u"settings-slack"_s, u"settings-recorded"_s}) {
    SettingsOnFakes offline(state);
    EXPECT_TRUE(offline.model().hasOpenSheet()) << state.toStdString();
    offline.model().closeSheets();
    EXPECT_FALSE(offline.model().hasOpenSheet()) << state.toStdString();
  }
}

TEST(SettingsModelTest, ClosingTheWindowEndsTheRecording) {
  SettingsOnFakes offline(u"settings-recorder"_s);
  offline.model().windowHidden();
  EXPECT_FALSE(offline.keys().isStarted());
}

TEST(SettingsModelTest, ANewMessageOutlivesTheTimeOfTheOneBefore) {
  using namespace std::chrono_literals;
  SettingsOnFakes offline(u"settings-email-copied"_s);
  ToastModel& toast = *offline.model().toast();
  EXPECT_EQ(toast.message(), u"Email address copied to clipboard"_s);
  offline.pass(1900ms);
  offline.model().codebase()->rescan();
  EXPECT_EQ(toast.message(), u"Workspace Refreshed"_s);
  offline.pass(1900ms);
  EXPECT_TRUE(toast.isShown());
  offline.pass(100ms);
  EXPECT_FALSE(toast.isShown());
}

TEST(SettingsModelTest, ARecordedShortcutShowsInItsRowAndIsConfirmed) {
  SettingsOnFakes offline(u"settings-recorded"_s);
  offline.model().recorder()->confirm();
  EXPECT_EQ(offline.model().system()->selectedToggleHotkey(), u"Custom: Shift + Command + Space"_s);
  EXPECT_EQ(offline.model().toast()->message(), u"Start / Stop set to Shift + Command + Space"_s);
}

TEST(SettingsModelTest, TheWindowClosesOnceTheUserKnowsThatTheAccountIsGone) {
  SettingsOnFakes offline(u"settings-deleted"_s);
  int closings = 0;
  QObject::connect(&offline.model(), &SettingsModel::closeRequested, [&] { ++closings; });
  offline.model().account()->dismissAlert();
  EXPECT_EQ(closings, 1);
}

TEST(SettingsModelTest, EachStateIsNamedOnce) {
  QStringList states = SettingsOnFakes::states();
  EXPECT_THAT(states, Contains(u"settings-system"_s));
  EXPECT_EQ(states.removeDuplicates(), 0);
}

}  // namespace
}  // namespace vemo
