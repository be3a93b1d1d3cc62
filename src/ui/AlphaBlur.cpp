#include "ui/AlphaBlur.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <vector>

namespace vemo {

namespace {

constexpr int passCount = 3;

/// A box whose two outermost samples count in part, so that its variance can be any.
struct Box {
  int radius;        ///< of the samples that count in full
  float edgeWeight;  ///< of the two next to them

  /// The one whose variance, once for each pass, adds up to that of the Gaussian.
  static Box ofDeviation(double deviation) {
    const double variance = deviation * deviation / passCount;
    const double radius = std::floor(0.5 * std::sqrt(12 * variance + 1) - 0.5);
    const double edgeWeight = (2 * radius + 1) * (radius * (radius + 1) - 3 * variance) /
                              (6 * (variance - (radius + 1) * (radius + 1)));
    return {static_cast<int>(radius), static_cast<float>(edgeWeight)};
  }
  float total() const { return static_cast<float>(2 * radius + 1) + 2 * edgeWeight; }
};

/// Blurs one row or column: `count` values, each `stride` bytes after the one before. `line` has
/// room for them with margins of the box's reach, which are zero.
void blurLine(std::uint8_t* values, int count, qsizetype stride, const Box& box,
              std::vector<std::uint8_t>& line) {
  const int margin = box.radius + 1;
  for (int i = 0; i < count; ++i) line[margin + i] = values[i * stride];
  std::fill_n(line.begin() + margin + count, margin, 0);
  const float factor = 1 / box.total();
  int sum = 0;
  for (int i = 0; i < 2 * box.radius; ++i) sum += line[i + 1];
  for (int i = 0; i < count; ++i) {
    sum += line[i + 2 * box.radius + 1];
    const int edges = line[i] + line[i + 2 * margin];
    const float blurred = static_cast<float>(sum) + box.edgeWeight * static_cast<float>(edges);
    values[i * stride] = static_cast<std::uint8_t>(std::lround(blurred * factor));
    sum -= line[i + 1];
  }
}

}  // namespace

void blurAlpha(QImage& image, double deviation) {
  if (image.isNull() || !(deviation > 0)) return;
  const Box box = Box::ofDeviation(deviation);
  std::uint8_t* bits = image.bits();
  const qsizetype rowBytes = image.bytesPerLine();
  std::vector<std::uint8_t> line(std::max(image.width(), image.height()) + 2 * (box.radius + 1));
  for (int pass = 0; pass < passCount; ++pass) {
    for (int y = 0; y < image.height(); ++y)
      blurLine(bits + y * rowBytes, image.width(), 1, box, line);
    for (int x = 0; x < image.width(); ++x) blurLine(bits + x, image.height(), rowBytes, box, line);
  }
}

}  // namespace vemo
