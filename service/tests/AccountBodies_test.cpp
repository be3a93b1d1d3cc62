#include "accounts/AccountBodies.h"

#include <gtest/gtest.h>

namespace vemo::service {
namespace {

TEST(AccountBodiesTest, KeysThatNobodyAsksForAreIgnored) {
  const auto words =
      readDictionaryWords(R"({"id":"x","phrase":"p","replacement":"r","more":[{"a":1}]})");
  ASSERT_TRUE(words);
  EXPECT_EQ(words->phrase, "p");
  EXPECT_EQ(words->replacement, "r");
}

TEST(AccountBodiesTest, AnIdTokenMayBe16KibLongAndNotAByteMore) {
  const auto body = [](std::size_t length) {
    return R"({"idToken":")" + std::string(length, 'a') + "\"}";
  };
  EXPECT_TRUE(readSignIn(body(16 * 1024)));
  EXPECT_FALSE(readSignIn(body(16 * 1024 + 1)));
}

TEST(AccountBodiesTest, ANonceIsOptionalButMustBeAText) {
  EXPECT_FALSE(readSignIn(R"({"idToken":"t"})")->nonce);
  EXPECT_EQ(readSignIn(R"({"idToken":"t","nonce":"n"})")->nonce, "n");
  EXPECT_FALSE(readSignIn(R"({"idToken":"t","nonce":null})"));
}

TEST(AccountBodiesTest, OfAKeyThatComesTwiceTheLastCounts) {
  EXPECT_EQ(readName(R"({"name":"a","name":"b"})").value(), "b");
}

TEST(AccountBodiesTest, DeepNestingIsRefusedWithoutHarm) {
  const std::string deep(60'000, '[');
  EXPECT_FALSE(readName(R"({"name":)" + deep));
  EXPECT_FALSE(readSignIn(deep));
}

}  // namespace
}  // namespace vemo::service
