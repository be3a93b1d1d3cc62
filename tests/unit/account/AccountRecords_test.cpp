#include "account/AccountRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(AccountRecordsTest, ASignInNeedsTokenAndUserAndNothingElse) {
  const auto success = decodeAuthSuccess(
      R"({"token":"t","user":{"id":"1","email":"a@b.c","name":null,"extra":[]},"more":1})");
  ASSERT_TRUE(success);
  EXPECT_EQ(success->token, u"t"_s);
  EXPECT_EQ(success->user,
            (AuthUser{.id = u"1"_s, .email = u"a@b.c"_s, .name = {}, .avatarUrl = {}}));
  for (const char* bad : {"", "[]", "{}", R"({"token":"t"})", R"({"user":{}})",
                          R"({"token":1,"user":{}})", R"({"token":"t","user":[]})",
                          R"({"token":"t","user":{"email":5}})", R"({"token":null,"user":{}})"})
    EXPECT_FALSE(decodeAuthSuccess(bad)) << bad;
}

TEST(AccountRecordsTest, AnErrorIsAString) {
  EXPECT_EQ(decodeAuthError(R"({"error":"no"})"), u"no"_s);
  for (const char* bad : {"", "<html>", "{}", R"({"error":null})", R"({"error":{"text":"no"}})"})
    EXPECT_FALSE(decodeAuthError(bad)) << bad;
}

TEST(AccountRecordsTest, AProfileNeedsStatusAndUser) {
  const auto profile = decodeProfileResponse(
      R"({"status":"ok","user":{"name":"N","updates":{"betaEligible":true},)"
      R"("consumption":{"totalWordsTranscribed":7,"totalMinutesTranscribed":1.5,)"
      R"("lastActiveAt":"now","totalRequests":null}}})");
  ASSERT_TRUE(profile);
  EXPECT_EQ(profile->user.name, u"N"_s);
  EXPECT_EQ(profile->betaEligible, true);
  ASSERT_TRUE(profile->consumption);
  EXPECT_EQ(profile->consumption->totalWordsTranscribed, 7);
  EXPECT_EQ(profile->consumption->totalMinutesTranscribed, 1.5);
  EXPECT_EQ(profile->consumption->lastActiveAt, u"now"_s);
  EXPECT_EQ(profile->consumption->totalRequests, std::nullopt);

  const auto bare = decodeProfileResponse(R"({"status":"","user":{}})");
  ASSERT_TRUE(bare);
  EXPECT_EQ(bare->consumption, std::nullopt);
  EXPECT_EQ(bare->betaEligible, std::nullopt);
}

TEST(AccountRecordsTest, AProfileWithOnePartOfAnotherTypeIsNone) {
  for (const char* bad :
       {R"({"user":{}})", R"({"status":"ok"})", R"({"status":"ok","user":{"name":1}})",
        R"({"status":"ok","user":{"consumption":[]}})",
        R"({"status":"ok","user":{"consumption":{"totalWordsTranscribed":"7"}}})",
        R"({"status":"ok","user":{"consumption":{"totalWordsTranscribed":1.5}}})",
        R"({"status":"ok","user":{"consumption":{"totalWordsTranscribed":1e300}}})",
        R"({"status":"ok","user":{"updates":{"betaEligible":"yes"}}})"})
    EXPECT_FALSE(decodeProfileResponse(bad)) << bad;
}

TEST(AccountRecordsTest, ListsAreWholeOrNone) {
  const auto languages = decodeLanguagesResponse(
      R"({"status":"ok","languages":[{"name":"English","code":"en"},{"name":"A","code":"b"}]})");
  ASSERT_TRUE(languages);
  EXPECT_THAT(*languages,
              ElementsAre(LanguageDto{u"English"_s, u"en"_s}, LanguageDto{u"A"_s, u"b"_s}));
  const auto dictionary = decodeDictionaryResponse(
      R"({"status":"ok","dictionary":[{"id":"1","phrase":"p","replacement":"r"}]})");
  ASSERT_TRUE(dictionary);
  EXPECT_THAT(*dictionary, ElementsAre(DictionaryItemDto{u"1"_s, u"p"_s, u"r"_s}));
  EXPECT_THAT(*decodeDictionaryResponse(R"({"status":"ok","dictionary":[]})"), IsEmpty());

  EXPECT_FALSE(decodeLanguagesResponse(R"({"languages":[]})"));
  EXPECT_FALSE(decodeLanguagesResponse(R"({"status":"ok","languages":[{"name":"English"}]})"));
  EXPECT_FALSE(decodeLanguagesResponse(R"({"status":"ok","languages":["en"]})"));
  EXPECT_FALSE(decodeDictionaryResponse(R"({"status":"ok"})"));
  EXPECT_FALSE(decodeDictionaryResponse(
      R"({"status":"ok","dictionary":[{"id":1,"phrase":"p","replacement":"r"}]})"));
}

TEST(AccountRecordsTest, AnAddedEntryNeedsAllItsFields) {
  EXPECT_EQ(decodeDictionaryAddResponse(
                R"({"status":"ok","entry":{"id":"1","phrase":"p","replacement":"r"}})"),
            (DictionaryItemDto{u"1"_s, u"p"_s, u"r"_s}));
  EXPECT_FALSE(decodeDictionaryAddResponse(R"({"status":"ok","entry":{"id":"1","phrase":"p"}})"));
  EXPECT_FALSE(decodeDictionaryAddResponse(R"({"status":"ok","entry":null})"));
  EXPECT_FALSE(
      decodeDictionaryAddResponse(R"({"entry":{"id":"1","phrase":"p","replacement":"r"}})"));
}

}  // namespace
}  // namespace vemo
