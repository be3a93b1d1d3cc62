#include "transcription/TargetApplication.h"

#include <gtest/gtest.h>

#include "fakes/FakeFocusedApplication.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

const RunningApplication editor{.identifier = u"org.xfce.mousepad"_s, .name = u"Mousepad"_s};
const RunningApplication self{.identifier = u"brelmox.Vemo"_s, .name = u"Vemo"_s, .isSelf = true};

RunningApplication active(RunningApplication application) {
  application.isActive = true;
  return application;
}

class TargetApplicationTest : public testing::Test {
 protected:
  FakeFocusedApplication desktop;

  QString currentName() const { return TargetApplication::current(desktop).name; }
  QString currentIdentifier() const { return TargetApplication::current(desktop).identifier; }
};

TEST_F(TargetApplicationTest, TheApplicationInFrontIsTheTarget) {
  desktop.setFrontmost(editor);
  desktop.setRunning({active({.identifier = u"other"_s, .name = u"Other"_s})});
  EXPECT_EQ(currentName(), u"Mousepad"_s);
  EXPECT_EQ(currentIdentifier(), u"org.xfce.mousepad"_s);
}

TEST_F(TargetApplicationTest, WhileThisProgramIsInFrontTheFirstActiveRegularOneStandsIn) {
  RunningApplication panel = active({.identifier = u"panel"_s, .name = u"Panel"_s});
  panel.isRegular = false;
  const RunningApplication idle{.identifier = u"idle"_s, .name = u"Idle"_s};
  desktop.setFrontmost(self);
  desktop.setRunning({active(self), panel, idle, active(editor),
                      active({.identifier = u"later"_s, .name = u"Later"_s})});
  EXPECT_EQ(currentName(), u"Mousepad"_s);
}

TEST_F(TargetApplicationTest, WithNothingInFrontAnActiveApplicationStandsIn) {
  desktop.setRunning({active(editor)});
  EXPECT_EQ(currentName(), u"Mousepad"_s);
}

TEST_F(TargetApplicationTest, WithNoStandInThisProgramIsTheTargetAfterAll) {
  desktop.setFrontmost(self);
  desktop.setRunning({active(self), editor});
  EXPECT_EQ(currentName(), u"Vemo"_s);
  EXPECT_EQ(currentIdentifier(), u"brelmox.Vemo"_s);
}

TEST_F(TargetApplicationTest, WithNothingAtAllTheNameIsDesktopAppAndTheIdentifierEmpty) {
  EXPECT_EQ(currentName(), u"Desktop App"_s);
  EXPECT_EQ(currentIdentifier(), u""_s);
}

TEST_F(TargetApplicationTest, AMissingNameReadsDesktopApp) {
  desktop.setFrontmost(RunningApplication{.identifier = u"xterm"_s, .name = {}});
  EXPECT_EQ(currentName(), u"Desktop App"_s);
  EXPECT_EQ(currentIdentifier(), u"xterm"_s);
}

TEST_F(TargetApplicationTest, AMissingIdentifierReadsEmpty) {
  desktop.setFrontmost(RunningApplication{.identifier = {}, .name = u"Game"_s});
  EXPECT_EQ(currentName(), u"Game"_s);
  EXPECT_EQ(currentIdentifier(), u""_s);
}

}  // namespace
}  // namespace vemo
