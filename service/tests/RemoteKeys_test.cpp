#include "identity/RemoteKeys.h"

#include <gmock/gmock.h>

#include "support/IdTokens.h"
#include "support/KeySetServer.h"

namespace vemo::service {
namespace {

using namespace std::chrono_literals;

class RemoteKeysTest : public testing::Test {
 protected:
  std::size_t count(const std::string& identifier) {
    return m_keys.find(identifier).value_or(std::vector<JsonWebKey>()).size();
  }

  RemoteKeys::Clock::time_point m_now{1000h};
  KeySetServer m_server{keySetOf({providerKey()})};
  RemoteKeys m_keys{WebServer::at(m_server.address()).value(), [this] { return m_now; }};
};

TEST_F(RemoteKeysTest, KeysAreFetchedOnceAndKeptForTheirTime) {
  m_server.answerWith(keySetOf({providerKey()}), "Cache-Control: public, max-age=600\r\n");
  EXPECT_EQ(count("provider"), 1U);
  EXPECT_EQ(count(""), 1U);
  m_now += 599s;
  EXPECT_EQ(count("provider"), 1U);
  EXPECT_EQ(m_server.asked(), 1);
  m_now += 1s;
  EXPECT_EQ(count("provider"), 1U);
  EXPECT_EQ(m_server.asked(), 2);
}

TEST_F(RemoteKeysTest, LifetimesAreHeldWithinBounds) {
  m_server.answerWith(keySetOf({providerKey()}), "Cache-Control: max-age=0\r\n");
  count("provider");
  m_now += 59s;
  count("provider");
  EXPECT_EQ(m_server.asked(), 1);
  m_server.answerWith(keySetOf({providerKey()}), "Cache-Control: max-age=99999999999\r\n");
  m_now += 1s;
  count("provider");
  EXPECT_EQ(m_server.asked(), 2);
  m_now += 24h;
  count("provider");
  EXPECT_EQ(m_server.asked(), 3);
}

TEST_F(RemoteKeysTest, ANewKeyIsFoundAtOnceThoughTheOldOnesAreFresh) {
  static const auto next = JsonWebKey::makePair("next");
  EXPECT_EQ(count("provider"), 1U);
  m_server.answerWith(keySetOf({next}));
  m_now += RemoteKeys::retryPause;
  EXPECT_EQ(count("next"), 1U);
  EXPECT_EQ(count("provider"), 0U);
}

TEST_F(RemoteKeysTest, TokensWithInventedKeysDoNotMakeItAskTheProviderEachTime) {
  EXPECT_EQ(count("provider"), 1U);
  for (int index = 0; index < 100; ++index) EXPECT_EQ(count("invented"), 0U);
  EXPECT_EQ(m_server.asked(), 1);
  m_now += RemoteKeys::retryPause;
  for (int index = 0; index < 100; ++index) EXPECT_EQ(count("invented"), 0U);
  EXPECT_EQ(m_server.asked(), 2);
}

TEST_F(RemoteKeysTest, WhileTheProviderFailsTheKnownKeysGoOnCountingForADay) {
  EXPECT_EQ(count("provider"), 1U);
  for (const auto* broken : {"no json", "{}", R"({"keys":[]})"}) {
    m_server.answerWith(broken);
    m_now += 2h;
    EXPECT_EQ(count("provider"), 1U) << broken;
  }
  m_server.answerWith(keySetOf({providerKey()}), "", "500");
  m_now += 17h;
  EXPECT_EQ(count("provider"), 1U);
  m_now += 1h;
  EXPECT_EQ(m_keys.find("provider"), std::nullopt);
}

TEST_F(RemoteKeysTest, AnAnswerThatIsTooLongIsNotTaken) {
  m_server.answerWith(std::string(RemoteKeys::largestKeySet + 1, ' '));
  EXPECT_EQ(m_keys.find("provider"), std::nullopt);
}

TEST(RemoteKeysWithoutProviderTest, NothingIsKnown) {
  RemoteKeys keys(WebServer::at("http://127.0.0.1:1/jwks").value());
  EXPECT_EQ(keys.find("provider"), std::nullopt);
  EXPECT_EQ(keys.find(""), std::nullopt);
}

}  // namespace
}  // namespace vemo::service
