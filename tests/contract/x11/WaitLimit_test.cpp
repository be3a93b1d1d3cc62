#include "platform/x11/WaitLimit.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace std::chrono_literals;

constexpr WaitLimit::Time start{1h};

TEST(WaitLimitTest, WaitsAddUpToTheLimit) {
  WaitLimit limit(250ms, start);
  EXPECT_EQ(limit.nextWait(start), 100ms);
  EXPECT_EQ(limit.nextWait(start + 100ms), 100ms);
  EXPECT_EQ(limit.nextWait(start + 200ms), 50ms);
  EXPECT_EQ(limit.nextWait(start + 249ms), 1ms);
  EXPECT_EQ(limit.nextWait(start + 250ms), 0ms);
  EXPECT_EQ(limit.nextWait(start + 251ms), 0ms);
}

TEST(WaitLimitTest, WaitsThatEndEarlyCountForWhatTheyTook) {
  WaitLimit limit(2s, start);
  auto now = start;
  int waits = 0;
  for (; limit.nextWait(now) > 0ms; now += 1ms) ++waits;
  EXPECT_EQ(waits, 2000);
}

TEST(WaitLimitTest, AStandstillCountsAsOneSlice) {
  WaitLimit limit(150ms, start);
  EXPECT_EQ(limit.nextWait(start), 100ms);
  EXPECT_EQ(limit.nextWait(start + 10s), 50ms);
  EXPECT_EQ(limit.nextWait(start + 10s + 49ms), 1ms);
  EXPECT_EQ(limit.nextWait(start + 1h), 0ms);
}

TEST(WaitLimitTest, ALimitOfNothingAllowsNoWait) {
  EXPECT_EQ(WaitLimit(0ms, start).nextWait(start), 0ms);
}

}  // namespace
}  // namespace vemo
