// The program's icons: those that the desktop finds in its theme are drawn from our drawings, down
// to sizes at which each edge has to meet the pixels; those of the panel can be seen on any panel;
// and all symbols have one style.

#include <gtest/gtest.h>

#include <QDir>
#include <QPainter>
#include <QSvgRenderer>
#include <set>

#include "PictureComparison.h"
#include "windows/AccentColors.h"
#include "windows/SymbolImages.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

const QDir icons(QStringLiteral(VEMO_ICONS_IN_SOURCE));
const QDir references(QStringLiteral(VEMO_PICTURES_IN_SOURCE) + u"/references"_s);

QImage draw(const QString& file, int size) {
  QSvgRenderer drawing(icons.filePath(file));
  EXPECT_TRUE(drawing.isValid()) << file.toStdString();
  QImage image(size, size, QImage::Format_ARGB32_Premultiplied);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  drawing.render(&painter);
  return image;
}

class ApplicationIconTest : public testing::TestWithParam<int> {
 protected:
  static bool hasOwnDrawing() { return GetParam() < 64; }
  static QImage drawn() {
    return draw(hasOwnDrawing() ? u"application/%1.svg"_s.arg(GetParam()) : u"brelmox.Vemo.svg"_s,
                GetParam());
  }
};

TEST_P(ApplicationIconTest, TheThemesImageIsDrawnFromTheDrawing) {
  expectLooksAs(drawn(), icons.filePath(u"hicolor/%1x%1/apps/brelmox.Vemo.png"_s.arg(GetParam())));
}

TEST_P(ApplicationIconTest, TheBarsMeetThePixels) {
  if (!hasOwnDrawing()) return;
  const QImage image = drawn();
  std::set<QRgb> colors;
  for (int x = 0; x < image.width(); ++x) colors.insert(image.pixel(x, image.height() / 2));
  EXPECT_EQ(colors, (std::set<QRgb>{0xff0b7a6c, 0xffffffff}));
}

INSTANTIATE_TEST_SUITE_P(EachSize, ApplicationIconTest,
                         testing::Values(16, 22, 24, 32, 48, 64, 128, 256, 512));

QStringList panelImages() {
  return QDir(icons.filePath(u"tray"_s)).entryList({u"*.svg"_s});
}

TEST(PanelIconTest, EachStatusHasItsImage) {
  for (const auto& image : {u"idle"_s, u"record.circle"_s, u"waveform.badge.magnifyingglass"_s,
                            u"waveform.badge.checkmark"_s, u"waveform.badge.exclamationmark"_s})
    EXPECT_TRUE(panelImages().contains(u"vemo-%1-symbolic.svg"_s.arg(image)));
}

TEST(PanelIconTest, OnePixelGridHoldsTheBars) {
  const QImage image = draw(u"tray/vemo-idle-symbolic.svg"_s, 16);
  for (int x = 0; x < 16; ++x) {
    const int alpha = qAlpha(image.pixel(x, 8));
    EXPECT_TRUE(alpha == 0 || alpha == 255) << x;
  }
}

/// Where a panel doesn't bring a colour of its own.
TEST(PanelIconTest, TheyStandOutFromLightPanelsAndFromDarkOnes) {
  for (const auto& name : panelImages()) {
    const QImage image = draw(u"tray/"_s + name, 16);
    int opaque = 0;
    for (int y = 0; y < 16; ++y) {
      for (int x = 0; x < 16; ++x) {
        if (qAlpha(image.pixel(x, y)) < 255) continue;
        ++opaque;
        EXPECT_GE(contrast(image.pixelColor(x, y), Qt::white), 3);
        EXPECT_GE(contrast(image.pixelColor(x, y), QColor(0x24, 0x27, 0x2d)), 3);
      }
    }
    EXPECT_GT(opaque, 30) << name.toStdString();
  }
}

/// A panel that gives them its own colour fills what is drawn: a line would become a blot.
TEST(PanelIconTest, TheyAreDrawnWithoutLines) {
  for (const auto& name : panelImages()) {
    QFile file(icons.filePath(u"tray/"_s + name));
    ASSERT_TRUE(file.open(QIODevice::ReadOnly));
    EXPECT_FALSE(file.readAll().contains("stroke")) << name.toStdString();
  }
}

QImage sheet(const QList<QImage>& rows, const QColor& ground) {
  int height = 0;
  for (const auto& row : rows) height += row.height();
  QImage image(rows.front().width(), height, QImage::Format_RGB32);
  image.fill(ground);
  QPainter painter(&image);
  int y = 0;
  for (const auto& row : rows) {
    painter.drawImage(0, y, row);
    y += row.height();
  }
  return image;
}

TEST(PanelIconTest, TheyLookAsTheyAreMeantTo) {
  QList<QImage> rows;
  for (const int size : {16, 22, 24, 32, 48}) {
    QImage row(5 * 64, size + 16, QImage::Format_ARGB32_Premultiplied);
    row.fill(Qt::transparent);
    QPainter painter(&row);
    int x = 8;
    for (const auto& name : panelImages()) {
      painter.drawImage(x, 8, draw(u"tray/"_s + name, size));
      x += 64;
    }
    painter.end();
    rows.append(row);
  }
  expectLooksAs(sheet(rows, Qt::white), references.filePath(u"icons-panel-light.png"_s));
  expectLooksAs(sheet(rows, QColor(0x24, 0x27, 0x2d)),
                references.filePath(u"icons-panel-dark.png"_s));
}

TEST(SymbolsTest, TheyLookAsTheyAreMeantTo) {
  SymbolImages symbols(icons.filePath(u"symbols"_s));
  const auto names = QDir(icons.filePath(u"symbols"_s)).entryList({u"*.svg"_s});
  QList<QImage> rows;
  for (const int size : {16, 20, 32}) {
    QImage row(static_cast<int>(names.size()) * 40, size + 8, QImage::Format_ARGB32_Premultiplied);
    row.fill(Qt::transparent);
    QPainter painter(&row);
    int x = 4;
    for (const auto& name : names) {
      QSize drawn;
      painter.drawImage(
          x, 4, symbols.requestImage(name.chopped(4) + u"/1c1f23"_s, &drawn, QSize(size, size)));
      EXPECT_EQ(drawn, QSize(size, size));
      x += 40;
    }
    painter.end();
    rows.append(row);
  }
  expectLooksAs(sheet(rows, Qt::white), references.filePath(u"icons-symbols.png"_s));
}

}  // namespace
}  // namespace vemo
