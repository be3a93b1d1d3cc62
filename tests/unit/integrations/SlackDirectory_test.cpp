#include "integrations/SlackDirectory.h"

#include <gtest/gtest.h>

#include <QStringList>
#include <random>

#include "PlainLookups.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

SlackUser user(const QString& name, const QString& realName = {}, const QString& displayName = {}) {
  return {u"U"_s + name, name, realName, displayName, false};
}

SlackChannel channel(const QString& name) {
  return {u"C"_s + name, name, false};
}

SlackDirectory withUsers(SlackUsers users) {
  return SlackDirectory(std::move(users), {});
}

SlackDirectory withChannels(SlackChannels channels) {
  return SlackDirectory({}, std::move(channels));
}

TEST(SlackDirectoryTest, ASpokenTwoWordChannelMatchesOneWithADashBothWays) {
  const auto directory = withChannels({channel(u"design-team"_s)});
  EXPECT_EQ(directory.resolveChannelMention(u" Design Team\n"_s), u"#design-team"_s)
      << "through the dashed form of what was said";
  const auto mixed = withChannels({channel(u"Design team-leads"_s)});
  EXPECT_EQ(mixed.resolveChannelMention(u"design Team Leads"_s), u"#Design team-leads"_s)
      << "through the blank form of the channel's name";
}

TEST(SlackDirectoryTest, TheBlankFormIsComparedWithWhatWasSaidUntrimmed) {
  const auto directory = withChannels({channel(u"a b-c"_s)});
  EXPECT_EQ(directory.resolveChannelMention(u"a b c"_s), u"#a b-c"_s);
  EXPECT_EQ(directory.resolveChannelMention(u" a b c"_s), std::nullopt);
}

TEST(SlackDirectoryTest, TheFirstChannelInTheListWinsInItsStoredCase) {
  const auto directory = withChannels({channel(u"General Talk"_s), channel(u"General-Talk"_s),
                                       channel(u"general"_s), channel(u"GENERAL"_s)});
  EXPECT_EQ(directory.resolveChannelMention(u"general talk"_s), u"#General Talk"_s);
  EXPECT_EQ(directory.resolveChannelMention(u"GENERAL"_s), u"#general"_s);
  EXPECT_EQ(directory.resolveChannelMention(u"gener"_s), std::nullopt);
  EXPECT_EQ(directory.resolveChannelMention(u" \n"_s), std::nullopt);
}

TEST(SlackDirectoryTest, AHandleBeatsAnEarlierUserMatchedOnlyByRealName) {
  const auto directory =
      withUsers({user(u"mg"_s, u"Maria"_s), user(u"maria"_s, u"Someone Else"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"Maria"_s), u"@maria"_s);
}

TEST(SlackDirectoryTest, OneLetterMatchesTheFirstUserWhoseRealNameOrHandleBeginsWithIt) {
  const auto directory =
      withUsers({user(u"anna"_s, u"Bea"_s), user(u"zed"_s, u"Tom"_s), user(u"tim"_s, u"Ulf"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"t"_s), u"@zed"_s);
  EXPECT_EQ(directory.resolveUserMention(u"b"_s), u"@anna"_s);
  EXPECT_EQ(directory.resolveUserMention(u"u"_s), u"@tim"_s);
  EXPECT_EQ(directory.resolveUserMention(u"x"_s), std::nullopt);
}

TEST(SlackDirectoryTest, AMemberWithoutDisplayNameIsTaggedByItsHandleNotItsRealName) {
  const auto directory = withUsers({user(u"mgomez"_s, u"Maria Gomez"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"maria"_s), u"@mgomez"_s);
}

TEST(SlackDirectoryTest, ACachedMemberWithoutHandleIsTaggedByItsRealName) {
  const auto directory = withUsers({user({}, u"Maria Gomez"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"maria"_s), u"@Maria Gomez"_s);
}

TEST(SlackDirectoryTest, ADisplayNameMatchesWholeOnlyAndIsWhatIsMentioned) {
  const auto directory = withUsers({user(u"x1"_s, u"Maria Gomez"_s, u"MG"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"mg"_s), u"@MG"_s);
  EXPECT_EQ(directory.resolveUserMention(u"m g"_s), std::nullopt);
  EXPECT_EQ(directory.resolveUserMention(u"maria gomez"_s), u"@MG"_s);
  EXPECT_EQ(directory.resolveUserMention(u"maria g"_s), u"@MG"_s);
  EXPECT_EQ(directory.resolveUserMention(u"gomez"_s), std::nullopt);
}

TEST(SlackDirectoryTest, AnEmptyDisplayNameMatchesNobody) {
  EXPECT_EQ(withUsers({user(u"a"_s)}).resolveUserMention(u"  "_s), std::nullopt);
}

TEST(SlackDirectoryTest, AKnownColleagueGetsATagFromAnEmptyDirectory) {
  const SlackDirectory empty;
  for (const auto& spoken : {u"Saoirse Brennan"_s, u"seer sha"_s, u"sur shah"_s, u"saoirse"_s})
    EXPECT_EQ(empty.resolveUserMention(spoken), u"@Saoirse"_s) << spoken.toStdString();
  EXPECT_EQ(empty.resolveUserMention(u" Joaquin "_s), u"@Joaquin"_s);
  EXPECT_EQ(empty.resolveUserMention(u"NIAMH"_s), u"@Niamh"_s);
  EXPECT_EQ(empty.resolveUserMention(u"maria"_s), std::nullopt);
}

TEST(SlackDirectoryTest, AMisheardNameFindsTheColleagueInTheDirectory) {
  const auto directory = withUsers({user(u"sb"_s, u"Saoirse Brennan"_s, u"Saoirse B"_s)});
  EXPECT_EQ(directory.resolveUserMention(u"sur shah"_s), u"@Saoirse B"_s);
}

TEST(SlackDirectoryTest, LookupsGiveWhatPlainWalksGive) {
  std::mt19937 random(8101);
  const QStringList syllables{u"a"_s, u"An"_s, u"na"_s, u"-"_s,  u" "_s, u"Σ"_s,
                              u"İ"_s, u"é"_s,  u"É"_s,  u"😀"_s, u"b"_s, QString(QChar(0xD83D))};
  const auto any = [&](int longest) {
    QString text;
    for (auto length = random() % static_cast<unsigned>(longest + 1); length > 0; --length)
      text += syllables[static_cast<qsizetype>(random() % static_cast<unsigned>(syllables.size()))];
    return text;
  };
  int hits = 0;
  for (int round = 0; round < 2000; ++round) {
    SlackUsers users;
    SlackChannels channels;
    for (auto count = random() % 12; count > 0; --count) {
      users.push_back(user(any(3), any(4), any(3)));
      channels.push_back(channel(any(4)));
    }
    const SlackDirectory directory(users, channels);
    for (int query = 0; query < 20; ++query) {
      const QString spoken = any(4);
      ASSERT_EQ(directory.resolveChannelMention(spoken), plain::resolveChannel(channels, spoken));
      const auto mention = directory.resolveUserMention(spoken);
      ASSERT_EQ(mention, plain::resolveUser(users, spoken));
      if (mention) ++hits;
    }
  }
  EXPECT_GT(hits, 5000);
}

}  // namespace
}  // namespace vemo
