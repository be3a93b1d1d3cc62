#include "identity/IdToken.h"

#include <gmock/gmock.h>

#include "support/DatabaseTest.h"
#include "support/IdTokens.h"

namespace vemo::service {
namespace {

using namespace std::chrono_literals;

class IdTokenTest : public testing::Test {
 protected:
  std::expected<IdToken, IdTokenProblem> check(const std::string& token,
                                               std::optional<std::string> nonce = std::nullopt,
                                               Moment now = noon) {
    return checkIdToken(token, m_keys, m_rules, nonce, now);
  }
  std::optional<IdTokenProblem> problemOf(const std::string& token,
                                          std::optional<std::string> nonce = std::nullopt,
                                          Moment now = noon) {
    const auto result = check(token, std::move(nonce), now);
    return result ? std::nullopt : std::optional(result.error());
  }
  std::optional<IdTokenProblem> problemWith(std::string_view claim, boost::json::value value) {
    return problemOf(providerKey().sign(m_claims.with(claim, std::move(value)).text()));
  }

  Claims m_claims{noon};
  const std::string m_good = providerKey().sign(m_claims.text());
  IdTokenRules m_rules{.issuers = {"https://issuer", "issuer"}, .audiences = {"our-client"}};
  KeyFinder m_keys = [](const std::string& identifier) {
    return identifier == "provider" || identifier.empty() ? std::vector{providerKey()}
                                                          : std::vector<JsonWebKey>();
  };
};

TEST_F(IdTokenTest, AGoodTokenTellsWhoItIs) {
  const auto token = check(m_good);
  ASSERT_TRUE(token);
  EXPECT_EQ(token->identity.issuer, "https://issuer");
  EXPECT_EQ(token->identity.subject, "ada");
  EXPECT_EQ(token->identity.email, "ada@example.org");
  EXPECT_EQ(token->identity.name, "Ada");
  EXPECT_EQ(token->identity.avatar, "https://pictures/ada");
  EXPECT_EQ(token->expires, noon + 1h + 60s);
}

TEST_F(IdTokenTest, TheSecondNameOfAnIssuerCounts) {
  EXPECT_FALSE(problemWith("iss", "issuer"));
}

TEST_F(IdTokenTest, UnsignedTokensAreRefused) {
  for (const auto* algorithm : {"none", "None", "NONE", "nOnE", ""}) {
    const auto head = std::string(R"({"alg":")") + algorithm + R"(","kid":"provider"})";
    EXPECT_EQ(problemOf(unsignedToken(head, m_claims.text())), IdTokenProblem::Algorithm)
        << algorithm;
  }
  EXPECT_EQ(problemOf(unsignedToken(R"({"kid":"provider"})", m_claims.text())),
            IdTokenProblem::Algorithm);
  EXPECT_EQ(problemOf(unsignedToken(R"({"alg":"RS256","kid":"provider"})", m_claims.text())),
            IdTokenProblem::Signature);
  const auto stripped = m_good.substr(0, m_good.rfind('.') + 1);
  EXPECT_TRUE(problemOf(stripped));
}

TEST_F(IdTokenTest, ASymmetricSignatureWithThePublicKeyIsRefused) {
  EXPECT_EQ(problemOf(symmetricToken(m_claims.text(), providerKey().publicJson())),
            IdTokenProblem::Algorithm);
  EXPECT_EQ(problemOf(symmetricToken(m_claims.text(), "")), IdTokenProblem::Algorithm);
}

TEST_F(IdTokenTest, OtherAlgorithmsAndExtensionsAreRefusedWhateverTheKey) {
  for (const auto* head :
       {R"({"alg":"RS384","kid":"provider"})", R"({"alg":"PS256","kid":"provider"})",
        R"({"alg":"ES256","kid":"provider"})", R"({"alg":["RS256"],"kid":"provider"})",
        R"({"alg":"RS256","crit":["x"],"x":1,"kid":"provider"})",
        R"({"alg":"RS256","b64":false,"kid":"provider"})"})
    EXPECT_EQ(problemOf(unsignedToken(head, m_claims.text()) + "c2ln"), IdTokenProblem::Algorithm)
        << head;
}

TEST_F(IdTokenTest, ASignatureOfAnotherKeyIsRefused) {
  EXPECT_EQ(problemOf(strangersKey().sign(m_claims.text())), IdTokenProblem::Signature);
}

TEST_F(IdTokenTest, AKeyThatTheProviderDoesNotPublishIsRefused) {
  static const auto other = JsonWebKey::makePair("other");
  EXPECT_EQ(problemOf(other.sign(m_claims.text())), IdTokenProblem::UnknownKey);
}

TEST_F(IdTokenTest, AKeyInTheTokensOwnHeadIsIgnored) {
  const auto head = R"({"alg":"RS256","kid":"provider","jwk":)" + strangersKey().publicJson() +
                    R"(,"jku":"https://evil","x5u":"https://evil"})";
  const auto signature = strangersKey().sign(m_claims.text());
  EXPECT_EQ(problemOf(base64url(head) + "." + base64url(m_claims.text()) +
                      signature.substr(signature.rfind('.'))),
            IdTokenProblem::Signature);
}

TEST_F(IdTokenTest, AChangedByteAnywhereIsNoticed) {
  for (std::size_t place = 0; place < m_good.size(); place += 7) {
    auto changed = m_good;
    changed[place] = changed[place] == 'A' ? 'B' : 'A';
    EXPECT_TRUE(problemOf(changed)) << place;
  }
}

TEST_F(IdTokenTest, AnotherIssuerIsRefused) {
  for (const boost::json::value& issuer : std::initializer_list<boost::json::value>{
           "https://issuer/", "https://ISSUER", "", 7, nullptr})
    EXPECT_EQ(problemWith("iss", issuer), IdTokenProblem::Issuer);
}

TEST_F(IdTokenTest, AnotherAudienceIsRefused) {
  using boost::json::array;
  for (const boost::json::value& audience : std::initializer_list<boost::json::value>{
           "another-client", "our-client2", "", 7, nullptr, array{}, array{"another-client"},
           array{7}, boost::json::parse(R"([["our-client"]])")})
    EXPECT_EQ(problemWith("aud", audience), IdTokenProblem::Audience);
}

TEST_F(IdTokenTest, OfSeveralAudiencesTheOneItWasIssuedForMustBeOurs) {
  using boost::json::array;
  EXPECT_FALSE(problemWith("aud", array{"our-client"}));
  EXPECT_EQ(problemWith("aud", (array{"our-client", "another"})), IdTokenProblem::Audience);
  EXPECT_EQ(problemWith("azp", "another"), IdTokenProblem::Audience);
  EXPECT_EQ(problemWith("azp", 7), IdTokenProblem::Audience);
  EXPECT_FALSE(problemWith("azp", "our-client"));
  const auto both = m_claims.with("aud", array{"our-client", "another"}).with("azp", "our-client");
  EXPECT_FALSE(problemOf(providerKey().sign(both.text())));
}

TEST_F(IdTokenTest, ItsTimeIsHeldToBothEnds) {
  EXPECT_FALSE(problemOf(m_good, {}, noon + 1h + 59s));
  EXPECT_EQ(problemOf(m_good, {}, noon + 1h + 60s), IdTokenProblem::Expired);
  EXPECT_FALSE(problemOf(m_good, {}, noon - 60s));
  EXPECT_EQ(problemOf(m_good, {}, noon - 61s), IdTokenProblem::NotYetValid);
  EXPECT_EQ(problemWith("nbf", noon.time_since_epoch().count() + 61), IdTokenProblem::NotYetValid);
}

TEST_F(IdTokenTest, TimesThatAreNoTimesAreMalformed) {
  for (const auto* claim : {"exp", "iat"})
    for (const boost::json::value& value : std::initializer_list<boost::json::value>{
             nullptr, "tomorrow", -1, 1e300, boost::json::array{}})
      EXPECT_EQ(problemWith(claim, value), IdTokenProblem::Malformed) << claim << value;
}

TEST_F(IdTokenTest, ANonceThatWasSentMustComeBackAndOnlyThen) {
  const auto withNonce = providerKey().sign(m_claims.with("nonce", "abc").text());
  EXPECT_FALSE(problemOf(withNonce, "abc"));
  EXPECT_EQ(problemOf(withNonce, "abd"), IdTokenProblem::Nonce);
  EXPECT_EQ(problemOf(withNonce, "ab"), IdTokenProblem::Nonce);
  EXPECT_EQ(problemOf(withNonce), IdTokenProblem::Nonce);
  EXPECT_EQ(problemOf(m_good, "abc"), IdTokenProblem::Nonce);
}

TEST_F(IdTokenTest, ASubjectIsNeeded) {
  for (const boost::json::value& subject :
       std::initializer_list<boost::json::value>{"", 7, nullptr, boost::json::string(256, 'a')})
    EXPECT_EQ(problemWith("sub", subject), IdTokenProblem::Malformed);
  EXPECT_FALSE(problemWith("sub", boost::json::string(255, 'a')));
}

TEST_F(IdTokenTest, DescriptionsThatAreNotUsableAreLeftOut) {
  auto claims = m_claims.with("name", 7).with("email", boost::json::string(2000, 'a'));
  claims = claims.with("picture", "javascript:alert(1)");
  const auto token = check(providerKey().sign(claims.text()));
  ASSERT_TRUE(token);
  EXPECT_EQ(token->identity.name, std::nullopt);
  EXPECT_EQ(token->identity.email, std::nullopt);
  EXPECT_EQ(token->identity.avatar, std::nullopt);
}

TEST_F(IdTokenTest, WhatIsNoTokenIsMalformed) {
  for (const auto& text :
       {std::string(), std::string("."), std::string(".."), std::string("a.b.c"), m_good + ".x",
        std::string("e30.e30"), std::string(100'000, 'a'), m_good + std::string("\0x", 2),
        " " + m_good, base64url("[]") + "." + base64url("{}") + ".c2ln",
        base64url(std::string(9000, '[')) + ".e30.c2ln"})
    EXPECT_TRUE(problemOf(text)) << text.substr(0, 40);
  EXPECT_EQ(problemOf(providerKey().sign("[]")), IdTokenProblem::Malformed);
  EXPECT_EQ(problemOf(providerKey().sign("no json")), IdTokenProblem::Malformed);
}

TEST(JsonWebKeyTest, KeysOfOtherKindsAndSizesAreLeftOut) {
  const auto publicKey = providerKey().publicJson();
  const auto changed = [&publicKey](std::string_view name, boost::json::value value) {
    auto key = boost::json::parse(publicKey).as_object();
    key[name] = std::move(value);
    return boost::json::serialize(key);
  };
  EXPECT_TRUE(JsonWebKey::read(publicKey));
  EXPECT_TRUE(JsonWebKey::read(changed("use", "sig")));
  EXPECT_TRUE(JsonWebKey::read(changed("alg", "RS256")));
  EXPECT_FALSE(JsonWebKey::read(changed("use", "enc")));
  EXPECT_FALSE(JsonWebKey::read(changed("alg", "RS512")));
  EXPECT_FALSE(JsonWebKey::read(changed("kty", "EC")));
  EXPECT_FALSE(
      JsonWebKey::read(changed("n", boost::json::string(base64url(std::string(128, '\xff'))))));
  EXPECT_FALSE(JsonWebKey::read(changed("n", 7)));
  EXPECT_FALSE(JsonWebKey::read(R"({"kty":"oct","k":"c2VjcmV0"})"));
  EXPECT_FALSE(JsonWebKey::read("{}"));
  EXPECT_FALSE(JsonWebKey::read(""));
}

TEST(JsonWebKeyTest, TheSecretPartStaysOutOfThePublicOne) {
  EXPECT_FALSE(boost::json::parse(providerKey().publicJson()).as_object().contains("d"));
  const auto copy = JsonWebKey::read(providerKey().privateJson());
  ASSERT_TRUE(copy);
  EXPECT_EQ(copy->identifier(), "provider");
  EXPECT_EQ(copy->sign("{}"), providerKey().sign("{}"));
}

TEST(JsonWebKeyTest, AKeySetGivesTheKeysThatAreOfUse) {
  const auto set = R"({"keys":[{"kty":"oct","k":"x"},7,)" + providerKey().publicJson() + "]}";
  ASSERT_TRUE(readKeySet(set));
  EXPECT_EQ(readKeySet(set)->size(), 1U);
  EXPECT_EQ(readKeySet(R"({"keys":[]})")->size(), 0U);
  for (const auto* text : {"", "[]", "{}", R"({"keys":7})", R"({"keys":)"})
    EXPECT_FALSE(readKeySet(text)) << text;
}

}  // namespace
}  // namespace vemo::service
