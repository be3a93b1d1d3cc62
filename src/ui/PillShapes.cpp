#include "ui/PillShapes.h"

#include <QTransform>
#include <algorithm>
#include <array>
#include <cmath>
#include <numbers>

namespace vemo {

namespace {

/// The part of a corner's quarter turn that its two transitions take; the rest is an arc.
constexpr double preferredSmoothing = 0.6;

/// A corner in its own coordinates, which are those of the one at the top right: from (-extent, 0)
/// on the side above, around the corner (0, 0), to (0, extent) on the side to the right.
class Corner {
 public:
  Corner(double radius, double room)
      : m_radius(radius),
        m_smoothing(radius > 0 ? std::clamp(room / radius - 1, 0.0, preferredSmoothing) : 0),
        m_extent((1 + m_smoothing) * radius) {}

  double extent() const { return m_extent; }

  /// Goes on from where the path stands, the corner's start. `place` is where the corner is.
  void addTo(QPainterPath& path, const QTransform& place) const {
    // The arc spans what the transitions leave of the quarter turn, symmetric to the diagonal.
    const double transitionAngle = std::numbers::pi / 4 * m_smoothing;
    const double arcAngle = std::numbers::pi / 2 - 2 * transitionAngle;
    const double fromCorner = m_radius * (1 - std::cos(transitionAngle));
    const QPointF arcStart(-m_radius + m_radius * std::sin(transitionAngle), fromCorner);
    const QPointF arcEnd(-fromCorner, m_radius - m_radius * std::sin(transitionAngle));
    // A transition's handles lie on its side, which makes its curvature start at zero; the second
    // is where the side meets the arc's tangent.
    const double tangentMeets = fromCorner == 0 ? 0 : fromCorner / std::tan(transitionAngle);
    const QPointF start(-m_extent, 0);
    const QPointF end(0, m_extent);
    const QPointF meetsAtStart(arcStart.x() - tangentMeets, 0);
    const QPointF meetsAtEnd(0, arcEnd.y() + tangentMeets);
    const double arcHandle = 4.0 / 3 * std::tan(arcAngle / 4) * m_radius;
    const QPointF along(std::cos(transitionAngle), std::sin(transitionAngle));
    const QPointF alongEnd(std::sin(transitionAngle), std::cos(transitionAngle));
    if (m_smoothing > 0)
      path.cubicTo(place.map(start + (meetsAtStart - start) * (2.0 / 3)), place.map(meetsAtStart),
                   place.map(arcStart));
    path.cubicTo(place.map(arcStart + along * arcHandle), place.map(arcEnd - alongEnd * arcHandle),
                 place.map(arcEnd));
    if (m_smoothing > 0)
      path.cubicTo(place.map(meetsAtEnd), place.map(end + (meetsAtEnd - end) * (2.0 / 3)),
                   place.map(end));
  }

 private:
  double m_radius;
  double m_smoothing;
  double m_extent;
};

void addRoundedCorner(QPainterPath& path, const QPointF& before, const QPointF& corner,
                      const QPointF& after, double distance) {
  const auto towards = [&](const QPointF& other) {
    const QPointF way = other - corner;
    return corner + way * (distance / std::hypot(way.x(), way.y()));
  };
  if (path.elementCount() == 0)
    path.moveTo(towards(before));
  else
    path.lineTo(towards(before));
  path.quadTo(corner, towards(after));
}

}  // namespace

QPainterPath continuousRoundedRect(const QRectF& rect, double cornerRadius) {
  const double room = std::min(rect.width(), rect.height()) / 2;
  const Corner corner(std::clamp(cornerRadius, 0.0, std::max(room, 0.0)), room);
  QPainterPath path;
  path.moveTo(rect.right() - corner.extent(), rect.top());
  const std::array corners{rect.topRight(), rect.bottomRight(), rect.bottomLeft(), rect.topLeft()};
  for (std::size_t i = 0; i < corners.size(); ++i) {
    const QTransform place =
        QTransform::fromTranslate(corners[i].x(), corners[i].y()).rotate(90.0 * double(i));
    path.lineTo(place.map(QPointF(-corner.extent(), 0)));
    corner.addTo(path, place);
  }
  path.closeSubpath();
  return path;
}

QPainterPath warningTriangle(const QRectF& rect) {
  const QPointF top(rect.center().x(), rect.top());
  const double rounding = rect.width() * 0.16;
  QPainterPath path;
  addRoundedCorner(path, rect.bottomLeft(), top, rect.bottomRight(), rounding);
  addRoundedCorner(path, top, rect.bottomRight(), rect.bottomLeft(), rounding);
  addRoundedCorner(path, rect.bottomRight(), rect.bottomLeft(), top, rounding);
  path.closeSubpath();

  const double thickness = rect.width() * 0.11;
  const auto x = rect.center().x() - thickness / 2;
  path.addRoundedRect(QRectF(x, rect.top() + rect.height() * 0.34, thickness, rect.height() * 0.32),
                      thickness / 2, thickness / 2);
  path.addEllipse(QRectF(x, rect.top() + rect.height() * 0.73, thickness, thickness));
  path.setFillRule(Qt::OddEvenFill);
  return path;
}

}  // namespace vemo
