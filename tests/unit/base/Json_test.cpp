#include "base/Json.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

TEST(JsonTest, AnObjectIsReadAndAnythingElseIsNothing) {
  EXPECT_EQ(parseJsonObject(R"({"a":1})")->value(u"a").toInt(), 1);
  for (const char* bad : {"", "null", "[1]", "\"a\"", "{\"a\":1", "{\"a\":1}x", "<html></html>",
                          "{\"a\":\"\xff\"}"}) {
    EXPECT_FALSE(parseJsonObject(bad)) << bad;
  }
}

TEST(JsonTest, NestingWithoutEndIsRefused) {
  EXPECT_FALSE(parseJsonArray(QByteArray(1'000'000, '[')));
}

TEST(JsonTest, AValueOfAnotherTypeIsNothing) {
  const auto object = *parseJsonObject(R"({"text":"x","number":2,"null":null})");
  EXPECT_EQ(stringIn(object, u"text"), QStringLiteral("x"));
  EXPECT_EQ(stringIn(object, u"number"), std::nullopt);
  EXPECT_EQ(stringIn(object, u"null"), std::nullopt);
  EXPECT_EQ(stringIn(object, u"missing"), std::nullopt);
  EXPECT_EQ(numberIn(object, u"number"), 2.0);
  EXPECT_EQ(numberIn(object, u"text"), std::nullopt);
}

}  // namespace
}  // namespace vemo
