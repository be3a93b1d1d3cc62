#include "base/SerialQueue.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace vemo {
namespace {

TEST(SerialQueueTest, WorkRunsInOrderOnAThreadOfItsOwn) {
  SerialQueue queue("vemo.test");
  std::vector<int> ran;
  bool ranElsewhere = true;
  for (int i = 0; i < 100; ++i) {
    queue.post([&, i, caller = std::this_thread::get_id()] {
      ran.push_back(i);
      ranElsewhere = ranElsewhere && std::this_thread::get_id() != caller;
    });
  }
  queue.waitUntilIdle();
  ASSERT_EQ(ran.size(), 100u);
  EXPECT_TRUE(std::is_sorted(ran.begin(), ran.end()));
  EXPECT_TRUE(ranElsewhere);
}

TEST(SerialQueueTest, TheDestructorFinishesWhatWasPosted) {
  int ran = 0;
  {
    SerialQueue queue("vemo.test");
    for (int i = 0; i < 1000; ++i) queue.post([&ran] { ++ran; });
  }
  EXPECT_EQ(ran, 1000);
}

TEST(SerialQueueTest, AQueueThatWasNeverUsedEndsAtOnce) {
  SerialQueue queue("vemo.test");
  queue.waitUntilIdle();
}

}  // namespace
}  // namespace vemo
