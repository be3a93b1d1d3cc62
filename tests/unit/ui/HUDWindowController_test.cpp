#include "ui/HUDWindowController.h"

#include <gmock/gmock.h>

#include "UiFixture.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFloatingPanel.h"
#include "fakes/FakeScreens.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using Kind = HUDModel::State::Kind;
using testing::ElementsAre;

class HUDWindowControllerTest : public UiFixture {
 protected:
  HUDWindowControllerTest() {
    // The model's changes, between what the panel is told.
    m_observation = model.changed.observe([this](const std::optional<Motion>& motion) {
      const auto* spring = motion ? &std::get<Spring>(*motion) : nullptr;
      if (spring) lastSpring = *spring;
      calls.push_back(std::string(stateName()) + (model.isPresented ? " presented" : "") +
                      (spring ? " with a spring" : ""));
    });
  }

  const char* stateName() const {
    switch (model.state.kind) {
      case Kind::Error:
        return "error";
      case Kind::Idle:
        return "idle";
      case Kind::Recording:
        return "recording";
      case Kind::Transcribing:
        return "transcribing";
    }
    return "";
  }

  std::vector<std::string> takeCalls() { return std::exchange(calls, {}); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeScreens screens;
  std::vector<std::string> calls;
  FakeFloatingPanel* panel = nullptr;
  int panelsMade = 0;
  bool hasPanels = true;
  std::optional<HUDWindowController> controller{
      std::in_place,
      HUDWindowController::With{.clock = clock,
                                .mainThread = mainThread,
                                .settings = storage.settings,
                                .screens = screens,
                                .makePanel = [this]() -> std::unique_ptr<FloatingPanel> {
                                  if (!hasPanels) return nullptr;
                                  ++panelsMade;
                                  auto made = std::make_unique<FakeFloatingPanel>(calls);
                                  panel = made.get();
                                  return made;
                                }}};
  HUDWindowController& hud = *controller;
  HUDModel& model = hud.model();
  Spring lastSpring{0, 0};

 private:
  Observation m_observation;
};

TEST_F(HUDWindowControllerTest, TheModelStartsHiddenBelowAMenuBarOf34Points) {
  EXPECT_EQ(model.state, HUDModel::State{});
  EXPECT_FALSE(model.isPresented);
  EXPECT_EQ(model.topInset, 34.0);
  EXPECT_FALSE(model.hasNotch);
  EXPECT_EQ(model.level, 0.0F);
  EXPECT_EQ(model.liveText, QString());
  EXPECT_EQ(panelsMade, 0);
}

TEST_F(HUDWindowControllerTest, ErrorsAreEqualWhenTheirMessagesAre) {
  const HUDModel::State state{Kind::Error, u"a"_s};
  EXPECT_EQ(state, (HUDModel::State{Kind::Error, u"a"_s}));
  EXPECT_NE(state, (HUDModel::State{Kind::Error, u"b"_s}));
  EXPECT_NE(state, HUDModel::State{});
}

TEST_F(HUDWindowControllerTest, ARecordingIsPlacedSetUpShownAndThenPresentedWithASpring) {
  hud.showRecording();
  EXPECT_THAT(takeCalls(),
              ElementsAre("setAlpha 0", "idle", "setFrame", "recording", "setAlpha 1",
                          "orderFrontRegardless", "recording presented with a spring"));
  EXPECT_EQ(lastSpring, (Spring{.response = 0.36, .dampingFraction = 0.74}));
}

TEST_F(HUDWindowControllerTest, ARecordingStartsAtLevelZeroWithoutTextAndFollowsTheMicrophone) {
  hud.setLevel(0.5F);
  model.liveText = u"before"_s;
  hud.showRecording();
  EXPECT_EQ(model.level, 0.0F);
  EXPECT_EQ(model.liveText, QString());
  hud.setLevel(0.25F);
  EXPECT_EQ(model.level, 0.25F);
}

TEST_F(HUDWindowControllerTest,
       ProcessingIsPresentedWithoutAnAnimationOfItsOwnAndKeepsLevelAndText) {
  hud.showRecording();
  hud.setLevel(0.5F);
  model.liveText = u"so far"_s;
  takeCalls();
  hud.showTranscribing();
  EXPECT_THAT(takeCalls(), ElementsAre("recording presented", "setFrame", "transcribing presented",
                                       "setAlpha 1", "orderFrontRegardless"));
  EXPECT_EQ(model.level, 0.5F);
  EXPECT_EQ(model.liveText, u"so far"_s);
}

TEST_F(HUDWindowControllerTest, AnErrorIsSetUpShownAndPresentedWithASpring) {
  model.liveText = u"so far"_s;
  hud.showError(u"No microphone available"_s);
  EXPECT_THAT(takeCalls(), ElementsAre("setAlpha 0", "idle", "setFrame", "error", "setAlpha 1",
                                       "orderFrontRegardless", "error presented with a spring"));
  EXPECT_EQ(lastSpring, (Spring{.response = 0.36, .dampingFraction = 0.74}));
  EXPECT_EQ(model.state, (HUDModel::State{Kind::Error, u"No microphone available"_s}));
  EXPECT_EQ(model.liveText, QString());
}

TEST_F(HUDWindowControllerTest, AnErrorStaysFor2400msAndIsClearedAway350msLater) {
  hud.showError(u"No microphone available"_s);
  takeCalls();
  clock.advance(2400ms - 1ns);
  EXPECT_TRUE(model.isPresented);
  clock.advance(1ns);
  EXPECT_THAT(takeCalls(), ElementsAre("error with a spring"));
  EXPECT_EQ(lastSpring, (Spring{.response = 0.32, .dampingFraction = 0.8}));
  clock.advance(350ms - 1ns);
  EXPECT_THAT(takeCalls(), ElementsAre());
  clock.advance(1ns);
  EXPECT_THAT(takeCalls(), ElementsAre("orderOut", "idle"));
}

TEST_F(HUDWindowControllerTest, ShowErrorWhileAPreviousErrorIsCountingDownRestartsThe2400ms) {
  hud.showError(u"first"_s);
  clock.advance(2s);
  hud.showError(u"second"_s);
  clock.advance(2400ms - 1ns);
  EXPECT_TRUE(model.isPresented);
  EXPECT_EQ(model.state.message, u"second"_s);
  clock.advance(1ns);
  EXPECT_FALSE(model.isPresented);
}

TEST_F(HUDWindowControllerTest,
       HideDuringTheErrors2400msDropsThePendingTaskAndRemovesThePillAtOnce) {
  hud.showError(u"gone"_s);
  clock.advance(1s);
  hud.hide();
  mainThread.drain();
  EXPECT_FALSE(model.isPresented);
  clock.advance(350ms);
  EXPECT_EQ(model.state.kind, Kind::Idle);
  hud.showRecording();
  clock.advance(10s);
  EXPECT_TRUE(model.isPresented);
}

TEST_F(HUDWindowControllerTest, HideRemovesWithASpringAndClears350msLater) {
  hud.showRecording();
  hud.setLevel(0.5F);
  model.liveText = u"so far"_s;
  takeCalls();
  hud.hide();
  clock.advance(350ms - 1ns);
  EXPECT_THAT(takeCalls(), ElementsAre("recording with a spring"));
  EXPECT_EQ(lastSpring, (Spring{.response = 0.32, .dampingFraction = 0.8}));
  EXPECT_EQ(model.level, 0.5F);
  EXPECT_EQ(model.liveText, u"so far"_s);
  clock.advance(1ns);
  EXPECT_THAT(takeCalls(), ElementsAre("orderOut", "idle"));
  EXPECT_EQ(model.level, 0.0F);
  EXPECT_EQ(model.liveText, QString());
}

TEST_F(HUDWindowControllerTest, ShowRecordingInThe350msAfterHideKeepsThePanelUpAndNoIdleFollows) {
  hud.showTranscribing();
  hud.hide();
  clock.advance(350ms - 1ns);
  hud.showRecording();
  takeCalls();
  clock.advance(10s);
  EXPECT_THAT(takeCalls(), ElementsAre());
  EXPECT_TRUE(model.isPresented);
  EXPECT_TRUE(panel->isShown);
  EXPECT_EQ(model.state.kind, Kind::Recording);
}

TEST_F(HUDWindowControllerTest, AShowRightAfterHideLeavesNoTraceOfTheHide) {
  hud.showTranscribing();
  hud.hide();
  hud.showRecording();
  takeCalls();
  clock.advance(10s);
  EXPECT_THAT(takeCalls(), ElementsAre());
}

TEST_F(HUDWindowControllerTest, HidingNowDropsThePillAtOnceAndForGoodAndLeavesTheLevel) {
  hud.showError(u"gone"_s);
  hud.setLevel(0.5F);
  model.liveText = u"so far"_s;
  takeCalls();
  hud.hideNow();
  EXPECT_THAT(takeCalls(), ElementsAre("idle", "orderOut"));
  EXPECT_EQ(model.level, 0.5F);
  EXPECT_EQ(model.liveText, QString());
  clock.advance(10s);
  EXPECT_THAT(takeCalls(), ElementsAre());
}

TEST_F(HUDWindowControllerTest, HidingBeforeTheFirstShowMakesNoPanel) {
  hud.hideNow();
  hud.hide();
  clock.advance(1s);
  EXPECT_EQ(panelsMade, 0);
  EXPECT_EQ(model.state.kind, Kind::Idle);
}

TEST_F(HUDWindowControllerTest, OnePanelServesForAllShowsAndIsInvisibleOnlyBeforeTheFirst) {
  hud.showRecording();
  hud.hideNow();
  takeCalls();
  hud.showError(u"again"_s);
  EXPECT_EQ(panelsMade, 1);
  EXPECT_THAT(takeCalls(), testing::Not(testing::Contains("setAlpha 0")));
}

TEST_F(HUDWindowControllerTest, ThePanelHangsFromTheTopEdgeOfTheMainScreenAtItsMiddle) {
  screens.main = Screen{.frame = {1280, 100, 1920, 1080}, .topStripThickness = 27};
  hud.showRecording();
  EXPECT_EQ(panel->frame, (ScreenRect{1280 + 960 - 230, 100, 460, 160}));
}

TEST_F(HUDWindowControllerTest, OnAScreenWithoutANotchTheTopInsetIsTheStripOfTheDesktopsPanel) {
  screens.main->topStripThickness = 27;
  hud.showRecording();
  EXPECT_FALSE(model.hasNotch);
  EXPECT_EQ(model.topInset, 27);
  EXPECT_EQ(pillTopPadding(model.topInset, model.hasNotch), 37);
}

TEST_F(HUDWindowControllerTest, WithAStripOfThickness0TheTopPaddingIsStill10) {
  screens.main->topStripThickness = 0;
  hud.showRecording();
  EXPECT_EQ(model.topInset, 0);
  EXPECT_EQ(pillTopPadding(model.topInset, model.hasNotch), 10);
}

TEST_F(HUDWindowControllerTest, ACameraHousingIsANotchWhoseHeightIsTheTopInset) {
  screens.main->safeAreaTop = 32;
  hud.showRecording();
  EXPECT_TRUE(model.hasNotch);
  EXPECT_EQ(model.topInset, 32);
  EXPECT_EQ(pillTopPadding(model.topInset, model.hasNotch), 36);
}

TEST_F(HUDWindowControllerTest, WithoutAMainScreenTheFirstOneIsTaken) {
  screens.main.reset();
  screens.all = {Screen{.frame = {0, 0, 800, 600}}, Screen{.frame = {800, 0, 800, 600}}};
  hud.showRecording();
  EXPECT_EQ(panel->frame.x, 400 - 230);
}

TEST_F(HUDWindowControllerTest, WithoutAnyScreenFrameAndInsetsStayAsTheyWere) {
  hud.showRecording();
  const ScreenRect frame = panel->frame;
  screens.main.reset();
  screens.all.clear();
  takeCalls();
  hud.showTranscribing();
  EXPECT_EQ(panel->frame, frame);
  EXPECT_EQ(model.topInset, 24);
  EXPECT_THAT(takeCalls(),
              ElementsAre("transcribing presented", "setAlpha 1", "orderFrontRegardless"));
}

TEST_F(HUDWindowControllerTest, ChangingScreensWhileThePillIsUpMovesItAtTheNotification) {
  hud.showRecording();
  screens.main = Screen{.frame = {0, 0, 1920, 1080}, .safeAreaTop = 32};
  EXPECT_EQ(panel->frame.x, 640 - 230);
  screens.changed.notify();
  mainThread.drain();
  EXPECT_EQ(panel->frame.x, 960 - 230);
  EXPECT_TRUE(model.hasNotch);
  EXPECT_EQ(model.topInset, 32);
}

TEST_F(HUDWindowControllerTest, WithoutAPanelTheModelGoesItsWay) {
  hasPanels = false;
  hud.showError(u"unseen"_s);
  EXPECT_EQ(model.topInset, 34);
  EXPECT_TRUE(model.isPresented);
  clock.advance(2750ms);
  EXPECT_EQ(model.state.kind, Kind::Idle);
  hud.hideNow();
}

TEST_F(HUDWindowControllerTest, WhatIsPendingEndsWithTheController) {
  hud.showError(u"pending"_s);
  screens.changed.notify();
  mainThread.drain();
  takeCalls();
  screens.changed.notify();
  controller.reset();
  clock.advance(10s);
  screens.changed.notify();
  mainThread.drain();
  EXPECT_THAT(takeCalls(), ElementsAre());
  EXPECT_EQ(clock.sleeperCount(), 0U);
}

}  // namespace
}  // namespace vemo
