#include "PictureComparison.h"

#include <gtest/gtest.h>

#include <QDir>
#include <QFileInfo>
#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <cstdlib>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Edges of a few letters, should a library draw them a little differently.
constexpr int toleratedPixels = 40;

/// Of 255, and more than what the few colours of a kept picture make of it.
constexpr int clearDifference = 32;

int difference(QRgb one, QRgb other) {
  return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                   std::abs(qBlue(one) - qBlue(other)), std::abs(qAlpha(one) - qAlpha(other))});
}

int differingPixels(const QImage& one, const QImage& other) {
  const QImage left = one.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  const QImage right = other.convertToFormat(QImage::Format_ARGB32_Premultiplied);
  int count = 0;
  for (int y = 0; y < left.height(); ++y) {
    const auto* leftLine = reinterpret_cast<const QRgb*>(left.constScanLine(y));
    const auto* rightLine = reinterpret_cast<const QRgb*>(right.constScanLine(y));
    for (int x = 0; x < left.width(); ++x)
      if (difference(leftLine[x], rightLine[x]) > clearDifference) ++count;
  }
  return count;
}

/// Small, with no more colours than it takes; what shines through keeps all of them.
bool keepPicture(const QImage& image, const QString& file) {
  if (image.hasAlphaChannel()) return image.save(file);
  for (const auto& colors : {u"64"_s, u"128"_s, u"256"_s}) {
    if (!image.save(file)) return false;
    if (QProcess::execute(u"mogrify"_s,
                          {u"-strip"_s, u"-dither"_s, u"None"_s, u"-colors"_s, colors, u"-define"_s,
                           u"png:exclude-chunks=date,time"_s, u"-define"_s,
                           u"png:compression-level=9"_s, u"PNG8:"_s + file}) != 0)
      return false;
    if (differingPixels(image, QImage(file)) == 0) break;
  }
  return true;
}

}  // namespace

void expectLooksAs(const QImage& image, const QString& file) {
  if (writesReferences) {
    EXPECT_TRUE(QDir().mkpath(QFileInfo(file).path()));
    EXPECT_TRUE(keepPicture(image, file)) << file.toStdString();
    return;
  }
  const QImage reference(file);
  ASSERT_EQ(reference.size(), image.size()) << file.toStdString();
  const int differing = differingPixels(image, reference);
  if (differing <= toleratedPixels) return;
  const QString drawn = u"failed-"_s + QFileInfo(file).fileName();
  image.save(drawn);
  ADD_FAILURE() << file.toStdString() << " is what it should look like; " << differing
                << " pixels are different in " << QDir().absoluteFilePath(drawn).toStdString();
}

}  // namespace vemo
