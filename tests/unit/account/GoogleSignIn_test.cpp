#include "account/GoogleSignIn.h"

#include <QCryptographicHash>
#include <QUrlQuery>

#include "AccountFixture.h"

namespace vemo {
namespace {

using testing::IsEmpty;
using testing::SizeIs;
using Kind = GoogleSignInError::Kind;

class GoogleSignInTest : public AccountFixture {
 protected:
  using Result = GoogleSignIn::Result<QString>;

  void begin() {
    beginAgain();
    ASSERT_THAT(browser.pages(), SizeIs(1));
  }
  void beginAgain() {
    result.reset();
    signIn = scope.start([this](std::stop_token stop) { return keepResult(std::move(stop)); });
    settle();
  }

  QString itemOfPage(const QString& name) const {
    return QUrlQuery(browser.pages().back().url).queryItemValue(name, QUrl::FullyDecoded);
  }

  static QUrl redirect(const QString& query) {
    return QUrl(u"example.accounts.apps.77-abc:/oauth2redirect?"_s + query);
  }
  QString rightState() const { return u"state="_s + itemOfPage(u"state"_s); }

  Result endBy(const QUrl& url) {
    browser.redirectTo(url);
    settle();
    EXPECT_TRUE(result);
    return result.value_or(Result());
  }

  Result endByAnswer(int status, const QByteArray& body) {
    begin();
    http.answer(tokenPath, status, body);
    return endBy(redirect(u"code=c0de&"_s + rightState()));
  }

  static GoogleSignInError errorOf(const Result& result) {
    EXPECT_FALSE(result);
    return result ? GoogleSignInError() : result.error();
  }

  StartedTask signIn;
  std::optional<Result> result;

 private:
  Task<> keepResult(std::stop_token stop) { result = co_await googleSignIn.signIn(stop); }
};

TEST_F(GoogleSignInTest, ThePageHasItsItemsInTheirOrder) {
  begin();
  const QUrl page = browser.pages()[0].url;
  EXPECT_TRUE(page.toString().startsWith(u"https://accounts.example/o/oauth2/v2/auth?"_s));
  QStringList names;
  for (const auto& [name, value] : QUrlQuery(page).queryItems()) names.append(name);
  EXPECT_EQ(names, (QStringList{u"client_id"_s, u"redirect_uri"_s, u"response_type"_s, u"scope"_s,
                                u"code_challenge"_s, u"code_challenge_method"_s, u"state"_s}));
  EXPECT_EQ(itemOfPage(u"client_id"_s), u"77-abc.apps.accounts.example"_s);
  EXPECT_EQ(itemOfPage(u"redirect_uri"_s), u"example.accounts.apps.77-abc:/oauth2redirect"_s);
  EXPECT_EQ(itemOfPage(u"response_type"_s), u"code"_s);
  EXPECT_EQ(itemOfPage(u"scope"_s), u"openid email profile"_s);
  EXPECT_EQ(itemOfPage(u"code_challenge_method"_s), u"S256"_s);
  EXPECT_EQ(browser.pages()[0].callbackScheme, u"example.accounts.apps.77-abc"_s);
}

TEST_F(GoogleSignInTest, TheCodeIsExchangedWithTheVerifierOfTheChallenge) {
  const auto token = endByAnswer(200, R"({"id_token":"the id token","access_token":"x"})");
  EXPECT_EQ(token, u"the id token"_s);

  const auto request = lastRequest();
  EXPECT_EQ(request.method, "POST");
  EXPECT_EQ(request.url, QUrl(u"https://tokens.example/token"_s));
  EXPECT_EQ(request.timeout, 60s);
  EXPECT_EQ(request.headers, (Headers{{"Content-Type", "application/x-www-form-urlencoded"}}));
  const QUrlQuery form(QString::fromUtf8(request.body));
  QStringList names;
  for (const auto& [name, value] : form.queryItems()) names.append(name);
  EXPECT_EQ(names, (QStringList{u"client_id"_s, u"code"_s, u"code_verifier"_s, u"grant_type"_s,
                                u"redirect_uri"_s}));
  EXPECT_EQ(form.queryItemValue(u"code"_s), u"c0de"_s);
  EXPECT_EQ(form.queryItemValue(u"grant_type"_s), u"authorization_code"_s);
  const QByteArray verifier = form.queryItemValue(u"code_verifier"_s).toUtf8();
  EXPECT_EQ(verifier.size(), 86);
  EXPECT_EQ(itemOfPage(u"code_challenge"_s).toUtf8(),
            QCryptographicHash::hash(verifier, QCryptographicHash::Sha256)
                .toBase64(QByteArray::Base64UrlEncoding | QByteArray::OmitTrailingEquals));
  EXPECT_EQ(itemOfPage(u"state"_s).size(), 43);
}

TEST_F(GoogleSignInTest, ACodeWithReservedCharactersArrivesAsItWas) {
  begin();
  http.answer(tokenPath, 200, R"({"id_token":"t"})");
  endBy(redirect(u"code=4%2F0A%26b%3D%2B&"_s + rightState()));
  EXPECT_TRUE(lastRequest().body.contains("code=4%2F0A%26b%3D%2B&"));
}

TEST_F(GoogleSignInTest, EachSignInHasItsOwnVerifierAndState) {
  begin();
  const QString state = itemOfPage(u"state"_s);
  const QString challenge = itemOfPage(u"code_challenge"_s);
  endBy(redirect(u"error=x"_s));
  beginAgain();
  EXPECT_NE(itemOfPage(u"state"_s), state);
  EXPECT_NE(itemOfPage(u"code_challenge"_s), challenge);
}

TEST_F(GoogleSignInTest, IfTheSecureSourceFailsTheGeneralOneServes) {
  random.isBroken = true;
  begin();
  EXPECT_EQ(itemOfPage(u"state"_s).size(), 43);
  EXPECT_EQ(itemOfPage(u"code_challenge"_s).size(), 43);
}

TEST_F(GoogleSignInTest, DecliningOnThePageIsCancelling) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(u"error=access_denied&"_s + rightState()))).kind,
            Kind::Cancelled);
}

TEST_F(GoogleSignInTest, AnotherErrorIsToldAsItIs) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(u"error=server_error"_s))),
            (GoogleSignInError{Kind::Google, u"server_error"_s}));
}

TEST_F(GoogleSignInTest, AnErrorGoesBeforeAWrongState) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(u"error=server_error&state=wrong"_s))).kind, Kind::Google);
}

TEST_F(GoogleSignInTest, AWrongOrMissingStateStopsBeforeTheCodeIsUsed) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(u"code=c0de&state=wrong"_s))).kind, Kind::StateMismatch);
  beginAgain();
  EXPECT_EQ(errorOf(endBy(redirect(u"code=c0de"_s))).kind, Kind::StateMismatch);
  EXPECT_THAT(http.requests(), IsEmpty());
}

TEST_F(GoogleSignInTest, OfARepeatedItemTheFirstCounts) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(u"code=c&state=wrong&"_s + rightState()))).kind,
            Kind::StateMismatch);
}

TEST_F(GoogleSignInTest, ARedirectWithoutACodeOrWithoutAnythingIsUnexpected) {
  begin();
  EXPECT_EQ(errorOf(endBy(redirect(rightState()))).description(),
            u"Unexpected response from Google"_s);
  beginAgain();
  browser.redirectNowhere();
  settle();
  EXPECT_EQ(errorOf(*result).kind, Kind::BadResponse);
}

TEST_F(GoogleSignInTest, FailuresOfTheBrowserAreToldInWords) {
  begin();
  browser.fail({.kind = WebAuthenticationError::Kind::CannotOpen});
  settle();
  EXPECT_EQ(errorOf(*result).description(), u"Couldn't open the sign-in window"_s);
  beginAgain();
  browser.fail({.kind = WebAuthenticationError::Kind::Failed, .description = u"it broke"_s});
  settle();
  EXPECT_EQ(errorOf(*result).description(), u"it broke"_s);
}

TEST_F(GoogleSignInTest, StoppingIsCancellingOnThePageAndDuringTheExchange) {
  begin();
  signIn.cancel();
  settle();
  EXPECT_EQ(errorOf(*result).kind, Kind::Cancelled);

  beginAgain();
  http.neverAnswer(tokenPath);
  browser.redirectTo(redirect(u"code=c&"_s + rightState()));
  settle();
  signIn.cancel();
  settle();
  EXPECT_EQ(errorOf(*result).kind, Kind::Cancelled);
}

TEST_F(GoogleSignInTest, ATokenReplyOf400ShowsGooglesTextOrTheStatus) {
  EXPECT_EQ(errorOf(endByAnswer(400, R"({"error_description":"Bad code"})")).description(),
            u"Bad code"_s);
}

TEST_F(GoogleSignInTest, ATokenReplyOf400WithoutTextIsToldByItsStatus) {
  EXPECT_EQ(errorOf(endByAnswer(400, R"({"error":"invalid_grant"})")).description(),
            u"Token exchange failed (HTTP 400)"_s);
}

TEST_F(GoogleSignInTest, A200WithoutAnIdTokenIsUnexpected) {
  EXPECT_EQ(errorOf(endByAnswer(200, R"({"access_token":"x"})")).description(),
            u"Unexpected response from Google"_s);
}

TEST_F(GoogleSignInTest, StatusesBetween200And299AreSuccess) {
  EXPECT_EQ(endByAnswer(299, R"({"id_token":"t"})"), u"t"_s);
}

TEST_F(GoogleSignInTest, AStatusOf300IsAFailure) {
  EXPECT_EQ(errorOf(endByAnswer(300, R"({"id_token":"t"})")).description(),
            u"Token exchange failed (HTTP 300)"_s);
}

TEST_F(GoogleSignInTest, AnAnswerThatIsNoHttpIsUnexpected) {
  begin();
  http.answerWithoutStatus(tokenPath);
  EXPECT_EQ(errorOf(endBy(redirect(u"code=c&"_s + rightState()))).kind, Kind::BadResponse);
}

TEST_F(GoogleSignInTest, ANetworkFailureIsToldWithItsDescription) {
  begin();
  http.fail(tokenPath, UrlError::NotConnectedToInternet, {}, u"no internet"_s);
  EXPECT_EQ(errorOf(endBy(redirect(u"code=c&"_s + rightState()))).description(),
            u"Can't reach Google — no internet"_s);
}

TEST_F(GoogleSignInTest, WithoutAnIdentifierOrAnAddressNoPageOpens) {
  configuration.googleAuthorizationEndpoint = QUrl(u"not/an/address"_s);
  EXPECT_EQ(errorOf(run(googleSignIn.signIn({}))).description(),
            u"Couldn't build the sign-in request"_s);
  configuration.googleClientId.clear();
  EXPECT_EQ(errorOf(run(googleSignIn.signIn({}))).description(),
            u"Google sign-in isn't configured"_s);
  EXPECT_THAT(browser.pages(), IsEmpty());
}

TEST_F(GoogleSignInTest, EveryKindHasItsWords) {
  EXPECT_EQ((GoogleSignInError{Kind::Cancelled}.description()), u"Sign-in cancelled"_s);
  EXPECT_EQ((GoogleSignInError{Kind::StateMismatch}.description()),
            u"Sign-in failed a security check"_s);
}

}  // namespace
}  // namespace vemo
