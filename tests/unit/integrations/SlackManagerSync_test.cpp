// How SlackManager reads a directory from Slack, and what it makes of trouble.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <semaphore>

#include "SlackManagerFixture.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using SlackManagerSyncTest = SlackManagerTest;

TEST_F(SlackManagerSyncTest, TheThreeRequestsAreTheseInThisOrder) {
  answerAll();
  connect(u"xoxp-1"_s);
  ASSERT_THAT(http.requests(), SizeIs(3));
  EXPECT_EQ(http.requests()[0].url, QUrl(u"https://slack.com/api/auth.test"_s));
  EXPECT_EQ(http.requests()[1].url.toEncoded(), "https://slack.com/api/users.list?limit=500");
  EXPECT_EQ(http.requests()[2].url.toEncoded(),
            "https://slack.com/api/conversations.list?types=public_channel,private_channel"
            "&limit=500");
  for (const auto& request : http.requests()) {
    EXPECT_EQ(request.method, "GET");
    EXPECT_EQ(request.body, "");
    EXPECT_EQ(request.timeout, 60s);
    EXPECT_THAT(request.headers, ElementsAre(std::pair("Authorization"_ba, "Bearer xoxp-1"_ba)));
  }
}

TEST_F(SlackManagerSyncTest, AFailedAuthTestEndsTheSyncBeforeUsersListIsTried) {
  http.fail(authTest, UrlError::CannotFindHost, {}, u"A server can't be found."_s);
  testing::internal::CaptureStdout();
  EXPECT_FALSE(connect(u"xoxp-1"_s));
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              HasSubstr("[Vemo Slack] Sync error: A server can't be found.\n"));
  EXPECT_THAT(http.requests(), SizeIs(1));
  EXPECT_EQ(slack->lastSyncError(), u"A server can't be found."_s);
  EXPECT_FALSE(slack->isConnected());
  EXPECT_FALSE(slack->isSyncing());
}

TEST_F(SlackManagerSyncTest, WhatCameBeforeATransportFailureStaysApplied) {
  http.answer(authTest, 200, R"({"team":"Ours"})");
  http.answer(usersList, 200, R"({"members":[{"id":"U1","name":"maria"}]})");
  http.fail(conversationsList, UrlError::NetworkConnectionLost);
  EXPECT_FALSE(connect(u"xoxp-1"_s));
  EXPECT_EQ(slack->workspaceName(), u"Ours"_s);
  EXPECT_THAT(slack->users(), SizeIs(1));
  EXPECT_FALSE(slack->isConnected());
  EXPECT_TRUE(storage.settings.contains(keys::slackCachedUsers));
  EXPECT_FALSE(storage.settings.contains(keys::slackCachedChannels));
}

TEST_F(SlackManagerSyncTest, AFailureLeavesAConnectedDirectoryConnected) {
  answerAll();
  connect(u"xoxp-1"_s);
  http.fail(authTest, UrlError::NotConnectedToInternet);
  EXPECT_FALSE(connect(u"xoxp-2"_s));
  EXPECT_TRUE(slack->isConnected());
  EXPECT_THAT(slack->users(), SizeIs(1));
  answerAll();
  EXPECT_TRUE(connect(u"xoxp-2"_s));
  EXPECT_EQ(slack->lastSyncError(), std::nullopt);
}

TEST_F(SlackManagerSyncTest, ARejectedTokenReportsSuccessWithNobodyAndOverwritesTheCache) {
  answerAll();
  connect(u"xoxp-1"_s);
  for (const auto& path : {authTest, usersList, conversationsList})
    http.answer(path, 401, R"({"ok":false,"error":"invalid_auth"})");
  testing::internal::CaptureStdout();
  EXPECT_TRUE(connect(u"xoxp-wrong"_s));
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              HasSubstr("[Vemo Slack] 🚀 Synced Slack: 0 members, 0 channels\n"));
  EXPECT_TRUE(slack->isConnected());
  EXPECT_THAT(slack->users(), IsEmpty());
  EXPECT_THAT(slack->channels(), IsEmpty());
  EXPECT_EQ(slack->workspaceName(), u"Ours"_s) << "without a team name the old one stays";
  EXPECT_EQ(storage.settings.get(keys::slackCachedUsers), "[]"_ba);
  EXPECT_EQ(storage.settings.get(keys::slackCachedChannels), "[]"_ba);
}

TEST_F(SlackManagerSyncTest, ASyncWaitsSixtySecondsForAnAnswerAndNoLonger) {
  http.neverAnswer(authTest);
  beginConnect(u"xoxp-1"_s);
  clock.advance(59'999ms);
  EXPECT_TRUE(slack->isSyncing());
  EXPECT_FALSE(result.has_value());
  clock.advance(1ms);
  mainThread.drain();
  EXPECT_EQ(result, false);
  EXPECT_FALSE(slack->isSyncing());
}

TEST_F(SlackManagerSyncTest, LookupsSeeTheOldDirectoryUntilEachListIsReplaced) {
  answerAll();
  connect(u"xoxp-1"_s);
  http.answer(authTest, 200, R"({"team":"Theirs"})", 1s);
  http.answer(usersList, 200, R"({"members":[{"id":"U2","name":"tom"}]})", 1s);
  http.answer(conversationsList, 200, R"({"channels":[{"id":"C2","name":"random"}]})", 1s);
  beginConnect(u"xoxp-2"_s);
  EXPECT_TRUE(slack->isSyncing());
  EXPECT_EQ(slack->resolveUserMention(u"maria"_s), u"@maria"_s);
  clock.advance(1500ms);
  EXPECT_EQ(slack->workspaceName(), u"Theirs"_s);
  EXPECT_EQ(slack->resolveUserMention(u"maria"_s), u"@maria"_s);
  clock.advance(1s);
  EXPECT_EQ(slack->resolveUserMention(u"maria"_s), std::nullopt);
  EXPECT_EQ(slack->resolveUserMention(u"tom"_s), u"@tom"_s);
  EXPECT_EQ(slack->resolveChannelMention(u"general"_s), u"#general"_s);
  clock.advance(1s);
  EXPECT_EQ(slack->resolveChannelMention(u"general"_s), std::nullopt);
  EXPECT_EQ(slack->resolveChannelMention(u"random"_s), u"#random"_s);
  EXPECT_EQ(result, true);
}

/// As long as `size` by white space alone.
QByteArray padded(const QByteArray& answer, qsizetype size) {
  return answer + QByteArray(size - answer.size(), ' ');
}

TEST_F(SlackManagerSyncTest, AnAnswerFarLongerThanAPageIsReadOnAnotherThread) {
  constexpr qsizetype longest = 1024 * 1024;
  const QByteArray members = R"({"members":[{"id":"U1","name":"maria"}]})";
  const QByteArray channels = R"({"channels":[{"id":"C1","name":"general"}]})";
  http.answer(authTest, 200, R"({"team":"Ours"})");
  http.answer(usersList, 200, padded(members, longest));
  http.answer(conversationsList, 200, padded(channels, longest + 1));
  std::binary_semaphore readerIsFree(0);
  reader.post([&readerIsFree] { readerIsFree.acquire(); });
  beginConnect(u"xoxp-1"_s);
  EXPECT_THAT(slack->users(), SizeIs(1)) << "an answer of a mebibyte is read at once";
  EXPECT_THAT(slack->channels(), IsEmpty());
  EXPECT_TRUE(slack->isSyncing());
  EXPECT_EQ(slack->resolveUserMention(u"maria"_s), u"@maria"_s);

  readerIsFree.release();
  reader.waitUntilIdle();
  mainThread.drain();
  EXPECT_EQ(result, true);
  EXPECT_EQ(slack->resolveChannelMention(u"general"_s), u"#general"_s);
}

TEST_F(SlackManagerSyncTest, AManagerThatGoesAwayWhileALongAnswerIsReadIsNotMissed) {
  http.answer(authTest, 200, R"({"team":"Ours"})");
  http.answer(usersList, 200, padded(R"({"members":[]})", 2 * 1024 * 1024));
  std::binary_semaphore readerIsFree(0);
  reader.post([&readerIsFree] { readerIsFree.acquire(); });
  {
    TaskScope shortLived(mainThread);
    shortLived.start([this](std::stop_token stop) {
      return keep(&result, slack->connect(u"xoxp-1"_s, std::move(stop)));
    });
    mainThread.drain();
  }
  slack.reset();
  readerIsFree.release();
  reader.waitUntilIdle();
  mainThread.drain();
  EXPECT_EQ(result, std::nullopt);
}

TEST_F(SlackManagerSyncTest, TwoSyncsMayRunAtOnce) {
  for (int i = 0; i < 2; ++i) answerAll();
  std::optional<bool> first;
  std::optional<bool> second;
  scope.start([&](std::stop_token stop) { return keep(&first, slack->connect(u"a"_s, stop)); });
  scope.start([&](std::stop_token stop) { return keep(&second, slack->connect(u"b"_s, stop)); });
  mainThread.drain();
  EXPECT_EQ(first, true);
  EXPECT_EQ(second, true);
  EXPECT_THAT(http.requests(), SizeIs(6));
}

TEST_F(SlackManagerSyncTest, CancellingEndsTheSyncAsAFailure) {
  http.neverAnswer(authTest);
  const auto task = beginConnect(u"xoxp-1"_s);
  task.cancel();
  mainThread.drain();
  EXPECT_EQ(result, false);
  EXPECT_FALSE(slack->isSyncing());
}

}  // namespace
}  // namespace vemo
