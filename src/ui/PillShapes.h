// The outlines that the pill is drawn with.
#pragma once

#include <QPainterPath>

namespace vemo {

/// A rounded rectangle whose sides pass into its corners without a jump of curvature. As little
/// room as a capsule leaves makes plain arcs of them.
QPainterPath continuousRoundedRect(const QRectF& rect, double cornerRadius);

/// A triangle with rounded corners and the exclamation mark cut out of it.
QPainterPath warningTriangle(const QRectF& rect);

}  // namespace vemo
