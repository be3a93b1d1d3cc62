// What every clock promises: the hand-moved one and the real one.
#include <gtest/gtest.h>

#include <optional>
#include <vector>

#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

class FakeWorld {
 public:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};

  bool runUntil(const std::function<bool()>& condition) {
    mainThread.drain();
    for (int i = 0; i < 10'000 && !condition(); ++i) clock.advance(1ms);
    return condition();
  }
};

class QtWorld {
 private:
  QtTestLoop m_loop;

 public:
  QtMainThread mainThread;
  QtClock clock{mainThread};

  bool runUntil(const std::function<bool()>& condition) { return m_loop.runUntil(condition); }
};

template <typename World>
class ClockContract : public testing::Test {
 protected:
  struct Sleep {
    bool hasBegun = false;
    std::optional<SleepEnd> end;
    Clock::Duration took{0};
    StartedTask task;
  };

  void start(Sleep& sleep, Clock::Duration duration) {
    sleep.task = scope->start(
        [this, &sleep, duration](std::stop_token stop) { return run(&sleep, duration, stop); });
  }

  static auto ended(const Sleep& sleep) {
    return [&sleep] { return sleep.end.has_value(); };
  }

  World world;
  std::unique_ptr<TaskScope> scope = std::make_unique<TaskScope>(world.mainThread);
  std::vector<const Sleep*> order;

 private:
  Task<> run(Sleep* sleep, Clock::Duration duration, std::stop_token stop) {
    const auto startedAt = world.clock.monotonicTime();
    sleep->hasBegun = true;
    sleep->end = co_await world.clock.sleep(duration, stop);
    sleep->took = world.clock.monotonicTime() - startedAt;
    order.push_back(sleep);
  }
};

using Worlds = testing::Types<FakeWorld, QtWorld>;
TYPED_TEST_SUITE(ClockContract, Worlds);

TYPED_TEST(ClockContract, ASleepEndsAsElapsedAndNeverEarly) {
  for (const Clock::Duration duration : {Clock::Duration(1ms), Clock::Duration(7'300us)}) {
    typename TestFixture::Sleep sleep;
    this->start(sleep, duration);
    ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
    EXPECT_EQ(sleep.end, SleepEnd::Elapsed);
    EXPECT_GE(sleep.took, duration);
  }
}

TYPED_TEST(ClockContract, ASleepOfNothingEnds) {
  typename TestFixture::Sleep sleep;
  this->start(sleep, 0ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
  EXPECT_EQ(sleep.end, SleepEnd::Elapsed);
}

TYPED_TEST(ClockContract, SleepsEndInTheOrderOfTheirTimes) {
  typename TestFixture::Sleep longer;
  typename TestFixture::Sleep shorter;
  this->start(longer, 60ms);
  this->start(shorter, 5ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(longer)));
  EXPECT_EQ(this->order, (std::vector<const typename TestFixture::Sleep*>{&shorter, &longer}));
}

TYPED_TEST(ClockContract, ARequestedStopEndsASleepAtOnce) {
  typename TestFixture::Sleep sleep;
  typename TestFixture::Sleep marker;
  this->start(sleep, 24h * 365);
  this->start(marker, 1ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(marker)));
  EXPECT_FALSE(sleep.end);
  sleep.task.cancel();
  EXPECT_FALSE(sleep.end) << "resumed inside the request to stop";
  ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
  EXPECT_EQ(sleep.end, SleepEnd::Cancelled);
}

TYPED_TEST(ClockContract, AStopRequestedBeforehandEndsTheSleepAsCancelled) {
  typename TestFixture::Sleep sleep;
  this->start(sleep, 1h);
  sleep.task.cancel();
  ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
  EXPECT_EQ(sleep.end, SleepEnd::Cancelled);
}

TYPED_TEST(ClockContract, AStopAfterTheEndChangesNothing) {
  typename TestFixture::Sleep sleep;
  this->start(sleep, 1ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
  sleep.task.cancel();
  EXPECT_EQ(sleep.end, SleepEnd::Elapsed);
}

TYPED_TEST(ClockContract, ASleepWhoseOwnerHasGoneNeverResumes) {
  typename TestFixture::Sleep sleep;
  this->start(sleep, 5ms);
  // Comes right after the sleep's beginning, however late that is.
  bool isOwnerGone = false;
  this->world.mainThread.post([&] {
    this->scope = std::make_unique<TaskScope>(this->world.mainThread);
    isOwnerGone = true;
  });
  ASSERT_TRUE(this->world.runUntil([&] { return isOwnerGone; }));
  ASSERT_TRUE(sleep.hasBegun);
  typename TestFixture::Sleep later;
  this->start(later, 20ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(later)));
  EXPECT_FALSE(sleep.end);
}

TYPED_TEST(ClockContract, BothTimesMoveOn) {
  const auto wall = this->world.clock.wallTime();
  const auto monotonic = this->world.clock.monotonicTime();
  typename TestFixture::Sleep sleep;
  this->start(sleep, 20ms);
  ASSERT_TRUE(this->world.runUntil(this->ended(sleep)));
  EXPECT_GE(this->world.clock.monotonicTime() - monotonic, 20ms);
  EXPECT_GT(this->world.clock.wallTime(), wall);
}

}  // namespace
}  // namespace vemo
