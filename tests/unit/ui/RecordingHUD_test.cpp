#include "ui/RecordingHUD.h"

#include <gtest/gtest.h>

#include "FixedTextMetrics.h"
#include "fakes/FakeClock.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using Kind = HUDModel::State::Kind;

class RecordingHUDTest : public testing::Test {
 protected:
  void set(Kind kind, const QString& message = {}) {
    model.state = {kind, message};
    model.changed.notify({});
  }
  void present(bool isPresented, std::optional<Motion> motion = {}) {
    model.isPresented = isPresented;
    model.changed.notify(motion);
  }
  void showSettled(Kind kind, const QString& message = {}) {
    set(kind, message);
    present(true);
    clock.advance(5s);
  }

  PillPicture picture() const { return hud.picture(clock.monotonicTime()); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FixedTextMetrics metrics;
  HUDModel model;
  RecordingHUD hud{model, storage.settings, clock, metrics};
};

TEST_F(RecordingHUDTest, HiddenThereIsNothingToShowAndNoFrameIsNeeded) {
  EXPECT_TRUE(picture().isEmpty());
  EXPECT_FALSE(hud.needsFrames());
  set(Kind::Recording);
  EXPECT_TRUE(picture().isEmpty());
  EXPECT_FALSE(hud.needsFrames());
}

TEST_F(RecordingHUDTest, ThePillStandsInTheMiddleBelowTheStrip) {
  model.topInset = 24;
  showSettled(Kind::Recording);
  const auto seen = picture();
  EXPECT_EQ(seen.pill, (ScreenRect{178, 34, 104, 38}));
  EXPECT_EQ(seen.cornerRadius, 100);
  EXPECT_NEAR(seen.scale, 1, 1e-6);
  EXPECT_NEAR(seen.offset, 0, 1e-4);
  EXPECT_NEAR(seen.opacity, 1, 1e-6);
  ASSERT_EQ(seen.contents.size(), 1U);
  EXPECT_EQ(seen.contents[0].layout.waveform, (ScreenRect{194, 44, 72, 18}));
  EXPECT_EQ(seen.contents[0].opacity, 1);
}

TEST_F(RecordingHUDTest, InsertionComesFromAboveSmallAndTransparentAlongTheGivenSpring) {
  set(Kind::Recording);
  const Spring spring{.response = 0.36, .dampingFraction = 0.74};
  present(true, spring);
  auto seen = picture();
  EXPECT_EQ(seen.scale, 0.88);
  EXPECT_EQ(seen.offset, -12);
  EXPECT_EQ(seen.opacity, 0);
  clock.advance(100ms);
  seen = picture();
  const double presence = 1 - springAt(spring, 0, 0.1).value;
  EXPECT_NEAR(seen.opacity, presence, 1e-9);
  EXPECT_NEAR(seen.scale, 0.88 + 0.12 * presence, 1e-9);
  EXPECT_NEAR(seen.offset, -12 + 12 * presence, 1e-9);
  EXPECT_FALSE(seen.isLeaving);
}

TEST_F(RecordingHUDTest, OvershootingThePillIsLargerThanAtRestButNotMoreThanOpaque) {
  set(Kind::Recording);
  present(true);
  clock.advance(250ms);
  EXPECT_GT(picture().scale, 1);
  EXPECT_EQ(picture().opacity, 1);
}

TEST_F(RecordingHUDTest, WithoutAnAnimationOfTheChangeTheViewsOwnSpringPresentsThePill) {
  set(Kind::Transcribing);
  present(true);
  clock.advance(100ms);
  EXPECT_NEAR(picture().opacity, 1 - springAt({0.36, 0.74}, 0, 0.1).value, 1e-9);
}

TEST_F(RecordingHUDTest, RemovalGoesTheSameWayBackUntilNothingIsLeft) {
  showSettled(Kind::Recording);
  const Spring spring{.response = 0.32, .dampingFraction = 0.8};
  present(false, spring);
  clock.advance(100ms);
  EXPECT_NEAR(picture().opacity, springAt(spring, 0, 0.1).value, 1e-9);
  EXPECT_TRUE(picture().isLeaving);
  clock.advance(5s);
  EXPECT_TRUE(picture().isEmpty());
  EXPECT_FALSE(hud.needsFrames());
}

TEST_F(RecordingHUDTest, IdleAndNotPresentedNothingIsLeftAtOnce) {
  showSettled(Kind::Recording);
  int changes = 0;
  const auto observation = hud.changed.observe([&] { ++changes; });
  model.state = {};
  model.isPresented = false;
  model.changed.notify({});
  EXPECT_TRUE(picture().isEmpty());
  EXPECT_EQ(changes, 1);
}

TEST_F(RecordingHUDTest, ANotchChangesThePaddingAtOnceAndTheNextTransition) {
  model.topInset = 24;
  set(Kind::Recording);
  present(true);
  model.hasNotch = true;
  model.topInset = 32;
  model.changed.notify({});
  EXPECT_EQ(picture().pill.y, 36);
  EXPECT_EQ(picture().scale, 0.88);
  clock.advance(5s);
  present(false);
  clock.advance(100ms);
  const double left = picture().opacity;
  EXPECT_NEAR(picture().scale, 0.75 + 0.25 * left, 1e-9);
  EXPECT_NEAR(picture().offset, -40 + 40 * left, 1e-9);
}

TEST_F(RecordingHUDTest, AnotherStateResizesThePillAndExchangesItsContentsAlongTheStatesSpring) {
  showSettled(Kind::Recording);
  set(Kind::Error, u"0123456789"_s);
  clock.advance(100ms);
  const double part = 1 - springAt({0.3, 0.8}, 0, 0.1).value;
  const auto seen = picture();
  EXPECT_NEAR(seen.pill.width, 104 + (116 - 104) * part, 1e-9);
  EXPECT_NEAR(seen.pill.height, 38 + (34 - 38) * part, 1e-9);
  EXPECT_NEAR(seen.pill.midX(), 230, 1e-9);
  ASSERT_EQ(seen.contents.size(), 2U);
  EXPECT_NEAR(seen.contents[0].opacity, 1 - part, 1e-9);
  EXPECT_FALSE(seen.contents[0].waveform.bars.empty());
  EXPECT_NEAR(seen.contents[1].opacity, part, 1e-9);
  EXPECT_EQ(seen.contents[1].message, u"0123456789"_s);
}

TEST_F(RecordingHUDTest, ContentStandsInTheMiddleOfAPillThatIsStillResizing) {
  showSettled(Kind::Recording);
  set(Kind::Error, u"0123456789"_s);
  const auto seen = picture();
  const auto& layout = seen.contents[1].layout;
  EXPECT_EQ(layout.symbol.x, 230 - 116 / 2.0 + 16);
  EXPECT_EQ(layout.message.y, seen.pill.y + (38 - 34) / 2.0 + 10);
}

TEST_F(RecordingHUDTest, AStateThatIsSetWhileHiddenIsThereWholeAtTheNextShow) {
  showSettled(Kind::Recording);
  model.state = {};
  model.isPresented = false;
  model.changed.notify({});
  set(Kind::Error, u"0123456789"_s);
  present(true);
  const auto seen = picture();
  EXPECT_EQ(seen.pill.width, 116);
  ASSERT_EQ(seen.contents.size(), 1U);
  EXPECT_EQ(seen.contents[0].opacity, 1);
}

TEST_F(RecordingHUDTest, ManyQuickChangesLeaveFewContentsFading) {
  showSettled(Kind::Recording);
  for (int i = 0; i < 50; ++i) {
    set(Kind::Error, QString::number(i));
    clock.advance(1ms);
  }
  EXPECT_LE(picture().contents.size(), 3U);
}

TEST_F(RecordingHUDTest, LiveTextEasesInFor150msAndMakesTheCapsuleARoundedRectangle) {
  showSettled(Kind::Recording);
  model.liveText = QString(40, u'x');
  model.changed.notify({});
  clock.advance(75ms);
  auto seen = picture();
  EXPECT_NEAR(seen.cornerRadius, 58, 0.1);
  EXPECT_NEAR(seen.pill.width, (104 + 252) / 2.0, 0.2);
  EXPECT_NEAR(seen.contents[0].liveTextOpacity, 0.5, 1e-3);
  clock.advance(75ms);
  seen = picture();
  EXPECT_EQ(seen.cornerRadius, 16);
  EXPECT_EQ(seen.pill.width, 252);
  EXPECT_EQ(seen.contents[0].liveTextOpacity, 1);
  EXPECT_EQ(seen.contents[0].liveText, model.liveText);
}

TEST_F(RecordingHUDTest, LiveTextFadesOutAsItWasWhenItGoes) {
  showSettled(Kind::Recording);
  model.liveText = u"so far"_s;
  model.changed.notify({});
  clock.advance(5s);
  model.liveText.clear();
  model.changed.notify({});
  clock.advance(75ms);
  EXPECT_EQ(picture().contents[0].liveText, u"so far"_s);
  EXPECT_NEAR(picture().contents[0].liveTextOpacity, 0.5, 1e-3);
  clock.advance(75ms);
  EXPECT_EQ(picture().contents[0].liveText, QString());
  EXPECT_EQ(picture().pill.width, 104);
}

TEST_F(RecordingHUDTest, MoreLiveTextResizesThePillAtOnce) {
  showSettled(Kind::Recording);
  model.liveText = QString(40, u'x');
  model.changed.notify({});
  clock.advance(5s);
  model.liveText += QString(4, u'x');
  model.changed.notify({});
  EXPECT_EQ(picture().pill.width, 44 * 5.5 + 32);
}

TEST_F(RecordingHUDTest, TheWaveformFollowsTheLevelAndTheTimeSince2001) {
  showSettled(Kind::Recording);
  model.level = 0.4F;
  model.changed.notify({});
  const double seconds =
      std::chrono::duration<double>(clock.wallTime() -
                                    std::chrono::sys_days{std::chrono::year{2001} / 1 / 1})
          .count();
  const VemoWaveform waveform{.mode = VemoWaveform::Active{0.4F}, .theme = u"dark"_s};
  EXPECT_EQ(picture().contents[0].waveform, waveform.drawing(72, 18, seconds));
  set(Kind::Transcribing);
  clock.advance(5s);
  const VemoWaveform sweep{.mode = VemoWaveform::Processing{}, .theme = u"dark"_s};
  EXPECT_EQ(picture().contents[0].waveform, sweep.drawing(72, 18, seconds + 5));
}

TEST_F(RecordingHUDTest, AChangeOfThePillColourRecoloursAnOpenPillWithin200ms) {
  showSettled(Kind::Recording);
  const PillColors dark = picture().colors;
  storage.settings.set(keys::dictationPillColor, u"light"_s);
  EXPECT_EQ(picture().colors, dark);
  clock.advance(100ms);
  const PillColors& light = pillTheme(u"light"_s).pill;
  EXPECT_NEAR(picture().colors.fill.red, (dark.fill.red + light.fill.red) / 2, 1e-3);
  EXPECT_NEAR(picture().colors.text.green, (1 + light.text.green) / 2, 1e-3);
  clock.advance(100ms);
  EXPECT_EQ(picture().colors, light);
}

TEST_F(RecordingHUDTest, AnUnknownDictationPillColorValueDrawsAsDark) {
  storage.settings.set(keys::dictationPillColor, u"ultraviolet"_s);
  showSettled(Kind::Recording);
  EXPECT_EQ(picture().colors, pillTheme(u"dark"_s).pill);
}

TEST_F(RecordingHUDTest, FramesAreNeededForAsLongAsAWaveformIsShownOrSomethingMoves) {
  showSettled(Kind::Recording);
  EXPECT_TRUE(hud.needsFrames());
  set(Kind::Error, u"still"_s);
  EXPECT_TRUE(hud.needsFrames());
  clock.advance(2s);
  EXPECT_FALSE(hud.needsFrames());
  storage.settings.set(keys::dictationPillColor, u"teal"_s);
  EXPECT_TRUE(hud.needsFrames());
  clock.advance(2s);
  EXPECT_FALSE(hud.needsFrames());
}

}  // namespace
}  // namespace vemo
