// How a value gets from one to another: the curves of the pill's animations, and a value that moves
// along them. Pure functions of time.
#pragma once

#include <chrono>
#include <variant>

#include "base/Clock.h"

namespace vemo {

/// A damped harmonic oscillator of mass 1. `response` is the period that it would have without
/// damping, in seconds; a damping fraction of 1 is critical damping, below it overshoots.
struct Spring {
  double response;
  double dampingFraction;

  friend bool operator==(const Spring&, const Spring&) = default;
};

/// Starts and ends at rest, in `duration` seconds.
struct EaseInOut {
  double duration;

  friend bool operator==(const EaseInOut&, const EaseInOut&) = default;
};

using Motion = std::variant<Spring, EaseInOut>;

struct MotionState {
  double value;
  double velocity;  ///< a second
};

/// The distance from its rest of a spring that was let go `seconds` ago at distance 1.
MotionState springAt(const Spring& spring, double initialVelocity, double seconds);
/// The part of the way that is behind, 0 to 1.
double easeInOutAt(const EaseInOut& ease, double seconds);

/// A number that follows its target. A new target is approached from where the number is, a spring
/// takes its speed along.
class MovingValue {
 public:
  using Time = Clock::MonotonicTime;

  explicit MovingValue(double value = 0) : m_start(value), m_target(value) {}

  /// Is there at once.
  void jump(double target);
  /// Sets out for `target` at time `now`. On the way there already, it goes on as it goes.
  void move(double target, const Motion& motion, Time now);

  double at(Time now) const;
  double target() const { return m_target; }
  /// Whether it has not come to rest at its target.
  bool isMoving(Time now) const;

 private:
  MotionState stateAt(Time now) const;

  double m_start;
  double m_target;
  double m_startVelocity = 0;
  Motion m_motion = EaseInOut{0};
  Time m_since{};
};

}  // namespace vemo
