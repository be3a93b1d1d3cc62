// The Slack directory over real HTTP, against a server that behaves and one that doesn't.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "SlackServer.h"
#include "base/TaskScope.h"
#include "fakes/FakeSecretBackend.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestStorage.h"
#include "integrations/SlackManager.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"
#include "storage/DeploymentConfiguration.h"
#include "storage/SecureTokenStore.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Delivery = SlackServer::Delivery;

class SlackManagerHttpTest : public testing::Test {
 protected:
  SlackManagerHttpTest() { configuration.slackApiBaseURL = server.apiBaseURL(); }

  bool connect(const QString& token = QString::fromLatin1(SlackServer::goodToken)) {
    std::optional<bool> result;
    scope.start(
        [&](std::stop_token stop) { return keep(&result, slack.connect(token, std::move(stop))); });
    EXPECT_TRUE(loop.runUntil([&result] { return result.has_value(); }));
    EXPECT_FALSE(slack.isSyncing());
    return result.value_or(false);
  }

  static Task<> keep(std::optional<bool>* result, Task<bool> connecting) {
    *result = co_await std::move(connecting);
  }

  QtTestLoop loop;
  SlackServer server;
  QtMainThread mainThread;
  QtClock clock{mainThread};
  TestStorage storage{clock};
  FakeSecretBackend secrets;
  SecureTokenStore tokens{{&secrets}, storage.debugLog};
  DeploymentConfiguration configuration = DeploymentConfiguration::builtIn();
  QtHttpSession session{mainThread};
  SerialQueue reader{"slack reader"};
  SlackManager slack{{.tokens = tokens,
                      .settings = storage.settings,
                      .debugLog = storage.debugLog,
                      .session = session,
                      .configuration = configuration,
                      .reader = SlackManager::Reader{reader, mainThread}}};
  TaskScope scope{mainThread};
};

TEST_F(SlackManagerHttpTest, ReadsAWorkspaceInTheShapesOfTheDocumentation) {
  EXPECT_TRUE(connect());
  EXPECT_TRUE(slack.isConnected());
  EXPECT_EQ(slack.workspaceName(), u"Subarachnoid Workspace"_s);
  EXPECT_THAT(slack.users(),
              ElementsAre(SlackUser{u"W012A3CDE"_s, u"spengler"_s, u"Egon Spengler"_s,
                                    u"spengler"_s, false},
                          SlackUser{u"W07QCRPA4"_s, u"glinda"_s, u"Glinda Southgood"_s,
                                    u"Glinda the Fairly Good"_s, false}));
  EXPECT_THAT(slack.channels(), ElementsAre(SlackChannel{u"C012AB3CD"_s, u"general"_s, false},
                                            SlackChannel{u"C061EG9T2"_s, u"design-team"_s, true}));
  EXPECT_EQ(slack.resolveUserMention(u"egon"_s), u"@spengler"_s);
  EXPECT_EQ(slack.resolveChannelMention(u"design team"_s), u"#design-team"_s);
}

TEST_F(SlackManagerHttpTest, OnlyTheFirstPageIsFetchedThoughTheCursorsRepeatForEver) {
  connect();
  std::vector<QByteArray> targets;
  for (const auto& request : server.requests()) {
    targets.push_back(request.target);
    EXPECT_EQ(request.authorization, "Bearer xoxp-good");
  }
  EXPECT_THAT(targets, ElementsAre("/api/auth.test", "/api/users.list?limit=500",
                                   "/api/conversations.list?types=public_channel,private_channel"
                                   "&limit=500"));
}

TEST_F(SlackManagerHttpTest, ARejectedTokenReportsSuccessWithNobody) {
  EXPECT_TRUE(connect(u"xoxp-bad"_s));
  EXPECT_TRUE(slack.isConnected());
  EXPECT_THAT(slack.users(), IsEmpty());
  EXPECT_EQ(slack.lastSyncError(), std::nullopt);
}

TEST_F(SlackManagerHttpTest, TheStatusIsNotLookedAt) {
  server.answer("auth.test", {R"({"team":"Teapots"})", 401});
  server.answer("users.list", {R"({"members":[{"id":"U1","name":"maria"}]})", 500});
  server.answer("conversations.list", {R"({"channels":[{"id":"C1","name":"general"}]})", 429});
  EXPECT_TRUE(connect());
  EXPECT_EQ(slack.workspaceName(), u"Teapots"_s);
  EXPECT_THAT(slack.users(), SizeIs(1));
  EXPECT_THAT(slack.channels(), SizeIs(1));
}

TEST_F(SlackManagerHttpTest, WrongTypesHtmlAndHalfAnswersEmptyTheirListAndTheSyncGoesOn) {
  const SlackServer::Answer oddAnswers[] = {
      {"<!DOCTYPE html><html><body>Log in to the network</body></html>"},
      {R"({"ok":true,"members":{"a":1},"channels":"none"})"},
      {R"({"ok":true,"members":[1,2],"channels":[null]})"},
      {R"({"ok":true,"members":[{"id":"U1","name":"maria"}],"channels":[{"name":"g"}]})", 200,
       Delivery::HalfAsWhole},
      {""},
      {"\xff\xfe\x00\x01"_ba},
      {QByteArray(2000, '[')},
  };
  for (const auto& odd : oddAnswers) {
    ASSERT_TRUE(connect());
    ASSERT_THAT(slack.users(), SizeIs(2));
    server.answer("users.list", odd);
    EXPECT_TRUE(connect()) << odd.body.toStdString();
    EXPECT_THAT(slack.users(), IsEmpty()) << odd.body.toStdString();
    EXPECT_THAT(slack.channels(), SizeIs(2)) << odd.body.toStdString();
    server.answer("conversations.list", odd);
    EXPECT_TRUE(connect()) << odd.body.toStdString();
    EXPECT_THAT(slack.channels(), IsEmpty()) << odd.body.toStdString();
    server.answer("users.list", {R"({"members":[{"name":"a"},{"name":"b"}]})"});
    server.answer("conversations.list", {R"({"channels":[{"name":"a"},{"name":"b"}]})"});
  }
}

TEST_F(SlackManagerHttpTest, ACutConnectionEndsTheSyncWithTheSystemsWords) {
  for (const Delivery delivery :
       {Delivery::ClosedBeforeAnswer, Delivery::ClosedInHead, Delivery::ClosedInBody}) {
    server.answer("users.list", {R"({"members":[{"id":"U1","name":"maria"}]})", 200, delivery});
    EXPECT_FALSE(connect());
    EXPECT_FALSE(slack.lastSyncError().value_or(QString()).isEmpty());
    EXPECT_EQ(slack.workspaceName(), u"Subarachnoid Workspace"_s) << "what came before stays";
    EXPECT_THAT(slack.users(), IsEmpty());
    EXPECT_FALSE(slack.isConnected());
  }
}

TEST_F(SlackManagerHttpTest, AServerThatIsNotThereIsATransportFailure) {
  configuration.slackApiBaseURL = QUrl(u"http://127.0.0.1:1/api/"_s);
  EXPECT_FALSE(connect());
  EXPECT_TRUE(slack.lastSyncError().has_value());
}

TEST_F(SlackManagerHttpTest, ATokenWithALineEndInItIsRefusedNotSent) {
  EXPECT_FALSE(connect(u"xoxp-good\r\nX-Injected: yes"_s));
  EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(SlackManagerHttpTest, AListOfAHundredThousandIsTakenWhole) {
  QByteArray members = R"({"ok":true,"members":[)";
  for (int i = 0; i < 100'000; ++i) {
    const QByteArray number = QByteArray::number(i);
    members += R"({"id":"U)" + number + R"(","name":"user)" + number + R"("},)";
  }
  members.chop(1);
  server.answer("users.list", {members + "]}"});
  EXPECT_TRUE(connect());
  EXPECT_THAT(slack.users(), SizeIs(100'000));
  EXPECT_EQ(slack.resolveUserMention(u"user99999"_s), u"@user99999"_s);
  EXPECT_EQ(slack.resolveUserMention(u"user9999"_s), u"@user9999"_s);
  EXPECT_EQ(slack.resolveUserMention(u"u"_s), u"@user0"_s);
}

TEST_F(SlackManagerHttpTest, AnAnswerLongerThanAnyWorkspaceHoldsNobody) {
  server.answer("users.list", {R"({"members":[{"id":"U1","name":"maria"}],"padding":")" +
                               QByteArray(maximumHttpBodySize, 'x') + "\"}"});
  EXPECT_TRUE(connect());
  EXPECT_THAT(slack.users(), IsEmpty());
  EXPECT_THAT(slack.channels(), SizeIs(2));
}

}  // namespace
}  // namespace vemo
