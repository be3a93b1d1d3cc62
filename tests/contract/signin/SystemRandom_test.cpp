#include "platform/posix/SystemRandom.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

TEST(SystemRandomTest, BytesAreAsManyAsAskedAndNeverTheSame) {
  SystemRandom random;
  const auto first = random.bytes(64);
  const auto second = random.bytes(64);
  ASSERT_TRUE(first && second);
  EXPECT_EQ(first->size(), 64);
  EXPECT_NE(*first, *second);
}

TEST(SystemRandomTest, MoreThanTheKernelGivesAtOnceIsAFailure) {
  SystemRandom random;
  EXPECT_TRUE(random.bytes(256));
  EXPECT_FALSE(random.bytes(257));
}

}  // namespace
}  // namespace vemo
