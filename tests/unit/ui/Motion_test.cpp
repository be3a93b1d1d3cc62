#include "ui/Motion.h"

#include <gtest/gtest.h>

#include <cmath>
#include <numbers>

namespace vemo {
namespace {

using namespace std::chrono_literals;

constexpr Clock::MonotonicTime start{1h};
constexpr Spring insertion{.response = 0.36, .dampingFraction = 0.74};

/// The oscillator's equation of motion, integrated in small steps.
double integrated(const Spring& spring, double velocity, double seconds) {
  const double frequency = 2 * std::numbers::pi / spring.response;
  const double step = 1e-6;
  double x = 1;
  for (double time = 0; time < seconds; time += step) {
    velocity -=
        step * (frequency * frequency * x + 2 * spring.dampingFraction * frequency * velocity);
    x += step * velocity;
  }
  return x;
}

TEST(MotionTest, ASpringIsTheDampedOscillatorOfItsResponseAndDampingFraction) {
  for (const Spring& spring : {insertion, Spring{0.32, 0.8}, Spring{0.3, 0.8}, Spring{0.5, 1.0}})
    for (const double velocity : {0.0, -12.0, 5.0})
      for (const double seconds : {0.0, 0.05, 0.1, 0.2, 0.35}) {
        EXPECT_NEAR(springAt(spring, velocity, seconds).value,
                    integrated(spring, velocity, seconds), 1e-3)
            << spring.response << " " << velocity << " " << seconds;
      }
}

TEST(MotionTest, ASpringsVelocityIsTheSlopeOfItsWay) {
  for (const Spring& spring : {insertion, Spring{0.5, 1.0}}) {
    const double slope =
        (springAt(spring, 2, 0.1 + 1e-6).value - springAt(spring, 2, 0.1 - 1e-6).value) / 2e-6;
    EXPECT_NEAR(springAt(spring, 2, 0.1).velocity, slope, 1e-4);
  }
}

TEST(MotionTest, ASpringOvershootsByWhatItsDampingLeaves) {
  // The first turning point of an oscillator of damping ζ is at exp(-πζ/√(1-ζ²)) beyond its rest.
  const double expected = std::exp(-std::numbers::pi * 0.74 / std::sqrt(1 - 0.74 * 0.74));
  double least = 1;
  for (double time = 0; time < 1; time += 0.0005)
    least = std::min(least, springAt(insertion, 0, time).value);
  EXPECT_NEAR(-least, expected, 1e-5);
}

TEST(MotionTest, EaseInOutIsSlowAtBothEndsAndHalfWayInTheMiddle) {
  const EaseInOut ease{0.2};
  EXPECT_NEAR(easeInOutAt(ease, 0), 0, 1e-6);
  EXPECT_NEAR(easeInOutAt(ease, 0.1), 0.5, 1e-3);
  EXPECT_LT(easeInOutAt(ease, 0.02), 0.05);
  EXPECT_GT(easeInOutAt(ease, 0.18), 0.95);
  EXPECT_EQ(easeInOutAt(ease, 0.2), 1);
  EXPECT_EQ(easeInOutAt(ease, 5), 1);
}

TEST(MotionTest, AValueMovesFromWhereItIsToItsTarget) {
  MovingValue value(10);
  EXPECT_FALSE(value.isMoving(start));
  value.move(20, EaseInOut{0.2}, start);
  EXPECT_TRUE(value.isMoving(start));
  EXPECT_NEAR(value.at(start + 100ms), 15, 0.01);
  EXPECT_EQ(value.at(start + 200ms), 20);
  EXPECT_FALSE(value.isMoving(start + 200ms));
}

TEST(MotionTest, AValueThatIsUnderWayToATargetGoesOnAsItGoes) {
  MovingValue value(0);
  value.move(1, insertion, start);
  const double before = value.at(start + 200ms);
  value.move(1, EaseInOut{5}, start + 100ms);
  EXPECT_EQ(value.at(start + 200ms), before);
}

TEST(MotionTest, ASpringTurnedAroundKeepsItsPlaceAndItsSpeed) {
  MovingValue value(0);
  value.move(1, insertion, start);
  const auto turn = start + 80ms;
  const double place = value.at(turn);
  const double speed = (value.at(turn) - value.at(turn - 1ms)) / 1e-3;
  value.move(0, insertion, turn);
  EXPECT_NEAR(value.at(turn), place, 1e-12);
  EXPECT_NEAR((value.at(turn + 1ms) - value.at(turn)) / 1e-3, speed, 0.15 * speed);
  EXPECT_NEAR(value.at(turn + 2s), 0, 1e-6);
}

TEST(MotionTest, ASpringsMotionIsOverWhenNothingOfItCanBeSeen) {
  MovingValue value(0);
  value.move(1, insertion, start);
  auto time = start;
  while (value.isMoving(time)) time += 1ms;
  EXPECT_GT(time, start + 300ms);
  EXPECT_LT(time, start + 800ms);
  EXPECT_NEAR(value.at(time - 1ms), 1, 0.001);
  for (; time < start + 3s; time += 1ms) {
    EXPECT_FALSE(value.isMoving(time));
    EXPECT_EQ(value.at(time), 1);
  }
}

TEST(MotionTest, AJumpIsThereAtOnce) {
  MovingValue value(0);
  value.move(1, insertion, start);
  value.jump(3);
  EXPECT_EQ(value.at(start + 10ms), 3);
  EXPECT_FALSE(value.isMoving(start + 10ms));
}

}  // namespace
}  // namespace vemo
