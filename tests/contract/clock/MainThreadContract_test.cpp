// What every main queue promises: the hand-drained one and Qt's event loop.
#include <gtest/gtest.h>

#include <memory>
#include <thread>
#include <vector>

#include "fakes/FakeMainThread.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {
namespace {

class FakeWorld {
 public:
  std::unique_ptr<FakeMainThread> mainThread = std::make_unique<FakeMainThread>();

  bool runUntil(const std::function<bool()>& condition) {
    mainThread->drain();
    return condition();
  }
};

class QtWorld {
 private:
  QtTestLoop m_loop;

 public:
  std::unique_ptr<QtMainThread> mainThread = std::make_unique<QtMainThread>();

  bool runUntil(const std::function<bool()>& condition) { return m_loop.runUntil(condition); }
};

template <typename World>
class MainThreadContract : public testing::Test {
 protected:
  World world;
  std::vector<int> ran;

  void post(int number) {
    world.mainThread->post([this, number] { ran.push_back(number); });
  }
};

using Worlds = testing::Types<FakeWorld, QtWorld>;
TYPED_TEST_SUITE(MainThreadContract, Worlds);

TYPED_TEST(MainThreadContract, WorkNeverRunsInsidePost) {
  this->post(1);
  EXPECT_TRUE(this->ran.empty());
  EXPECT_TRUE(this->world.runUntil([this] { return this->ran.size() == 1; }));
}

TYPED_TEST(MainThreadContract, WorkRunsInTheOrderOfTheCalls) {
  for (int i = 0; i < 5; ++i) this->post(i);
  EXPECT_TRUE(this->world.runUntil([this] { return this->ran.size() == 5; }));
  EXPECT_EQ(this->ran, (std::vector{0, 1, 2, 3, 4}));
}

TYPED_TEST(MainThreadContract, WorkPostedByWorkRunsAfterWhatWasPostedBefore) {
  this->world.mainThread->post([this] {
    this->post(2);
    this->ran.push_back(0);
  });
  this->post(1);
  EXPECT_TRUE(this->world.runUntil([this] { return this->ran.size() == 3; }));
  EXPECT_EQ(this->ran, (std::vector{0, 1, 2}));
}

TYPED_TEST(MainThreadContract, WorkOfAnotherThreadRunsOnTheMainThread) {
  std::thread::id ranOn;
  std::thread([this, &ranOn] {
    for (int i = 0; i < 1'000; ++i) this->post(i);
    this->world.mainThread->post([&ranOn] { ranOn = std::this_thread::get_id(); });
  }).join();
  EXPECT_TRUE(this->world.runUntil([&ranOn] { return ranOn != std::thread::id(); }));
  EXPECT_EQ(ranOn, std::this_thread::get_id());
  EXPECT_EQ(this->ran.size(), 1'000u);
}

TYPED_TEST(MainThreadContract, WorkIsFreedOnceItHasRun) {
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watch = held;
  this->world.mainThread->post([held = std::move(held)] {});
  EXPECT_TRUE(this->world.runUntil([&watch] { return watch.expired(); }));
}

TYPED_TEST(MainThreadContract, WorkStillQueuedGoesWithTheQueue) {
  auto held = std::make_shared<int>();
  const std::weak_ptr<int> watch = held;
  this->world.mainThread->post([this, held = std::move(held)] { this->ran.push_back(*held); });
  this->world.mainThread.reset();
  EXPECT_TRUE(watch.expired());
  EXPECT_TRUE(this->ran.empty());
}

}  // namespace
}  // namespace vemo
