#include "ui/HUDWindowController.h"

#include <gtest/gtest.h>

#include "fakes/FakeClock.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using Kind = HUDModel::State::Kind;

class HUDWindowControllerTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  HUDWindowController hud{clock, mainThread};
  HUDModel& model = hud.model();
};

TEST_F(HUDWindowControllerTest, ARecordingStartsAtLevelZeroAndFollowsTheMicrophone) {
  hud.setLevel(0.5F);
  hud.showRecording();
  EXPECT_EQ(model.state.kind, Kind::Recording);
  EXPECT_TRUE(model.isPresented);
  EXPECT_EQ(model.level, 0.0F);
  hud.setLevel(0.25F);
  EXPECT_EQ(model.level, 0.25F);
}

TEST_F(HUDWindowControllerTest, AnErrorStaysFor2400msAndIsGone350msLater) {
  hud.showError(u"No microphone available"_s);
  EXPECT_EQ(model.state, (HUDModel::State{Kind::Error, u"No microphone available"_s}));
  clock.advance(2400ms - 1ns);
  EXPECT_TRUE(model.isPresented);
  clock.advance(1ns);
  EXPECT_FALSE(model.isPresented);
  EXPECT_EQ(model.state.kind, Kind::Error);
  clock.advance(350ms);
  EXPECT_EQ(model.state.kind, Kind::Idle);
}

TEST_F(HUDWindowControllerTest, ASecondErrorReplacesTheFirstAndRestartsItsTime) {
  hud.showError(u"first"_s);
  clock.advance(2s);
  hud.showError(u"second"_s);
  clock.advance(2s);
  EXPECT_TRUE(model.isPresented);
  EXPECT_EQ(model.state.message, u"second"_s);
}

TEST_F(HUDWindowControllerTest, AShowDuringTheRemovalKeepsThePillUp) {
  hud.showTranscribing();
  hud.hide();
  clock.advance(200ms);
  hud.showRecording();
  clock.advance(10s);
  EXPECT_TRUE(model.isPresented);
  EXPECT_EQ(model.state.kind, Kind::Recording);
}

TEST_F(HUDWindowControllerTest, HidingNowDropsThePillAtOnceAndForGood) {
  hud.showError(u"gone"_s);
  hud.hideNow();
  EXPECT_FALSE(model.isPresented);
  EXPECT_EQ(model.state.kind, Kind::Idle);
  clock.advance(10s);
  EXPECT_FALSE(model.isPresented);
}

}  // namespace
}  // namespace vemo
