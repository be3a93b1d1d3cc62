#include "ui/PillPainter.h"

#include <gmock/gmock.h>

#include <cmath>
#include <vector>

#include "UiFixture.h"
#include "ui/AlphaBlur.h"
#include "ui/PillShapes.h"
#include "ui/PillText.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class PillPainterTest : public UiFixture {
 protected:
  /// A pill of 104 by 38 at (178, 34), as it stands while recording.
  static PillPicture picture(const QString& theme = u"dark"_s) {
    PillPicture picture;
    picture.pill = {178, 34, 104, 38};
    picture.cornerRadius = 100;
    picture.colors = pillTheme(theme).pill;
    return picture;
  }
  static PillPicture waveformPicture(VemoWaveform::Mode mode) {
    PillPicture withBars = picture();
    PillPicture::Content content;
    content.layout.size = {104, 38};
    content.layout.waveform = {194, 44, 72, 18};
    content.waveform = VemoWaveform{.mode = mode, .theme = u"dark"_s}.drawing(72, 18, 1.0);
    withBars.contents = {content};
    return withBars;
  }

  QImage paint(const PillPicture& shown, Ground ground = Ground::Translucent, double scale = 1) {
    const int width = int(460 * scale);
    const int height = int(160 * scale);
    memory.assign(std::size_t(width) * height, 0xFFFF00FF);
    painter.paint({memory, width, height, scale}, shown, ground, QRect(0, 0, width, height));
    return QImage(reinterpret_cast<uchar*>(memory.data()), width, height,
                  QImage::Format_ARGB32_Premultiplied)
        .copy();
  }

  static void expectNear(QColor actual, const Color& expected, double tolerance = 0.012) {
    EXPECT_NEAR(actual.redF(), expected.red, tolerance);
    EXPECT_NEAR(actual.greenF(), expected.green, tolerance);
    EXPECT_NEAR(actual.blueF(), expected.blue, tolerance);
  }

  PillText text{u"DejaVu Sans"_s};
  PillPainter painter{text};
  std::vector<std::uint32_t> memory;
};

TEST_F(PillPainterTest, NothingPresentedClearsThePixels) {
  const QImage image = paint({});
  EXPECT_EQ(image.pixel(0, 0), 0U);
  EXPECT_EQ(image.pixel(230, 53), 0U);
}

TEST_F(PillPainterTest, OnOpaqueGroundThePillHasItsFillInsideAndNothingOutside) {
  for (const char16_t* theme : {u"dark", u"teal", u"light"}) {
    const PillPicture shown = picture(QString::fromUtf16(theme));
    const QImage image = paint(shown, Ground::Opaque);
    expectNear(image.pixelColor(230, 53), shown.colors.fill);
    EXPECT_NEAR(image.pixelColor(230, 53).alphaF(), shown.colors.fill.opacity, 0.01);
    EXPECT_EQ(image.pixelColor(230, 32).alpha(), 0);
    EXPECT_EQ(image.pixelColor(230, 73).alpha(), 0);
    EXPECT_EQ(image.pixelColor(179, 35).alpha(), 0);
  }
}

TEST_F(PillPainterTest, TheStrokeLiesInsideTheEdge) {
  const PillPicture shown = picture(u"teal"_s);
  const QImage image = paint(shown, Ground::Opaque);
  const Color onFill = mixed(shown.colors.fill, shown.colors.stroke, shown.colors.stroke.opacity);
  expectNear(image.pixelColor(230, 34), onFill, 0.02);
  expectNear(image.pixelColor(230, 71), onFill, 0.02);
  expectNear(image.pixelColor(230, 36), shown.colors.fill);
}

TEST_F(PillPainterTest, TheShadowIsBlackAndLies6PointsBelow) {
  const QImage image = paint(picture());
  const auto alphaAt = [&](int x, int y) { return image.pixelColor(x, y).alphaF(); };
  EXPECT_EQ(image.pixelColor(230, 76).rgb() & 0xFFFFFF, 0U);
  EXPECT_GT(alphaAt(230, 76), 0.15);
  EXPECT_LT(alphaAt(230, 76), 0.38);
  // Twelve points further from the edge than 6 below, which is where the shadow's own edge is.
  EXPECT_NEAR(alphaAt(230, 78), 0.38 / 2, 0.03);
  EXPECT_GT(alphaAt(230, 76), alphaAt(230, 30));
  EXPECT_EQ(alphaAt(230, 110), 0);
  EXPECT_EQ(alphaAt(150, 53), 0);
}

TEST_F(PillPainterTest, OpacityFadesPillAndShadowTogether) {
  PillPicture shown = picture();
  shown.opacity = 0.5;
  const QImage image = paint(shown);
  const QImage whole = paint(picture());
  for (const int y : {53, 76, 80})
    EXPECT_NEAR(image.pixelColor(230, y).alpha(), whole.pixelColor(230, y).alpha() / 2.0, 1.5);
}

TEST_F(PillPainterTest, OnOpaqueGroundAPillIsThereAtOnceAndGoneHalfWayOut) {
  PillPicture shown = picture();
  shown.opacity = 0.1;
  EXPECT_GT(paint(shown, Ground::Opaque).pixelColor(230, 53).alphaF(), 0.9);
  shown.isLeaving = true;
  EXPECT_EQ(paint(shown, Ground::Opaque).pixelColor(230, 53).alpha(), 0);
  shown.opacity = 0.5;
  EXPECT_GT(paint(shown, Ground::Opaque).pixelColor(230, 53).alphaF(), 0.9);
}

TEST_F(PillPainterTest, TheTransitionScalesFromTheTopAndMoves) {
  PillPicture shown = picture();
  shown.scale = 0.5;
  shown.offset = -10;
  const QImage image = paint(shown, Ground::Opaque);
  EXPECT_EQ(image.pixelColor(230, 22).alpha(), 0);
  EXPECT_GT(image.pixelColor(230, 25).alpha(), 200);
  EXPECT_GT(image.pixelColor(230, 41).alpha(), 200);
  EXPECT_EQ(image.pixelColor(230, 45).alpha(), 0);
  EXPECT_EQ(image.pixelColor(202, 34).alpha(), 0);
  EXPECT_GT(image.pixelColor(207, 34).alpha(), 200);
}

TEST_F(PillPainterTest, AtTwiceTheScaleEverythingIsTwiceAsLarge) {
  const QImage image = paint(picture(), Ground::Opaque, 2);
  EXPECT_EQ(image.pixelColor(460, 66).alpha(), 0);
  EXPECT_GT(image.pixelColor(460, 69).alpha(), 200);
  EXPECT_GT(image.pixelColor(460, 142).alpha(), 200);
  EXPECT_EQ(image.pixelColor(460, 145).alpha(), 0);
}

TEST_F(PillPainterTest, TheBarsStandWhereTheDrawingSays) {
  const PillPicture shown = waveformPicture(VemoWaveform::Active{0});
  const QImage image = paint(shown);
  const auto& bar = shown.contents[0].waveform.bars[10];
  const QImage empty = paint(picture());
  const int column = int(194 + bar.x + bar.width / 2);
  EXPECT_NE(image.pixelColor(column, 53), empty.pixelColor(column, 53));
  EXPECT_EQ(image.pixelColor(column, 50), empty.pixelColor(column, 50));
  EXPECT_GT(image.pixelColor(column, 53).blueF(), 0.5);
}

TEST_F(PillPainterTest, LoudSpeechGlowsBeyondItsBars) {
  PillPicture shown = waveformPicture(VemoWaveform::Active{1});
  const QImage glowing = paint(shown);
  shown.contents[0].waveform.glow.clear();
  const QImage plain = paint(shown);
  const auto& bars = shown.contents[0].waveform.bars;
  const int between = int(194 + (bars[10].x + bars[10].width + bars[11].x) / 2);
  EXPECT_GT(glowing.pixelColor(between, 53).blue(), plain.pixelColor(between, 53).blue() + 20);
}

TEST_F(PillPainterTest, WhatLiesOutsideTheChangedPartStaysAsItIs) {
  const PillPicture shown = waveformPicture(VemoWaveform::Processing{});
  paint(shown);
  const auto whole = memory;
  memory.assign(whole.size(), 0x12345678);
  const QRect changed = PillPainter::waveformBounds(shown, 1);
  painter.paint({memory, 460, 160, 1}, shown, Ground::Translucent, changed);
  for (std::size_t i = 0; i < memory.size(); ++i) {
    const bool isChanged = changed.contains(int(i % 460), int(i / 460));
    ASSERT_EQ(memory[i], isChanged ? whole[i] : 0x12345678U) << i % 460 << " " << i / 460;
  }
}

TEST_F(PillPainterTest, NothingIsDrawnOutsideTheBounds) {
  PillPicture shown = waveformPicture(VemoWaveform::Active{1});
  for (const double scale : {0.88, 0.95, 1.0, 1.04}) {
    shown.scale = scale;
    shown.offset = (scale - 1) * 100;
    const QImage image = paint(shown);
    const QRect bounds = PillPainter::bounds(shown, 1);
    for (int y = 0; y < 160; ++y)
      for (int x = 0; x < 460; ++x) {
        if (!bounds.contains(x, y)) ASSERT_EQ(image.pixel(x, y), 0U) << scale << x << " " << y;
      }
  }
}

TEST_F(PillPainterTest, AnErrorShowsAnOrangeTriangleAndItsMessage) {
  PillPicture shown = picture();
  PillPicture::Content content;
  content.layout = pillLayout({HUDModel::State::Kind::Error, u"mmmm"_s}, {}, text);
  shown.pill = {100, 34, content.layout.size.width, content.layout.size.height};
  for (ScreenRect* place : {&content.layout.symbol, &content.layout.message}) {
    place->x += 100;
    place->y += 34;
  }
  content.message = u"mmmm"_s;
  shown.contents = {content};
  const QImage image = paint(shown);
  const auto& symbol = content.layout.symbol;
  expectNear(image.pixelColor(int(symbol.x + 4), int(symbol.y + 11)), {1, 0.584, 0}, 0.05);
  int bright = 0;
  const auto& message = content.layout.message;
  for (int y = int(message.y); y < int(message.y + message.height); ++y)
    for (int x = int(message.x); x < int(message.x + message.width); ++x)
      bright += image.pixelColor(x, y).lightnessF() > 0.6;
  EXPECT_GT(bright, 60);
}

TEST_F(PillPainterTest, AContentThatIsTooWideForAPillStillGrowingStaysInside) {
  PillPicture shown = picture();
  PillPicture::Content content;
  content.layout = pillLayout({HUDModel::State::Kind::Error, QString(80, u'm')}, {}, text);
  content.layout.message.x += 60;
  content.layout.message.y += 36;
  content.message = QString(80, u'm');
  shown.contents = {content};
  const QImage image = paint(shown, Ground::Opaque);
  for (int y = 0; y < 160; ++y) EXPECT_EQ(image.pixelColor(170, y).alpha(), 0);
}

TEST(AlphaBlurTest, ABlurIsAGaussianAndKeepsTheSum) {
  for (const double deviation : {1.0, 1.35, 3.0, 7.0, 14.0}) {
    QImage image(121, 121, QImage::Format_Alpha8);
    image.fill(0);
    for (int y = 0; y < 121; ++y)
      for (int x = 60; x < 121; ++x) image.scanLine(y)[x] = 200;
    blurAlpha(image, deviation);
    // An edge becomes the integral of the curve.
    for (int x = 30; x < 91; ++x) {
      const double expected = 200 * 0.5 * std::erfc(-(x - 59.5) / deviation / std::sqrt(2));
      EXPECT_NEAR(image.constScanLine(60)[x], expected, 7) << deviation << " " << x;
    }
  }
}

TEST(AlphaBlurTest, NoBlurLeavesTheImage) {
  QImage image(3, 1, QImage::Format_Alpha8);
  image.fill(77);
  blurAlpha(image, 0);
  EXPECT_EQ(image.constScanLine(0)[1], 77);
  QImage none;
  blurAlpha(none, 2);
}

TEST(PillShapesTest, ACapsuleIsRoundedByHalfItsHeight) {
  const QPainterPath capsule = continuousRoundedRect(QRectF(0, 0, 104, 38), 100);
  EXPECT_EQ(capsule.boundingRect(), QRectF(0, 0, 104, 38));
  for (double angle = 0; angle < std::numbers::pi; angle += 0.1) {
    const QPointF direction(-std::sin(angle), std::cos(angle));
    EXPECT_TRUE(capsule.contains(QPointF(19, 19) + direction * 18.9));
    EXPECT_FALSE(capsule.contains(QPointF(19, 19) + direction * 19.1));
  }
}

TEST(PillShapesTest, ACornerWithRoomStartsEarlierThanItsRadiusAndFollowsItInTheMiddle) {
  const QPainterPath shape = continuousRoundedRect(QRectF(0, 0, 200, 100), 16);
  const double diagonal = 16 * (1 - std::numbers::sqrt2 / 2);
  EXPECT_TRUE(shape.contains(QPointF(diagonal + 0.1, diagonal + 0.1)));
  EXPECT_FALSE(shape.contains(QPointF(diagonal - 0.1, diagonal - 0.1)));
  EXPECT_FALSE(shape.contains(QPointF(17, 0.02)));
  EXPECT_TRUE(shape.contains(QPointF(26, 0.02)));
}

TEST(PillShapesTest, TheTrianglesMarkIsCutOut) {
  const QPainterPath triangle = warningTriangle(QRectF(0, 0, 15, 13));
  EXPECT_TRUE(QRectF(0, 0, 15, 13).contains(triangle.boundingRect()));
  EXPECT_TRUE(triangle.contains(QPointF(4, 11)));
  EXPECT_FALSE(triangle.contains(QPointF(7.5, 6)));
  EXPECT_FALSE(triangle.contains(QPointF(7.5, 10.3)));
  EXPECT_TRUE(triangle.contains(QPointF(7.5, 9)));
  EXPECT_FALSE(triangle.contains(QPointF(1, 1)));
}

}  // namespace
}  // namespace vemo
