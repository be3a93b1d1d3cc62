#include "PictureComparison.h"

#include <QProcess>
#include <QStringList>
#include <algorithm>
#include <cstdlib>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Of 255.
constexpr int clearDifference = 32;

int difference(QRgb one, QRgb other) {
  return std::max({std::abs(qRed(one) - qRed(other)), std::abs(qGreen(one) - qGreen(other)),
                   std::abs(qBlue(one) - qBlue(other))});
}

}  // namespace

int differingPixels(const QImage& one, const QImage& other) {
  const QImage left = one.convertToFormat(QImage::Format_RGB32);
  const QImage right = other.convertToFormat(QImage::Format_RGB32);
  int count = 0;
  for (int y = 0; y < left.height(); ++y) {
    const auto* leftLine = reinterpret_cast<const QRgb*>(left.constScanLine(y));
    const auto* rightLine = reinterpret_cast<const QRgb*>(right.constScanLine(y));
    for (int x = 0; x < left.width(); ++x)
      if (difference(leftLine[x], rightLine[x]) > clearDifference) ++count;
  }
  return count;
}

bool keepPicture(const QImage& image, const QString& file) {
  if (!image.save(file)) return false;
  return QProcess::execute(u"mogrify"_s,
                           {u"-strip"_s, u"-dither"_s, u"None"_s, u"-colors"_s, u"64"_s,
                            u"-define"_s, u"png:exclude-chunks=date,time"_s, u"-define"_s,
                            u"png:compression-level=9"_s, u"PNG8:"_s + file}) == 0;
}

}  // namespace vemo
