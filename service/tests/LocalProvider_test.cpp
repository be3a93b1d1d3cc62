#include "provider/LocalProvider.h"

#include "support/RunningProvider.h"

namespace vemo::service {
namespace {

using namespace std::chrono_literals;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

const std::string verifier(86, 'v');
const std::string redirectUri = "brelmox.vemo.desktop:/oauth2redirect";

class LocalProviderTest : public testing::Test {
 protected:
  static Parameters with(Parameters parameters, const Parameters& changes) {
    for (const auto& [name, value] : changes) parameters[name] = value;
    return parameters;
  }
  static std::string page(const Parameters& changes = {}) {
    return "/authorize?" + formOf(with({{"client_id", "desktop.vemo.brelmox"},
                                        {"redirect_uri", redirectUri},
                                        {"response_type", "code"},
                                        {"scope", "openid email profile"},
                                        {"code_challenge", secretHash(verifier)},
                                        {"code_challenge_method", "S256"},
                                        {"state", "the state"}},
                                       changes));
  }
  std::string ticket(const Parameters& changes = {}) {
    return between(m_provider.get(page(changes)).body, "name=\"ticket\" value=\"", "\"");
  }
  RawAnswer decide(const std::string& ticket, const std::string& decision,
                   const std::string& headers = "") {
    return m_provider.post("/consent", formOf({{"ticket", ticket}, {"decision", decision}}),
                           headers);
  }
  static std::string locationOf(const RawAnswer& answer) {
    return between(answer.head, "Location: ", "\r\n");
  }
  std::string code(const Parameters& changes = {}) {
    return between(locationOf(decide(ticket(changes), "continue")), "code=", "&");
  }
  RawAnswer exchange(const std::string& code, const Parameters& changes = {}) {
    return m_provider.post("/token", formOf(with({{"client_id", "desktop.vemo.brelmox"},
                                                  {"code", code},
                                                  {"code_verifier", verifier},
                                                  {"grant_type", "authorization_code"},
                                                  {"redirect_uri", redirectUri}},
                                                 changes)));
  }
  static std::string field(const RawAnswer& answer, std::string_view name) {
    const auto parsed = boost::json::parse(answer.body);
    const auto* value = parsed.as_object().if_contains(name);
    return value && value->is_string() ? std::string(value->get_string()) : std::string();
  }
  std::expected<IdToken, IdTokenProblem> checked(const std::string& token,
                                                 std::optional<std::string> nonce = std::nullopt) {
    const auto keys = readKeySet(m_provider.get("/jwks").body).value();
    return checkIdToken(
        token, [keys](const auto&) { return keys; },
        {.issuers = {localIssuer}, .audiences = {"desktop.vemo.brelmox"}}, nonce, noon);
  }
  void expectErrorPage(const RawAnswer& answer, int status) {
    EXPECT_EQ(answer.status, status);
    EXPECT_THAT(answer.head, Not(HasSubstr("Location")));
    EXPECT_THAT(answer.body, HasSubstr("This doesn’t work"));
  }

  RunningProvider m_provider;
};

TEST_F(LocalProviderTest, ThePageOffersOneButtonWithTheNameAndAWayOut) {
  const auto answer = m_provider.get(page());
  EXPECT_EQ(answer.status, 200);
  EXPECT_THAT(answer.body, HasSubstr("Continue as Ada &lt;Lovelace&gt;</button>"));
  EXPECT_THAT(answer.body, HasSubstr("Cancel</button>"));
  EXPECT_THAT(answer.body, Not(HasSubstr("<script")));
}

TEST_F(LocalProviderTest, NoScriptRunsOnThePageAndNoOtherPageFramesIt) {
  const auto head = m_provider.get(page()).head;
  EXPECT_THAT(head, HasSubstr("Content-Security-Policy: default-src 'none'; style-src 'nonce-"));
  EXPECT_THAT(head, HasSubstr("form-action 'self' brelmox.vemo.desktop:"));
  EXPECT_THAT(head, HasSubstr("frame-ancestors 'none'"));
  EXPECT_THAT(head, HasSubstr("X-Frame-Options: DENY"));
  EXPECT_THAT(head, HasSubstr("Cache-Control: no-store"));
}

TEST_F(LocalProviderTest, TheButtonLeadsToACodeThatIsGoodForAnIdToken) {
  const auto answer = decide(ticket(), "continue");
  EXPECT_EQ(answer.status, 303);
  const auto location = locationOf(answer);
  EXPECT_THAT(location, StartsWith(redirectUri + "?code="));
  EXPECT_THAT(location, HasSubstr("&state=the%20state"));
  const auto token = checked(field(exchange(between(location, "code=", "&")), "id_token"));
  ASSERT_TRUE(token);
  EXPECT_EQ(token->identity.issuer, localIssuer);
  EXPECT_FALSE(token->identity.subject.empty());
  EXPECT_EQ(token->identity.name, "Ada <Lovelace>");
  EXPECT_EQ(token->identity.email, "ada@localhost");
  EXPECT_EQ(token->expires, noon + 5min + 60s);
}

TEST_F(LocalProviderTest, TheSamePersonHasTheSameSubjectAndEachTokenIsAnother) {
  const auto first = field(exchange(code()), "id_token");
  const auto second = field(exchange(code()), "id_token");
  EXPECT_NE(first, second);
  EXPECT_EQ(checked(first)->identity.subject, checked(second)->identity.subject);
}

TEST_F(LocalProviderTest, ANonceComesBackInTheIdToken) {
  const auto token = field(exchange(code({{"nonce", "the nonce"}})), "id_token");
  EXPECT_TRUE(checked(token, "the nonce"));
  EXPECT_EQ(checked(token).error(), IdTokenProblem::Nonce);
}

TEST_F(LocalProviderTest, CancellingLeadsBackWithoutACode) {
  const auto answer = decide(ticket(), "cancel");
  EXPECT_EQ(answer.status, 303);
  EXPECT_EQ(locationOf(answer), redirectUri + "?error=access_denied&state=the%20state");
}

TEST_F(LocalProviderTest, ACodeIsGoodOnce) {
  const auto once = code();
  EXPECT_EQ(exchange(once).status, 200);
  const auto again = exchange(once);
  EXPECT_EQ(again.status, 400);
  EXPECT_EQ(field(again, "error"), "invalid_grant");
  EXPECT_EQ(field(again, "error_description"), "This sign-in was used before, or is too old.");
}

TEST_F(LocalProviderTest, ACodeIsGoodForSixtySeconds) {
  const auto early = code();
  const auto late = code();
  m_provider.advance(59s);
  EXPECT_EQ(exchange(early).status, 200);
  m_provider.advance(1s);
  EXPECT_EQ(field(exchange(late), "error"), "invalid_grant");
}

TEST_F(LocalProviderTest, ACodeForAnotherVerifierGivesNothingAndIsUsedUp) {
  const auto stolen = code();
  const auto answer = exchange(stolen, {{"code_verifier", std::string(86, 'w')}});
  EXPECT_EQ(answer.status, 400);
  EXPECT_EQ(field(answer, "error_description"), "Another program asked for this sign-in.");
  EXPECT_EQ(field(exchange(stolen), "error"), "invalid_grant");
}

TEST_F(LocalProviderTest, AnExchangeThatSaysAnythingElseGivesNothing) {
  EXPECT_EQ(field(exchange(code(), {{"redirect_uri", "x:/y"}}), "error"), "invalid_grant");
  EXPECT_EQ(field(exchange(code(), {{"client_id", "other"}}), "error"), "invalid_client");
  EXPECT_EQ(field(exchange(code(), {{"grant_type", "password"}}), "error"),
            "unsupported_grant_type");
  EXPECT_EQ(field(exchange("made up"), "error"), "invalid_grant");
  EXPECT_EQ(field(exchange(""), "error"), "invalid_grant");
}

TEST_F(LocalProviderTest, AFormThatCannotBeReadGivesNothing) {
  for (const auto* body : {"%", "code=1&code=2", "code=%00"})
    EXPECT_EQ(field(m_provider.post("/token", body), "error"), "invalid_request") << body;
  EXPECT_EQ(field(m_provider.post("/token", "{}", "", "application/json"), "error"),
            "invalid_request");
}

TEST_F(LocalProviderTest, AnotherClientOrRedirectGetsAnErrorPageAndNoRedirect) {
  expectErrorPage(m_provider.get(page({{"client_id", "other"}})), 400);
  expectErrorPage(m_provider.get(page({{"redirect_uri", redirectUri + "/"}})), 400);
  expectErrorPage(m_provider.get(page({{"redirect_uri", "https://example.org/"}})), 400);
  expectErrorPage(m_provider.get("/authorize"), 400);
  expectErrorPage(m_provider.get(page() + "&state=twice"), 400);
}

TEST_F(LocalProviderTest, OtherMistakesAreToldToTheProgramThatAsked) {
  const auto errorOf = [this](const Parameters& changes) {
    return between(locationOf(m_provider.get(page(changes))) + "&", "error=", "&");
  };
  EXPECT_EQ(errorOf({{"response_type", "token"}}), "unsupported_response_type");
  EXPECT_EQ(errorOf({{"scope", "email"}}), "invalid_scope");
  EXPECT_EQ(errorOf({{"code_challenge_method", "plain"}}), "invalid_request");
  EXPECT_EQ(errorOf({{"code_challenge", ""}}), "invalid_request");
  EXPECT_EQ(errorOf({{"code_challenge", std::string(42, 'a')}}), "invalid_request");
  EXPECT_EQ(errorOf({{"code_challenge", std::string(43, '/')}}), "invalid_request");
  EXPECT_EQ(errorOf({{"state", std::string(513, 's')}}), "invalid_request");
  EXPECT_EQ(errorOf({{"nonce", "two\nlines"}}), "invalid_request");
}

TEST_F(LocalProviderTest, AStateCannotAddAHeader) {
  const auto answer = m_provider.get(page({{"state", "x\r\nSet-Cookie: a=b"}, {"scope", ""}}));
  EXPECT_EQ(answer.status, 303);
  EXPECT_THAT(answer.head, Not(HasSubstr("Set-Cookie:")));
}

TEST_F(LocalProviderTest, TheButtonTakesOnlyATicketOfAPageAndOnce) {
  const auto once = ticket();
  EXPECT_EQ(decide(once, "continue").status, 303);
  expectErrorPage(decide(once, "continue"), 400);
  expectErrorPage(decide("made up", "continue"), 400);
  expectErrorPage(decide("", "continue"), 400);
  expectErrorPage(decide(ticket(), "perhaps"), 400);
  expectErrorPage(m_provider.post("/consent", "%"), 400);
}

TEST_F(LocalProviderTest, APageThatHasStoodForTenMinutesIsTooOld) {
  const auto old = ticket();
  m_provider.advance(10min);
  expectErrorPage(decide(old, "continue"), 400);
}

TEST_F(LocalProviderTest, AnotherSitesPageNeitherOpensThePageNorPressesItsButton) {
  for (const auto* headers : {"Sec-Fetch-Site: cross-site\r\n", "Sec-Fetch-Site: same-site\r\n",
                              "Origin: https://example.org\r\n", "Origin: null\r\n",
                              "Sec-Fetch-Site: same-origin\r\nOrigin: http://127.0.0.1:1\r\n"}) {
    expectErrorPage(m_provider.get(page(), headers), 403);
    const auto good = ticket();
    expectErrorPage(decide(good, "continue", headers), 403);
    EXPECT_EQ(decide(good, "continue",
                     "Sec-Fetch-Site: same-origin\r\nOrigin: http://" + m_provider.host() + "\r\n")
                  .status,
              303);
  }
  EXPECT_EQ(m_provider.get(page(), "Sec-Fetch-Site: none\r\n").status, 200);
}

TEST_F(LocalProviderTest, ANameThatAnotherServerGivesOutForThisAddressIsRefused) {
  const auto port = ":" + std::to_string(m_provider.port());
  const auto asked = [this](const std::string& host) {
    return m_provider.send("GET /jwks HTTP/1.1\r\n" + host + "\r\n");
  };
  for (const auto& host : {"Host: evil.example" + port, std::string("Host: 127.0.0.1:1"),
                           std::string("Host: 127.0.0.1"), std::string("Host:"),
                           "Host: 127.0.0.1.evil.example" + port})
    EXPECT_EQ(asked(host + "\r\n").status, 421) << host;
  EXPECT_EQ(asked("").status, 421);
  EXPECT_EQ(asked("Host: 127.0.0.1" + port + "\r\nHost: evil\r\n").status, 421);
  for (const auto* host : {"127.0.0.1", "localhost", "[::1]"})
    EXPECT_EQ(asked("Host: " + (host + port) + "\r\n").status, 200) << host;
}

TEST_F(LocalProviderTest, OtherPathsAndMethodsAreRefused) {
  EXPECT_EQ(m_provider.get("/").status, 404);
  EXPECT_EQ(m_provider.get("/authorize/").status, 404);
  const auto answer = m_provider.get("/token");
  EXPECT_EQ(answer.status, 405);
  EXPECT_THAT(answer.head, HasSubstr("Allow: POST"));
  EXPECT_EQ(m_provider.post("/authorize", "").status, 405);
  EXPECT_EQ(m_provider.send("BREW /jwks HTTP/1.1\r\nHost: " + m_provider.host() + "\r\n\r\n"), 405);
}

TEST_F(LocalProviderTest, OnlyTheKeysPublicHalfIsPublished) {
  const auto answer = m_provider.get("/jwks");
  EXPECT_EQ(answer.status, 200);
  const auto key = boost::json::parse(answer.body).at("keys").at(0).as_object();
  for (const auto* secret : {"d", "p", "q", "dp", "dq", "qi"}) EXPECT_FALSE(key.contains(secret));
}

TEST_F(LocalProviderTest, WhatIsNoHttpOrTooLongGetsNoAnswer) {
  EXPECT_EQ(m_provider.send("nonsense\r\n\r\n").status, 0);
  EXPECT_EQ(m_provider.get("/" + std::string(ProviderServer::largestHead, 'x')).status, 0);
  EXPECT_EQ(m_provider.post("/token", std::string(FormFields::largest + 1, 'x')).status, 0);
  EXPECT_EQ(m_provider.get("/jwks").status, 200) << "the next one is served";
}

TEST_F(LocalProviderTest, OnlySoManyConnectionsAreHeldAtOnce) {
  std::vector<std::unique_ptr<RawClient>> clients;
  for (std::size_t count = 0; count < ProviderServer::mostConnections; ++count)
    clients.push_back(std::make_unique<RawClient>(m_provider.port()));
  EXPECT_EQ(m_provider.get("/jwks").status, 0);
  clients.clear();
  EXPECT_TRUE(eventually([this] { return m_provider.get("/jwks").status == 200; }));
}

TEST_F(LocalProviderTest, StoppingEndsConnectionsThatSayNothing) {
  RawClient silent(m_provider.port());
  ASSERT_EQ(m_provider.get("/jwks").status, 200);
  m_provider.stop();
  EXPECT_TRUE(silent.waitForEnd());
}

TEST_F(LocalProviderTest, TheLogHoldsNeitherCodesNorVerifiersNorTickets) {
  const auto usedTicket = ticket();
  const auto usedCode = between(locationOf(decide(usedTicket, "continue")), "code=", "&");
  const auto token = field(exchange(usedCode), "id_token");
  m_provider.get("/" + usedCode);
  const auto log = m_provider.stop();
  EXPECT_THAT(log, HasSubstr("POST /token 200"));
  for (const auto& secret : {usedTicket, usedCode, verifier, token, std::string("the state")})
    EXPECT_THAT(log, Not(HasSubstr(secret)));
}

}  // namespace
}  // namespace vemo::service
