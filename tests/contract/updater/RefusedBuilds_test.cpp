// Builds that don't start on this machine: not tried again by themselves, and told of.
#include "UpdaterFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class RefusedBuildsTest : public UpdaterFixture {};

TEST_F(RefusedBuildsTest, ABuildThatDidNotStartWellAndOlderOnesAreNotTakenByThemselves) {
  writeTestFile(root + u"/refused"_s, "3", false);
  publish({release(2, "1.1.0"), release(3, "1.2.0")});
  EXPECT_THAT(check(), ElementsAre(1001));
  publish({release(2, "1.1.0"), release(3, "1.2.0"), release(4, "1.3.0")});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_EQ(delegate.ready->displayVersion, u"1.3.0"_s);
}

TEST_F(RefusedBuildsTest, ABuildThatDidNotStartWellIsTakenAgainWhenTheUserAsks) {
  writeTestFile(root + u"/refused"_s, "2", false);
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(UpdateCheck::UserInitiated), IsEmpty());
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(RefusedBuildsTest, AVersionThatTheMachineIsTooBusyToAskIsAskedAgainAndNotFetchedAgain) {
  const QString made = folder.filePath(u"made"_s);
  const QString isIdle = folder.filePath(u"idle"_s);
  writeTestFile(made + u"/bin/vemo"_s,
                "#!/bin/sh\n[ -e '" + QFile::encodeName(isIdle) +
                    "' ] || exec sleep 600\necho 'Vemo 1.1.0 (2)'\n",
                true);
  publish({packed(made, 2, "1.1.0")});
  answerLimit = 200ms;
  EXPECT_THAT(check(), ElementsAre(4006));
  EXPECT_EQ(SelfContainedCopy(root).refusedBuild(), 0U);
  EXPECT_THAT(leftovers(), ElementsAre(u".download-2"_s));
  writeTestFile(isIdle, {}, false);
  server.asked.clear();
  answerLimit = versionCheckLimit;
  start();
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(server.asked, ElementsAre("keys.txt", "appcast.xml"));
  EXPECT_TRUE(delegate.ready);
}

TEST_F(RefusedBuildsTest, ABuildThatWasGivenUpIsTold) {
  writeTestFile(root + u"/refused"_s, "2", false);
  start();
  EXPECT_THAT(log, ElementsAre(u"updates: build 2 didn't start well here"_s));
}

TEST_F(RefusedBuildsTest, TheUserIsToldOnceThatAnInstalledBuildHasGivenWay) {
  publish({release(2, "1.1.0")});
  for (const auto kind : {UpdateCheck::Scheduled, UpdateCheck::UserInitiated}) {
    EXPECT_THAT(check(kind), IsEmpty());
    updater->installOnQuit();
    for (int i = 0; i < 3; ++i) SelfContainedCopy(root).beginStart();
    ASSERT_EQ(startedVersion(root), "Vemo 1.0.0");
    announced.clear();
    start();
    clock.advance(15s - 1ms);
    EXPECT_THAT(announced, IsEmpty()) << "the desktop may still be starting";
    clock.advance(1ms);
    EXPECT_THAT(announced, ElementsAre(u"Back to Vemo 1.0.0"_s));
    start();
    clock.advance(15s);
    EXPECT_THAT(announced, SizeIs(1));
  }
}

TEST_F(RefusedBuildsTest, ARefusedBuildThatTheUserHasAskedForAndThatRunsHasNotGivenWay) {
  SelfContainedCopy(root).refuse(2);
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(UpdateCheck::UserInitiated), IsEmpty());
  updater->installOnQuit();
  announced.clear();
  start();
  clock.advance(15s);
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(RefusedBuildsTest, WhatIsInstalledBeforeTheUserIsToldIsNotForgotten) {
  publish({release(2, "1.1.0"), release(3, "1.2.0")});
  writeTestFile(folder.filePath(u"updates.json"_s), R"({"installedBuild": "2"})", false);
  SelfContainedCopy(root).refuse(2);
  EXPECT_THAT(check(), IsEmpty());
  updater->installOnQuit();
  clock.advance(15s);
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_EQ(UpdateMemory::read(folder.filePath(u"updates.json"_s), keys.publicKey).installedBuild,
            3U);
}

TEST_F(RefusedBuildsTest, WhatDidNotPassItsCheckHasNotGivenWay) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  updater->installOnQuit();
  SelfContainedCopy(root).startedWell();
  SelfContainedCopy(root).refuse(3);
  start();
  clock.advance(15s);
  EXPECT_THAT(announced, IsEmpty());
}

TEST_F(RefusedBuildsTest, WhatTheUserHasPutBackHasNotGivenWay) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  updater->installOnQuit();
  QFile::remove(root + u"/current"_s);
  ASSERT_TRUE(QFile::link(u"versions/1"_s, root + u"/current"_s));
  start();
  clock.advance(15s);
  EXPECT_THAT(announced, IsEmpty());
}

}  // namespace vemo
