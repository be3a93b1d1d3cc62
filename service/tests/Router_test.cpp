#include "http/Router.h"

#include <gmock/gmock.h>

namespace vemo::service {
namespace {

using boost::beast::http::verb;
using testing::HasSubstr;

class RouterTest : public testing::Test {
 protected:
  RouterTest() {
    m_router.add({verb::get, "/words", Access::Account, 0, {}});
    m_router.add({verb::post, "/words", Access::Account, 0, {}});
    m_router.add({verb::delete_, "/words/*", Access::Account, 0, {}});
  }
  unsigned statusOf(verb method, std::string_view target) {
    const auto match = m_router.find(method, target);
    return match ? 200 : match.error().status;
  }

  Router m_router;
};

TEST_F(RouterTest, APathAndAMethodNameARoute) {
  EXPECT_EQ(m_router.find(verb::post, "/words?a=b")->route->method, verb::post);
  EXPECT_EQ(m_router.find(verb::get, "/words")->route->method, verb::get);
}

TEST_F(RouterTest, AStarTakesOneLastSegmentWithoutItsEscapes) {
  EXPECT_EQ(m_router.find(verb::delete_, "/words/a%2Fb?x")->item, "a/b");
  EXPECT_EQ(statusOf(verb::delete_, "/words/"), 404U);
  EXPECT_EQ(statusOf(verb::delete_, "/words/a/b"), 404U);
}

TEST_F(RouterTest, UnknownAndMalformedTargetsAreToldApart) {
  for (const auto* target : {"/", "/word", "/words2", "//words", "/words/../words"})
    EXPECT_EQ(statusOf(verb::get, target), 404U) << target;
  for (const auto* target : {"", "words", "http://host/words", "/words?a=%zz", "/words/%zz"})
    EXPECT_EQ(statusOf(verb::get, target), 400U) << target;
}

TEST_F(RouterTest, AWrongMethodIsToldTheRightOnes) {
  const auto match = m_router.find(verb::put, "/words");
  ASSERT_FALSE(match);
  EXPECT_EQ(match.error().status, 405U);
  EXPECT_EQ(match.error().allow, "GET, POST");
  EXPECT_THAT(match.error().body, HasSubstr("method"));
}

TEST_F(RouterTest, OnlyPathsOfRoutesAreKnown) {
  EXPECT_EQ(m_router.knownPath("/words/private?more"), "/words/*");
  EXPECT_EQ(m_router.knownPath("/words"), "/words");
  EXPECT_EQ(m_router.knownPath("/private"), "-");
  EXPECT_EQ(m_router.knownPath("private"), "-");
}

}  // namespace
}  // namespace vemo::service
