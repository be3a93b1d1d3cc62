#include "ui/HUDView.h"

#include <gmock/gmock.h>

#include "UiFixture.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFloatingPanel.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using Kind = HUDModel::State::Kind;

class HUDViewTest : public UiFixture {
 protected:
  HUDViewTest() { panel.setFrame({0, 0, 460, 160}, Screen{}); }

  void show(Kind kind, const QString& message = {}) {
    model.state = {kind, message};
    model.isPresented = true;
    model.changed.notify({});
  }
  void clear() {
    model.state = {};
    model.isPresented = false;
    model.changed.notify({});
  }
  /// Frames until nothing moves, or for some seconds.
  int beatUntilStill() {
    return panel.beatUntilStill([this] { clock.advance(16'666'667ns); });
  }
  bool isCovered() const { return panel.pixel(230, 63) >> 24 > 0; }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  std::vector<std::string> calls;
  FakeFloatingPanel panel{calls};
  HUDModel model;
  HUDView view{panel, model, storage.settings, clock};
};

TEST_F(HUDViewTest, HiddenNoFrameIsAskedFor) {
  EXPECT_FALSE(panel.isAnimating);
  model.level = 0.5F;
  model.changed.notify({});
  EXPECT_FALSE(panel.isAnimating);
}

TEST_F(HUDViewTest, TheFirstFrameOfAPillThatFadesInCanBeSeen) {
  show(Kind::Recording);
  EXPECT_FALSE(isCovered());
  panel.beat();
  EXPECT_TRUE(isCovered());
}

TEST_F(HUDViewTest, AnErrorIsDrawnUntilItStandsStillAndCostsNothingFromThenOn) {
  show(Kind::Error, u"No microphone available"_s);
  const int frames = beatUntilStill();
  EXPECT_GT(frames, 10);
  EXPECT_LT(frames, 60);
  EXPECT_TRUE(isCovered());
  EXPECT_FALSE(panel.isAnimating);
}

TEST_F(HUDViewTest, AWaveformIsDrawnAtEachFrameInItsOwnPlaceOnly) {
  show(Kind::Transcribing);
  for (int i = 0; i < 120; ++i) {
    panel.beat();
    clock.advance(16'666'667ns);
  }
  EXPECT_TRUE(panel.isAnimating);
  panel.presented.clear();
  panel.beat();
  ASSERT_EQ(panel.presented.size(), 1U);
  EXPECT_LT(panel.presented[0].width, 90);
  EXPECT_LT(panel.presented[0].height, 36);
}

TEST_F(HUDViewTest, AFrameThatLooksLikeTheLastIsNotPresented) {
  show(Kind::Recording);
  for (int i = 0; i < 120; ++i) {
    panel.beat();
    clock.advance(16'666'667ns);
  }
  panel.presented.clear();
  panel.beat();
  EXPECT_THAT(panel.presented, testing::IsEmpty());
  EXPECT_TRUE(panel.isAnimating);
}

TEST_F(HUDViewTest, GoneThePillLeavesEmptyPixelsAndNoFrames) {
  show(Kind::Recording);
  clock.advance(2s);
  panel.beat();
  EXPECT_TRUE(isCovered());
  clear();
  EXPECT_FALSE(isCovered());
  EXPECT_FALSE(panel.isAnimating);
}

TEST_F(HUDViewTest, AnErrorThatStoodStillLeavesEmptyPixelsToo) {
  show(Kind::Error, u"still"_s);
  beatUntilStill();
  clear();
  EXPECT_FALSE(isCovered());
  EXPECT_FALSE(panel.isAnimating);
}

TEST_F(HUDViewTest, ACompositorThatGoesOrComesRedrawsAll) {
  show(Kind::Error, u"still"_s);
  beatUntilStill();
  const std::uint32_t shadow = panel.pixel(230, 86) >> 24;
  EXPECT_GT(shadow, 0U);
  panel.presented.clear();
  panel.setTranslucent(false);
  beatUntilStill();
  EXPECT_EQ(panel.presented.front(), (PixelRect{0, 0, 460, 160}));
  EXPECT_EQ(panel.pixel(230, 86), 0U);
  panel.setTranslucent(true);
  beatUntilStill();
  EXPECT_EQ(panel.pixel(230, 86) >> 24, shadow);
}

TEST_F(HUDViewTest, LiveTextIsToldToScreenReaders) {
  model.liveText = u"so far"_s;
  show(Kind::Recording);
  EXPECT_EQ(view.spoken().liveText(), u"so far"_s);
  model.liveText.clear();
  clear();
  EXPECT_EQ(view.spoken().liveText(), QString());
}

TEST_F(HUDViewTest, APanelOfAnotherScaleIsDrawnAnew) {
  show(Kind::Error, u"still"_s);
  beatUntilStill();
  panel.setFrame({0, 0, 460, 160}, Screen{.frame = {}, .scale = 2});
  model.changed.notify({});
  beatUntilStill();
  EXPECT_GT(panel.pixel(460, 120) >> 24, 0U);
}

}  // namespace
}  // namespace vemo
