#include "session/DictationRemoteControl.h"

#include "SessionFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;

using DictationRemoteControlTest = SessionFixture;

TEST_F(DictationRemoteControlTest, StartStopAndToggleDriveADictation) {
  startUp();
  int quits = 0;
  int reopenings = 0;
  DictationRemoteControl remote(
      *appState, {.quit = [&] { ++quits; }, .reopen = [&] { ++reopenings; }, .open = {}});
  EXPECT_EQ(remote.status(), u"idle"_s);
  EXPECT_EQ(remote.start(), u"recording"_s);
  EXPECT_EQ(remote.start(), u"recording"_s) << "a second start changes nothing";
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(dictation_started {"mode":"hold","shortcut":"eitherOption"})"));
  EXPECT_EQ(remote.stop(), u"idle"_s);
  EXPECT_EQ(remote.stop(), u"idle"_s);
  clock.advance(1s);
  EXPECT_EQ(remote.toggle(), u"recording"_s);
  EXPECT_EQ(remote.stop(), u"idle"_s) << "whatever began the recording";
  auth->signOut();
  EXPECT_EQ(remote.start(), u"idle: Sign in to connect"_s);
  remote.quit();
  EXPECT_EQ(quits, 1);
  remote.reopen();
  EXPECT_EQ(reopenings, 1);
}

TEST_F(DictationRemoteControlTest, TheUserSignsInAndOut) {
  configuration.googleClientId = u"77.example"_s;
  configuration.googleAuthorizationEndpoint = QUrl(u"https://accounts.example/auth"_s);
  startUp();
  QStringList opened;
  DictationRemoteControl remote(
      *appState,
      {.quit = {}, .reopen = {}, .open = [&](const QString& address) { opened.append(address); }});
  remote.signIn();
  clock.advance(0s);
  EXPECT_TRUE(auth->isWorking());
  EXPECT_EQ(browser.pages().size(), 1);
  remote.signIn();
  clock.advance(0s);
  EXPECT_EQ(browser.pages().size(), 2) << "in place of the first";
  EXPECT_EQ(remote.cancelSignIn(), u"idle"_s);
  clock.advance(0s);
  EXPECT_FALSE(auth->isWorking());
  EXPECT_EQ(remote.signOut(), u"idle: Sign in to connect"_s);
  remote.open(u"vemo://x"_s);
  EXPECT_EQ(opened, QStringList{u"vemo://x"_s});
}

}  // namespace
}  // namespace vemo
