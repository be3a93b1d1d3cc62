#include "ui/models/SlackConnectionModel.h"

#include "session/SessionFixture.h"
#include "ui/models/ToastModel.h"

namespace vemo {
namespace {

const QString authTest = u"/api/auth.test"_s;

class SlackConnectionModelTest : public SessionFixture {
 protected:
  SlackConnectionModelTest() {
    startUp();
    model.emplace(SlackConnectionModel::With{mainThread, *slack, toast});
    model->open();
  }

  void slackAnswers() {
    http.answer(authTest, 200, R"({"team":"Acme"})");
    http.answer(u"/api/users.list"_s, 200, R"({"members":[]})");
    http.answer(u"/api/conversations.list"_s, 200, R"({"channels":[]})");
  }

  void connectAndSync() {
    model->connectAndSync();
    mainThread.drain();
  }

  ToastModel toast{clock, mainThread};
  std::optional<SlackConnectionModel> model;
};

TEST_F(SlackConnectionModelTest, AFreshSheetWaitsForAToken) {
  EXPECT_TRUE(model->isOpen());
  EXPECT_FALSE(model->canConnect());
  EXPECT_EQ(model->connectLabel(), u"Connect & Sync"_s);
  EXPECT_EQ(model->failure(), QString());
}

TEST_F(SlackConnectionModelTest, ABlankTokenIsNone) {
  model->setToken(u" \n"_s);
  EXPECT_FALSE(model->canConnect());
  model->connectAndSync();
  EXPECT_FALSE(model->isConnecting());
}

TEST_F(SlackConnectionModelTest, ASyncThatSucceedsClosesTheSheetAndSaysSo) {
  model->setToken(u"xoxp-1"_s);
  slackAnswers();
  EXPECT_TRUE(model->canConnect());
  connectAndSync();
  EXPECT_FALSE(model->isOpen());
  EXPECT_EQ(model->token(), QString()) << "the sheet keeps no secret";
  EXPECT_TRUE(toast.isShown());
  EXPECT_EQ(toast.message(), u"Slack Workspace Synced!"_s);
  EXPECT_TRUE(model->isConnected());
  EXPECT_EQ(model->workspace(), u"Acme"_s);
}

TEST_F(SlackConnectionModelTest, DuringTheCallItSaysThatItIsConnecting) {
  model->setToken(u"xoxp-1"_s);
  http.neverAnswer(authTest);
  connectAndSync();
  EXPECT_TRUE(model->isConnecting());
  EXPECT_FALSE(model->canConnect());
  EXPECT_EQ(model->connectLabel(), u"Connecting..."_s);
}

TEST_F(SlackConnectionModelTest, AFailureIsToldInTheSheetAndTheTokenStays) {
  model->setToken(u"xoxp-1"_s);
  http.fail(authTest, UrlError::NotConnectedToInternet);
  connectAndSync();
  EXPECT_TRUE(model->isOpen());
  EXPECT_EQ(model->failure(), u"Failed to sync Slack. Check token."_s);
  EXPECT_EQ(model->token(), u"xoxp-1"_s);
  EXPECT_TRUE(model->canConnect());
  EXPECT_FALSE(toast.isShown());
}

TEST_F(SlackConnectionModelTest, ATokenThatCannotBeKeptIsAFailure) {
  secrets.addFailure = SecretError::Failed;
  model->setToken(u"xoxp-1"_s);
  connectAndSync();
  EXPECT_EQ(model->failure(), u"Failed to sync Slack. Check token."_s);
}

TEST_F(SlackConnectionModelTest, TypingAnotherTokenTakesTheFailureAway) {
  model->setToken(u"xoxp-1"_s);
  http.fail(authTest, UrlError::NotConnectedToInternet);
  connectAndSync();
  model->setToken(u"xoxp-2"_s);
  EXPECT_EQ(model->failure(), QString());
}

TEST_F(SlackConnectionModelTest, DismissingEndsTheCallAndForgetsTheToken) {
  model->setToken(u"xoxp-1"_s);
  http.neverAnswer(authTest);
  connectAndSync();
  model->dismiss();
  mainThread.drain();
  EXPECT_EQ(http.openCount(), 0);
  EXPECT_FALSE(model->isOpen());
  EXPECT_FALSE(model->isConnecting());
  model->open();
  EXPECT_EQ(model->token(), QString());
  EXPECT_EQ(model->failure(), QString()) << "the call that was ended has nothing to say";
}

TEST_F(SlackConnectionModelTest, AWorkspaceIsNamedOnlyWhileItIsConnected) {
  model->setToken(u"xoxp-1"_s);
  slackAnswers();
  connectAndSync();
  slack->disconnect();
  EXPECT_FALSE(model->isConnected());
  EXPECT_EQ(model->workspace(), QString());
}

}  // namespace
}  // namespace vemo
