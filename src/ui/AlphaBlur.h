// A Gaussian blur of coverage, for the pill's shadow and the glow of its bars.
#pragma once

#include <QImage>

namespace vemo {

/// The standard deviation of the blur that goes by a radius.
constexpr double deviationOfBlur(double radius) {
  return radius / 2;
}
/// How far a blur of that radius reaches.
constexpr double reachOfBlur(double radius) {
  return radius * 1.5;
}

/// Blurs an image of format Alpha8 in place, by three box blurs in each direction, which come
/// within some 3 % of the Gaussian. Outside the image is nothing.
void blurAlpha(QImage& image, double deviation);

}  // namespace vemo
