// The three requests for the account's dictionary.
#include "AccountFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class CloudDictionaryTest : public AccountFixture {
 protected:
  CloudDictionaryTest() {
    holdToken();
    startUp();
  }

  Headers headers(bool hasBody) const {
    Headers expected{
        {"Authorization", "Bearer token"}, {"x-platform", "mac"}, {"x-app-version", "1.2.0"}};
    if (hasBody) expected.emplace_back("Content-Type", "application/json");
    return expected;
  }
};

TEST_F(CloudDictionaryTest, TheListComesInTheServersOrder) {
  http.answer(dictionaryPath, 200,
              R"({"status":"ok","dictionary":[{"id":"2","phrase":"p","replacement":"r"},)"
              R"({"id":"1","phrase":"q","replacement":"s"}]})");
  EXPECT_THAT(run(auth->fetchDictionary({})),
              ElementsAre(DictionaryItemDto{u"2"_s, u"p"_s, u"r"_s},
                          DictionaryItemDto{u"1"_s, u"q"_s, u"s"_s}));
  EXPECT_EQ(lastRequest().method, "GET");
  EXPECT_EQ(lastRequest().timeout, 60s);
  EXPECT_EQ(lastRequest().headers, headers(false));
}

TEST_F(CloudDictionaryTest, AnyFailureIsAnEmptyListAndOnlySomeAreLogged) {
  http.answer(dictionaryPath, 500);
  EXPECT_THAT(run(auth->fetchDictionary({})), IsEmpty());
  http.answer(dictionaryPath, 401);
  EXPECT_THAT(run(auth->fetchDictionary({})), IsEmpty());
  EXPECT_TRUE(auth->isSignedIn()) << "a 401 from here ends no session";
  EXPECT_THAT(storage.logMessages().filter(u"fetchDictionary"_s), IsEmpty());

  http.answer(dictionaryPath, 200, "{}");
  EXPECT_THAT(run(auth->fetchDictionary({})), IsEmpty());
  http.fail(dictionaryPath, UrlError::TimedOut, {}, u"too slow"_s);
  EXPECT_THAT(run(auth->fetchDictionary({})), IsEmpty());
  EXPECT_TRUE(
      storage.hasLogged(u"auth: fetchDictionary error — the answer isn't what was expected"_s));
  EXPECT_TRUE(storage.hasLogged(u"auth: fetchDictionary error — too slow"_s));
}

TEST_F(CloudDictionaryTest, AnAddedEntryComesBackWithItsIdentifier) {
  http.answer(dictionaryPath, 201,
              R"({"status":"ok","entry":{"id":"7","phrase":"p","replacement":"r"}})");
  EXPECT_EQ(run(auth->addDictionaryItem(u"p"_s, u"r"_s, {})),
            (DictionaryItemDto{u"7"_s, u"p"_s, u"r"_s}));
  EXPECT_EQ(lastRequest().method, "POST");
  EXPECT_EQ(lastRequest().body, R"({"phrase":"p","replacement":"r"})");
  EXPECT_EQ(lastRequest().headers, headers(true));
}

TEST_F(CloudDictionaryTest, AnAdditionThatFailsIsAbsentAndItsWordsAreNotLogged) {
  http.answer(dictionaryPath, 500);
  EXPECT_EQ(run(auth->addDictionaryItem(u"secret phrase"_s, u"r"_s, {})), std::nullopt);
  http.answer(dictionaryPath, 200, "nonsense");
  EXPECT_EQ(run(auth->addDictionaryItem(u"secret phrase"_s, u"r"_s, {})), std::nullopt);
  http.fail(dictionaryPath, UrlError::TimedOut, {}, u"too slow"_s);
  EXPECT_EQ(run(auth->addDictionaryItem(u"secret phrase"_s, u"r"_s, {})), std::nullopt);
  EXPECT_TRUE(storage.hasLogged(u"auth: addDictionaryItem error — too slow"_s));
  EXPECT_THAT(storage.logMessages().filter(u"secret phrase"_s), IsEmpty());
}

TEST_F(CloudDictionaryTest, ADeletionNamesItsEntryInThePath) {
  http.answer(u"/dictionary/7"_s, 204);
  EXPECT_TRUE(run(auth->deleteDictionaryItem(u"7"_s, {})));
  EXPECT_EQ(lastRequest().method, "DELETE");
  EXPECT_EQ(lastRequest().headers, headers(false));
}

TEST_F(CloudDictionaryTest, AnIdentifierCantLeaveItsPlaceInThePath) {
  http.answer(configuration.api(u"dictionary/a%2Fb%3Fc%23d%20e"_s).path(), 200);
  EXPECT_TRUE(run(auth->deleteDictionaryItem(u"a/b?c#d e"_s, {})));
  EXPECT_EQ(lastRequest().url.path(QUrl::FullyEncoded), u"/dictionary/a%2Fb%3Fc%23d%20e"_s);
}

TEST_F(CloudDictionaryTest, ADeletionThatFailsIsFalse) {
  http.answer(u"/dictionary/7"_s, 404);
  EXPECT_FALSE(run(auth->deleteDictionaryItem(u"7"_s, {})));
  http.fail(u"/dictionary/7"_s, UrlError::TimedOut, {}, u"too slow"_s);
  EXPECT_FALSE(run(auth->deleteDictionaryItem(u"7"_s, {})));
  EXPECT_TRUE(storage.hasLogged(u"auth: deleteDictionaryItem error — too slow"_s));
}

}  // namespace
}  // namespace vemo
