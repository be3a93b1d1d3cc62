#include "integrations/SlackRecords.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(SlackRecordsTest, AMembersFieldsComeFromTheirPlacesInTheAnswer) {
  const auto users = membersIn(R"({"ok":true,"members":[{"id":"U1","team_id":"T1","name":"maria",
      "deleted":false,"real_name":"Maria Gomez","is_bot":false,
      "profile":{"display_name":"mg","real_name":"Other"}}],
      "response_metadata":{"next_cursor":"more"}})");
  EXPECT_THAT(users, ElementsAre(SlackUser{u"U1"_s, u"maria"_s, u"Maria Gomez"_s, u"mg"_s, false}));
}

TEST(SlackRecordsTest, DeletedMembersSlackItselfAndMembersWithoutHandleAreDropped) {
  const auto users = membersIn(R"({"members":[
      {"id":"U1","name":"gone","deleted":true},
      {"id":"USLACKBOT","name":"slackbot"},
      {"id":"uslackbot","name":"lookalike"},
      {"id":"U2","name":"","real_name":"No Handle"},
      {"id":"U3","real_name":"No Handle Either"},
      {"id":"U4","name":"robot","is_bot":true},
      {"id":"U5","name":"kept","deleted":"true"}]})");
  EXPECT_THAT(users, ElementsAre(SlackUser{u"uslackbot"_s, u"lookalike"_s, {}, {}, false},
                                 SlackUser{u"U4"_s, u"robot"_s, {}, {}, true},
                                 SlackUser{u"U5"_s, u"kept"_s, {}, {}, false}));
}

TEST(SlackRecordsTest, AnEmptyRealNameIsKeptAndAnEmptyHandleIsDroppedEvenWithARealName) {
  const auto users = membersIn(R"({"members":[{"id":"U1","name":"handle","real_name":""},
                                              {"id":"U2","name":"","real_name":"Maria"}]})");
  EXPECT_THAT(users, ElementsAre(SlackUser{u"U1"_s, u"handle"_s, {}, {}, false}));
}

TEST(SlackRecordsTest, FieldsOfOtherTypesReadAsEmptyOrFalse) {
  const auto users = membersIn(R"({"members":[{"id":1,"name":"a","real_name":["x"],"is_bot":1,
                                               "deleted":1,"profile":"none"}]})");
  EXPECT_THAT(users, ElementsAre(SlackUser{{}, u"a"_s, {}, {}, false}));
  EXPECT_THAT(membersIn(R"({"members":[{"name":{"a":1}}]})"), IsEmpty());
}

TEST(SlackRecordsTest, ArchivedAndNamelessChannelsAreDroppedInTheOrderOfTheAnswer) {
  const auto channels = channelsIn(R"({"channels":[
      {"id":"C3","name":"zebra","is_private":true},
      {"id":"C1","name":"old","is_archived":true},
      {"id":"C2","name":""},
      {"id":"C4","name":"alpha","is_private":null}]})");
  EXPECT_THAT(channels, ElementsAre(SlackChannel{u"C3"_s, u"zebra"_s, true},
                                    SlackChannel{u"C4"_s, u"alpha"_s, false}));
}

TEST(SlackRecordsTest, AnAnswerThatIsNotTheExpectedJsonHoldsNobody) {
  for (const QByteArray& answer :
       {""_ba, "<html>no</html>"_ba, "null"_ba, "[]"_ba, "{}"_ba, R"({"ok":false})"_ba,
        R"({"members":null,"channels":7})"_ba, R"({"members":{"name":"a"},"channels":"b"})"_ba,
        R"({"members":[{"name":"a"},7],"channels":[{"name":"a"},null]})"_ba,
        R"({"members":[{"name":"a"}],"channels":[{"name":"a"})"_ba, "\xff\xfe{\0}\0"_ba}) {
    EXPECT_THAT(membersIn(answer), IsEmpty()) << answer.toStdString();
    EXPECT_THAT(channelsIn(answer), IsEmpty()) << answer.toStdString();
    EXPECT_EQ(teamNameIn(answer), std::nullopt) << answer.toStdString();
  }
}

TEST(SlackRecordsTest, TheTeamIsAString) {
  EXPECT_EQ(teamNameIn(R"({"ok":true,"team":"Subarachnoid Workspace"})"),
            u"Subarachnoid Workspace"_s);
  EXPECT_EQ(teamNameIn(R"({"team":""})"), u""_s);
  EXPECT_EQ(teamNameIn(R"({"team":{"name":"x"}})"), std::nullopt);
}

TEST(SlackRecordsTest, ACacheComesBackAsItWasWritten) {
  const SlackUsers users{{u"U1"_s, u"a"_s, u"Ä \"quoted\"\n😀"_s, u""_s, true}, {}};
  const SlackChannels channels{{u"C1"_s, u"general"_s, true}};
  EXPECT_EQ(decodeSlackUsers(encodeSlackUsers(users)), users);
  EXPECT_EQ(decodeSlackChannels(encodeSlackChannels(channels)), channels);
  EXPECT_EQ(encodeSlackUsers({}), "[]");
  EXPECT_EQ(encodeSlackChannels(channels), R"([{"id":"C1","isPrivate":true,"name":"general"}])");
}

TEST(SlackRecordsTest, ACacheWithOneUnreadableRecordIsUnreadable) {
  EXPECT_EQ(decodeSlackUsers(R"([{"id":"U","name":"a","realName":"b","displayName":"c",
                                  "isBot":false,"later":"field"}])")
                ->size(),
            1U);
  for (const QByteArray& cache :
       {""_ba, "{}"_ba, "[1]"_ba, R"([{"id":"U"}])"_ba,
        R"([{"id":"U","name":"a","realName":"b","displayName":"c","isBot":"no"}])"_ba,
        R"([{"id":"U","name":"a","realName":"b","displayName":null,"isBot":false}])"_ba})
    EXPECT_EQ(decodeSlackUsers(cache), std::nullopt) << cache.toStdString();
  EXPECT_EQ(decodeSlackChannels(R"([{"id":"C","name":"a"}])"), std::nullopt);
}

}  // namespace
}  // namespace vemo
