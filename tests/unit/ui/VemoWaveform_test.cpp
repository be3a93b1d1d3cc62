#include "ui/VemoWaveform.h"

#include <gtest/gtest.h>

#include <limits>

#include "WaveformFormulas.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

WaveformDrawing active(float level, double time = 0, const QString& theme = u"dark"_s,
                       double width = 72, double height = 18) {
  return VemoWaveform{.mode = VemoWaveform::Active{level}, .theme = theme}.drawing(width, height,
                                                                                   time);
}

WaveformDrawing processing(double time, const QString& theme = u"dark"_s, double width = 72,
                           double height = 18) {
  return VemoWaveform{.mode = VemoWaveform::Processing{}, .theme = theme}.drawing(width, height,
                                                                                  time);
}

double tallest(const WaveformDrawing& drawing) {
  return std::ranges::max(drawing.bars, {}, &WaveformBar::height).height;
}

void expectColor(const Color& color, const formulas::Rgb& rgb, formulas::Real opacity) {
  EXPECT_NEAR(color.red, double(rgb.r), 2e-6);
  EXPECT_NEAR(color.green, double(rgb.g), 2e-6);
  EXPECT_NEAR(color.blue, double(rgb.b), 2e-6);
  EXPECT_NEAR(color.opacity, double(opacity), 2e-6);
}

void expectPlace(const WaveformBar& bar, const formulas::Bar& expected, formulas::Real height) {
  EXPECT_NEAR(bar.x, double(expected.left()), 1e-9);
  EXPECT_NEAR(bar.width, double(expected.width()), 1e-9);
  EXPECT_NEAR(bar.cornerRadius, double(expected.width() / 2), 1e-9);
  // The larger the time, the fewer digits its sine has.
  EXPECT_NEAR(bar.height, double(height), 1e-5);
  EXPECT_NEAR(bar.y, double((expected.h - height) / 2), 1e-5);
}

TEST(VemoWaveformTest, AtLevel0EveryBarIs2HighAndTheGlowHasOpacity0) {
  const auto drawing = active(0);
  ASSERT_EQ(drawing.bars.size(), 21U);
  ASSERT_EQ(drawing.glow.size(), 21U);
  for (const auto& bar : drawing.bars) {
    EXPECT_NEAR(bar.width, 1.885714, 1e-6);
    EXPECT_EQ(bar.height, 2.0);
    EXPECT_EQ(bar.y, 8.0);
    EXPECT_EQ(bar.color.opacity, 1);
  }
  for (const auto& bar : drawing.glow) EXPECT_EQ(bar.color.opacity, 0);
}

TEST(VemoWaveformTest, ALevelOf003IsBelowTheFloorAndShowsFlatBars) {
  EXPECT_EQ(active(0.03F, 1.5), active(0, 1.5));
}

TEST(VemoWaveformTest, TheFloorIsAtALevelOf006Over19) {
  EXPECT_EQ(active(0.0315F), active(0));
  const auto justAbove = active(0.0317F);
  EXPECT_GT(justAbove.glow.front().color.opacity, 0);
}

TEST(VemoWaveformTest, ALevelOf06IsFullEnergy) {
  EXPECT_EQ(active(0.6F, 1.5), active(1, 1.5));
  EXPECT_DOUBLE_EQ(active(0.6F).glow.front().color.opacity, 0.4);
  EXPECT_LT(active(0.52F).glow.front().color.opacity, 0.4);
}

TEST(VemoWaveformTest, ATallBarHasTheRowsHeightAndNotMore) {
  bool anyIsFull = false;
  for (double time = 0; time < 1; time += 0.01) {
    const double height = tallest(active(1, time));
    EXPECT_LE(height, 18.0);
    anyIsFull = anyIsFull || height == 18.0;
  }
  EXPECT_TRUE(anyIsFull);
}

TEST(VemoWaveformTest, ATallBarHasTheMinimumHeightWhereThatIsMoreThanTheRows) {
  EXPECT_EQ(tallest(active(1, 0.35, u"dark"_s, 72, 1)), 2.0);
  EXPECT_EQ(tallest(processing(0.35, u"dark"_s, 72, 1)), 1.5);
}

TEST(VemoWaveformTest, BarsAreAtMost5WideTimesTheScale) {
  EXPECT_EQ(active(0, 0, u"dark"_s, 2100).bars.front().width, 5.0);
  const auto scaled =
      VemoWaveform{.mode = VemoWaveform::Active{0}, .theme = u"dark"_s, .barScale = 0.5}.drawing(
          2100, 18, 0);
  EXPECT_EQ(scaled.bars.front().width, 2.5);
  EXPECT_EQ(scaled.bars.front().height, 2.5);
}

TEST(VemoWaveformTest, NothingIsDrawnOnACanvasWithoutArea) {
  EXPECT_EQ(active(1, 0, u"dark"_s, 0, 18), WaveformDrawing{});
  EXPECT_EQ(active(1, 0, u"dark"_s, 72, 0), WaveformDrawing{});
  EXPECT_EQ(processing(0, u"dark"_s, -1, 18), WaveformDrawing{});
  EXPECT_EQ(processing(0, u"dark"_s, 72, std::numeric_limits<double>::quiet_NaN()),
            WaveformDrawing{});
}

TEST(VemoWaveformTest, ALevelThatIsNoLevelDrawsFlatOrFullBars) {
  EXPECT_EQ(active(-1), active(0));
  EXPECT_EQ(active(std::numeric_limits<float>::quiet_NaN()), active(0));
  EXPECT_EQ(active(std::numeric_limits<float>::infinity()), active(1));
}

TEST(VemoWaveformTest, AnUnknownThemeDrawsAsDark) {
  EXPECT_EQ(active(0.3F, 1, u"mauve"_s), active(0.3F, 1, u"dark"_s));
  EXPECT_EQ(processing(1, QString()), processing(1, u"dark"_s));
  EXPECT_NE(active(0.3F, 1, u"light"_s), active(0.3F, 1, u"dark"_s));
  EXPECT_NE(active(0.3F, 1, u"Teal"_s), active(0.3F, 1, u"teal"_s));
}

TEST(VemoWaveformTest, TheLightSweepsFromOutsideTheRowToOutsideInSome222Seconds) {
  const auto brightest = [](double time) {
    const auto drawing = processing(time);
    return std::ranges::max_element(drawing.bars, {},
                                    [](const auto& bar) { return bar.color.opacity; }) -
           drawing.bars.begin();
  };
  EXPECT_EQ(brightest(0), 0);
  EXPECT_EQ(brightest(0.5 / 0.45), 10);
  EXPECT_EQ(brightest(0.999 / 0.45), 20);
  EXPECT_EQ(brightest(1.001 / 0.45), 0);
  EXPECT_NEAR(processing(0.5 / 0.45).bars[10].color.opacity, 1.0, 1e-9);
}

TEST(VemoWaveformTest, OnlyBarsInTheLightGlowWhileProcessing) {
  const auto drawing = processing(0.5 / 0.45);
  EXPECT_EQ(drawing.glow.size(), 9U);
  for (const auto& bar : drawing.glow) EXPECT_GT(bar.color.opacity, 0.15);
}

TEST(VemoWaveformTest, TheGlowIsBlurredByAPartOfTheHeightAndAtLeastBy2) {
  EXPECT_EQ(active(1).glowBlurRadius, 2.0);
  EXPECT_EQ(active(1, 0, u"dark"_s, 72, 40).glowBlurRadius, 4.0);
  EXPECT_NEAR(processing(1).glowBlurRadius, 2.7, 1e-12);
  EXPECT_EQ(processing(1, u"dark"_s, 72, 10).glowBlurRadius, 2.0);
}

struct GridPoint {
  double time, width, height;
  std::string theme;
};

std::vector<GridPoint> grid() {
  std::vector<GridPoint> points;
  for (const double time : {-3.7, 0.0, 0.4, 1.0, 2.2, 2.23, 17.9, 815414400.25})
    for (const auto& [width, height] :
         {std::pair{72.0, 18.0}, std::pair{10.0, 3.0}, std::pair{400.0, 60.0}})
      for (const char* theme : {"dark", "teal", "light", "other"})
        points.push_back({time, width, height, theme});
  return points;
}

TEST(VemoWaveformTest, FollowingTheMicrophoneItAgreesWithASecondEvaluation) {
  for (const auto& [time, width, height, theme] : grid()) {
    for (const float level : {0.0F, 0.031F, 0.032F, 0.1F, 0.25F, 0.5F, 0.526F, 0.527F, 1.0F}) {
      SCOPED_TRACE(testing::Message() << time << " " << width << " " << theme << " " << level);
      const auto drawing = active(level, time, QString::fromStdString(theme), width, height);
      const auto colors = formulas::themeRow(theme);
      EXPECT_NEAR(drawing.glowBlurRadius, std::fmax(height / 10, 2), 1e-12);
      ASSERT_EQ(drawing.bars.size(), 21U);
      ASSERT_EQ(drawing.glow.size(), 21U);
      for (int i = 0; i < 21; ++i) {
        const formulas::Bar bar{formulas::Real(i), width, height, time};
        expectPlace(drawing.bars[i], bar, bar.activeHeight(level));
        expectPlace(drawing.glow[i], bar, bar.activeHeight(level));
        expectColor(drawing.bars[i].color, bar.activeColor(colors), 1);
        expectColor(drawing.glow[i].color, colors.bright, 0.4L * formulas::Bar::energy(level));
      }
    }
  }
}

TEST(VemoWaveformTest, ProcessingItAgreesWithASecondEvaluation) {
  for (const auto& [time, width, height, theme] : grid()) {
    SCOPED_TRACE(testing::Message() << time << " " << width << " " << theme);
    const auto drawing = processing(time, QString::fromStdString(theme), width, height);
    const auto colors = formulas::themeRow(theme);
    EXPECT_NEAR(drawing.glowBlurRadius, std::fmax(height * 0.15, 2), 1e-12);
    ASSERT_EQ(drawing.bars.size(), 21U);
    auto glowing = drawing.glow.begin();
    for (int i = 0; i < 21; ++i) {
      const formulas::Bar bar{formulas::Real(i), width, height, time};
      expectPlace(drawing.bars[i], bar, bar.processingHeight());
      expectColor(drawing.bars[i].color, bar.processingColor(colors), 0.7L + 0.3L * bar.light());
      if (bar.light() <= 0.15L) continue;
      ASSERT_NE(glowing, drawing.glow.end());
      expectPlace(*glowing, bar, bar.processingHeight());
      expectColor(glowing->color, colors.bright, bar.light());
      ++glowing;
    }
    EXPECT_EQ(glowing, drawing.glow.end());
  }
}

}  // namespace
}  // namespace vemo
