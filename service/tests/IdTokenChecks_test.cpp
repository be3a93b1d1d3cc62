#include "identity/IdTokenChecks.h"

#include <gmock/gmock.h>

#include <future>
#include <latch>

#include "support/IdTokens.h"

namespace vemo::service {
namespace {

using Kind = IdTokenChecks::Failure::Kind;

class IdTokenChecksTest : public testing::Test {
 protected:
  static TrustedProvider provider(const std::string& issuer) {
    return {.rules = {.issuers = {issuer}, .audiences = {"our-client"}},
            .keys = [](const std::string&) { return std::vector{providerKey()}; }};
  }
  std::string tokenOf(const std::string& issuer) const {
    return providerKey().sign(Claims(m_now).with("iss", boost::json::string(issuer)).text());
  }
  std::expected<IdToken, IdTokenChecks::Failure> check(IdTokenChecks& checks,
                                                       const std::string& token) const {
    std::promise<std::expected<IdToken, IdTokenChecks::Failure>> result;
    checks.check(token, std::nullopt, m_now,
                 [&](auto checked) { result.set_value(std::move(checked)); });
    return result.get_future().get();
  }

  Moment m_now = currentMoment();
};

TEST_F(IdTokenChecksTest, EveryTrustedProviderIsTakenAndNoOther) {
  IdTokenChecks checks({provider("https://one"), provider("https://two")});
  EXPECT_EQ(check(checks, tokenOf("https://one"))->identity.issuer, "https://one");
  EXPECT_EQ(check(checks, tokenOf("https://two"))->identity.issuer, "https://two");
  EXPECT_EQ(check(checks, tokenOf("https://three")).error().kind, Kind::Refused);
}

TEST_F(IdTokenChecksTest, WithoutAProviderNobodyIsTaken) {
  IdTokenChecks checks({});
  EXPECT_EQ(check(checks, tokenOf("https://one")).error().kind, Kind::Refused);
}

TEST_F(IdTokenChecksTest, AProviderWhoseKeysCannotBeHadHidesNoOther) {
  auto absent = provider("https://one");
  absent.keys = [](const std::string&) { return std::nullopt; };
  IdTokenChecks checks({provider("https://two"), absent});
  EXPECT_TRUE(check(checks, tokenOf("https://two")));
  EXPECT_EQ(check(checks, tokenOf("https://one")).error().kind, Kind::KeysUnavailable);
}

TEST_F(IdTokenChecksTest, SixtyFourChecksWaitAndTheNextIsToldAtOnce) {
  std::latch letGo(1);
  auto slow = provider("https://one");
  slow.keys = [&letGo](const std::string&) {
    letGo.wait();
    return std::vector{providerKey()};
  };
  std::atomic<int> answered = 0;
  {
    IdTokenChecks checks({slow});
    const auto token = tokenOf("https://one");
    for (int index = 0; index < IdTokenChecks::mostWaiting; ++index)
      checks.check(token, std::nullopt, m_now, [&](const auto&) { ++answered; });
    EXPECT_EQ(check(checks, token).error().kind, Kind::Busy);
    EXPECT_EQ(answered, 0);
    letGo.count_down();
  }
  EXPECT_LE(answered, IdTokenChecks::mostWaiting);
}

}  // namespace
}  // namespace vemo::service
