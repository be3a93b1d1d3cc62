#include "ui/Motion.h"

#include <QEasingCurve>
#include <QPointF>
#include <algorithm>
#include <cmath>
#include <numbers>

namespace vemo {

namespace {

double secondsBetween(Clock::MonotonicTime from, Clock::MonotonicTime to) {
  return std::max(0.0, std::chrono::duration<double>(to - from).count());
}

QEasingCurve makeEaseInOut() {
  QEasingCurve curve(QEasingCurve::BezierSpline);
  curve.addCubicBezierSegment({0.42, 0}, {0.58, 1}, {1, 1});
  return curve;
}

/// A spring's motion never ends by itself; it is over when so little of the way is left in place
/// and speed together, which only ever decrease, that nobody can see it.
constexpr double negligible = 0.001;

bool isOver(const Spring& spring, const MotionState& state) {
  const double frequency = 2 * std::numbers::pi / spring.response;
  return std::hypot(state.value, state.velocity / frequency) < negligible;
}

}  // namespace

MotionState springAt(const Spring& spring, double initialVelocity, double seconds) {
  const double frequency = 2 * std::numbers::pi / spring.response;
  const double decay = spring.dampingFraction * frequency;
  if (spring.dampingFraction < 1) {
    // x″ + 2·decay·x′ + frequency²·x = 0, x(0) = 1, x′(0) = initialVelocity
    const double dampedFrequency =
        frequency * std::sqrt(1 - spring.dampingFraction * spring.dampingFraction);
    const double amplitude = (initialVelocity + decay) / dampedFrequency;
    const double cosine = std::cos(dampedFrequency * seconds);
    const double sine = std::sin(dampedFrequency * seconds);
    const double envelope = std::exp(-decay * seconds);
    const double remaining = envelope * (cosine + amplitude * sine);
    const double velocity =
        -decay * remaining + envelope * dampedFrequency * (amplitude * cosine - sine);
    return {remaining, velocity};
  }
  // Critical damping, which is the fastest way without overshooting; there's none slower here.
  const double slope = initialVelocity + frequency;
  const double envelope = std::exp(-frequency * seconds);
  return {envelope * (1 + slope * seconds), envelope * (slope - frequency * (1 + slope * seconds))};
}

double easeInOutAt(const EaseInOut& ease, double seconds) {
  static const QEasingCurve curve = makeEaseInOut();
  if (seconds >= ease.duration) return 1;
  return curve.valueForProgress(std::max(0.0, seconds) / ease.duration);
}

void MovingValue::jump(double target) {
  m_start = m_target = target;
  m_startVelocity = 0;
}

void MovingValue::move(double target, const Motion& motion, Time now) {
  if (target == m_target) return;
  const auto [value, velocity] = stateAt(now);
  m_start = value;
  m_startVelocity = velocity;
  m_target = target;
  m_motion = motion;
  m_since = now;
}

double MovingValue::at(Time now) const {
  return stateAt(now).value;
}

bool MovingValue::isMoving(Time now) const {
  const auto [value, velocity] = stateAt(now);
  return value != m_target || velocity != 0;
}

MotionState MovingValue::stateAt(Time now) const {
  const double way = m_start - m_target;
  const double seconds = secondsBetween(m_since, now);
  if (way == 0) return {m_target, 0};
  if (const auto* ease = std::get_if<EaseInOut>(&m_motion))
    return {m_target + way * (1 - easeInOutAt(*ease, seconds)), 0};
  const auto& spring = std::get<Spring>(m_motion);
  const MotionState state = springAt(spring, m_startVelocity / way, seconds);
  if (isOver(spring, state)) return {m_target, 0};
  return {m_target + way * state.value, way * state.velocity};
}

}  // namespace vemo
