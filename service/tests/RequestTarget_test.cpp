#include "http/RequestTarget.h"

#include <gtest/gtest.h>

namespace vemo::service {
namespace {

TEST(RequestTargetTest, TheClientsRequestLineIsUnderstood) {
  const auto target = RequestTarget::parse(
      "/desktop/dictate?mode=transcribe&timestamps=false&format_mode=smart&language=en&model=m:4");
  ASSERT_TRUE(target);
  EXPECT_EQ(target->path(), "/desktop/dictate");
  EXPECT_EQ(target->parameter("format_mode"), "smart");
  EXPECT_EQ(target->parameter("language"), "en");
  EXPECT_EQ(target->parameter("session_id"), "");
}

TEST(RequestTargetTest, OfANameThatComesTwiceTheFirstCounts) {
  EXPECT_EQ(RequestTarget::parse("/a?language=en&language=hi")->parameter("language"), "en");
}

TEST(RequestTargetTest, EscapesAreDecodedInValuesAndLeftInThePath) {
  const auto target = RequestTarget::parse("/%61?language=e%6e");
  EXPECT_EQ(target->parameter("language"), "en");
  EXPECT_EQ(target->path(), "/%61");
}

TEST(RequestTargetTest, WhatCannotBeReadIsNone) {
  for (const auto* target : {"", "a", "http://host/a", "/a?language=%zz", "/%z"})
    EXPECT_FALSE(RequestTarget::parse(target)) << target;
}

}  // namespace
}  // namespace vemo::service
