#include "shaping/SlackRules.h"

#include "ShapingFixture.h"

namespace vemo {
namespace {

class SlackRulesTest : public ShapingFixture {
 protected:
  SlackRulesTest() { switchOff(keys::integrationVSCode); }

  void setUsers(SlackUsers users) { directory = PlainMentions(std::move(users), {}); }
  void setChannels(const QStringList& names) {
    SlackChannels channels;
    for (const QString& name : names) channels.push_back({.id = name, .name = name});
    directory = PlainMentions({}, std::move(channels));
  }
};

TEST_F(SlackRulesTest, TagEveryoneIsABroadcast) {
  EXPECT_EQ(shaped(u"tag everyone in the meeting"_s), u"@everyone in the meeting"_s);
}

TEST_F(SlackRulesTest, InChannelGeneralIsWrittenWithAHash) {
  EXPECT_EQ(shaped(u"post in channel general"_s), u"post #general"_s);
  setChannels({u"random"_s, u"General"_s});
  EXPECT_EQ(shaped(u"post in channel general"_s), u"post #General"_s);
  EXPECT_EQ(shaped(u"post IN  Channel general, please"_s), u"post #General, please"_s);
}

TEST_F(SlackRulesTest, AnUnknownChannelIsWrittenInLowerCase) {
  EXPECT_EQ(shaped(u"channel Design-Team"_s), u"#design-team"_s);
}

TEST_F(SlackRulesTest, AChannelsNameEndsAtAWordBoundary) {
  EXPECT_EQ(shaped(u"channel team-- and channels x"_s), u"#team-- and channels x"_s);
  EXPECT_EQ(shaped(u"channel - x"_s), u"channel - x"_s);
}

TEST_F(SlackRulesTest, ARepeatedMentionBecomesOne) {
  EXPECT_EQ(shaped(u"ask maria and tag maria"_s), u"ask @Maria"_s);
  for (const auto* lead : {u"to", u"with", u"for", u"ping", u"ask", u"tell"}) {
    const QString word = QString::fromUtf16(lead);
    EXPECT_EQ(shaped(word.toUpper() + u"  Maria  and mention MARIA now"_s),
              word.toUpper() + u" @Maria now"_s);
  }
  EXPECT_EQ(shaped(u"ask maria and tag marian"_s), u"ask maria and @Marian"_s);
  EXPECT_EQ(shaped(u"ask maria and tag john"_s), u"ask maria and @John"_s);
  EXPECT_EQ(shaped(u"call maria and tag maria"_s), u"call maria and @Maria"_s);
}

TEST_F(SlackRulesTest, ARepeatedMentionTakesTheKnownName) {
  setUsers(
      {{.id = u"U1"_s, .name = u"mgomez"_s, .realName = u"Maria Gomez"_s, .displayName = u"mg"_s}});
  EXPECT_EQ(shaped(u"ask maria and tag maria"_s), u"ask @mg"_s);
}

TEST_F(SlackRulesTest, MentionJohnDoeIsWrittenWithACapital) {
  EXPECT_EQ(shaped(u"mention john.doe"_s), u"@John.doe"_s);
  EXPECT_EQ(shaped(u"please Tag john_doe-2."_s), u"please @John_doe-2."_s);
}

TEST_F(SlackRulesTest, ATaggedUserIsFoundByTheBeginningOfTheRealName) {
  setUsers({{.id = u"U1"_s, .name = u"x"_s, .realName = u"Maria Gomez"_s, .displayName = u"mg"_s}});
  EXPECT_EQ(shaped(u"tag maria"_s), u"@mg"_s);
}

TEST_F(SlackRulesTest, BroadcastNamesAreNobodysNames) {
  EXPECT_EQ(shaped(u"tag here."_s), u"@here."_s);
  EXPECT_EQ(shaped(u"tag everyone's"_s), u"@everyone's"_s);
}

TEST_F(SlackRulesTest, ABroadcastThatAnEarlierRuleBringsAboutIsLeftAlone) {
  // Everybody has had a turn when the channel rule leaves "tag" before a reserved name.
  for (const auto& name : {u"everyone"_s, u"here"_s, u"Channel"_s}) {
    setUsers(
        {{.id = u"U1"_s, .name = u"mention"_s, .realName = {}, .displayName = u"tag "_s + name}});
    EXPECT_EQ(shaped(u"ask mention and tag mention"_s), u"ask @tag "_s + name);
  }
  setUsers({{.id = u"U1"_s, .name = u"mention"_s, .realName = {}, .displayName = u"tag them"_s}});
  EXPECT_EQ(shaped(u"ask mention and tag mention"_s), u"ask @@Them"_s);
}

TEST_F(SlackRulesTest, SendReportToMariaPutsTheMentionFirst) {
  EXPECT_EQ(shaped(u"send the report to @Maria."_s), u"@Maria the report"_s);
  EXPECT_EQ(shaped(u"Send  the report  to  @Maria!"_s), u"@Maria the report"_s);
  EXPECT_EQ(shaped(u"send this to mention maria?"_s), u"@Maria this"_s);
  EXPECT_EQ(shaped(u"send it to tom to @Maria"_s), u"@Maria it to tom"_s);
}

TEST_F(SlackRulesTest, TheClosingPointOfASentMessageGoes) {
  EXPECT_EQ(shaped(u"send it to @john.doe."_s), u"@john.doe it"_s);
  EXPECT_EQ(shaped(u"send it to @Maria..."_s), u"@Maria.. it"_s);
  EXPECT_EQ(shaped(u"send it to @Maria.?"_s), u"@Maria. it"_s);
  EXPECT_EQ(shaped(u"send it to @."_s), u"@. it"_s);
  EXPECT_EQ(shaped(u"send it to @Maria!?"_s), u"send it to @Maria!?"_s);
}

TEST_F(SlackRulesTest, PleaseSendItStaysAsItIs) {
  EXPECT_EQ(shaped(u"please send it to @Maria"_s), u"please send it to @Maria"_s);
  EXPECT_EQ(shaped(u" send it to @Maria"_s), u" send it to @Maria"_s);
  EXPECT_EQ(shaped(u"send it to @Maria now"_s), u"send it to @Maria now"_s);
  EXPECT_EQ(shaped(u"send to @Maria"_s), u"send to @Maria"_s);
  EXPECT_EQ(shaped(u"resend it to @Maria"_s), u"resend it to @Maria"_s);
}

TEST_F(SlackRulesTest, AMessageThatSpansLinesIsNotReordered) {
  EXPECT_EQ(shaped(u"send the\nreport to @Maria"_s), u"send the\nreport to @Maria"_s);
  EXPECT_EQ(shaped(u"send the report\nto @Maria\n"_s), u"@Maria the report"_s);
}

TEST_F(SlackRulesTest, TheRulesRunInTheirOrder) {
  // A broadcast comes before the channel's name, a name before the emoji.
  EXPECT_EQ(shaped(u"tag channel general"_s), u"@#general"_s);
  EXPECT_EQ(shaped(u"tag fire"_s), u"@:fire:"_s);
}

}  // namespace
}  // namespace vemo
