#include "provider/SignInCodes.h"

#include "support/DatabaseTest.h"

namespace vemo::service {
namespace {

using namespace std::chrono_literals;

const SignInCodes::Request request{
    .challenge = "challenge", .state = "state & more", .nonce = "nonce"};

class SignInCodesTest : public DatabaseTest {
 protected:
  SignInCodes m_codes{database()};
};

TEST_P(SignInCodesTest, ATicketGivesItsRequestOnce) {
  m_codes.keepRequest("ticket", request, noon);
  EXPECT_EQ(m_codes.takeRequest("another", noon), std::nullopt);
  EXPECT_EQ(m_codes.takeRequest("ticket", noon), request);
  EXPECT_EQ(m_codes.takeRequest("ticket", noon), std::nullopt);
}

TEST_P(SignInCodesTest, ATicketIsGoodForTenMinutes) {
  m_codes.keepRequest("early", request, noon);
  m_codes.keepRequest("late", request, noon);
  EXPECT_TRUE(m_codes.takeRequest("early", noon + 10min - 1s));
  EXPECT_FALSE(m_codes.takeRequest("late", noon + 10min));
}

TEST_P(SignInCodesTest, ACodeGivesItsChallengeAndNonceOnce) {
  m_codes.keepCode("code", request, noon);
  EXPECT_EQ(m_codes.takeCode("another", noon), std::nullopt);
  const auto taken = m_codes.takeCode("code", noon);
  ASSERT_TRUE(taken);
  EXPECT_EQ(taken->challenge, "challenge");
  EXPECT_EQ(taken->nonce, "nonce");
  EXPECT_EQ(m_codes.takeCode("code", noon), std::nullopt);
}

TEST_P(SignInCodesTest, ACodeIsGoodForSixtySeconds) {
  m_codes.keepCode("early", request, noon);
  m_codes.keepCode("late", request, noon);
  EXPECT_TRUE(m_codes.takeCode("early", noon + 59s));
  EXPECT_FALSE(m_codes.takeCode("late", noon + 60s));
  EXPECT_EQ(countOf("provider_codes"), 0) << "one that is too old is used up as well";
}

TEST_P(SignInCodesTest, NeitherTicketNorCodeIsStoredInClear) {
  m_codes.keepRequest("the-ticket", request, noon);
  m_codes.keepCode("the-code", request, noon);
  std::string ticket;
  std::string code;
  database().session() << "SELECT r.ticket, c.code FROM provider_requests r, provider_codes c",
      soci::into(ticket), soci::into(code);
  EXPECT_FALSE(ticket.empty());
  EXPECT_FALSE(ticket.contains("the-ticket"));
  EXPECT_FALSE(code.empty());
  EXPECT_FALSE(code.contains("the-code"));
}

INSTANTIATE_TEST_SUITE_P(Databases, SignInCodesTest, bothDatabases, nameOf);

}  // namespace
}  // namespace vemo::service
