// Several sessions of one user, each with an updater of its own over one copy and one memory.
#include "UpdaterFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::IsEmpty;

class UserSessionsTest : public UpdaterFixture {};

TEST_F(UserSessionsTest, OfTwoSessionsOfAUserOneInstalls) {
  publish({release(2, "1.1.0")});
  SelfContainedCopy other(root);
  ASSERT_TRUE(other.claim());
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_FALSE(delegate.found);
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_THAT(check(UpdateCheck::UserInitiated), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Update under way"_s));
  EXPECT_THAT(leftovers(), IsEmpty());
  other.letGo();
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_TRUE(delegate.ready);
  EXPECT_FALSE(other.claim()) << "till what is ready is installed";
  updater.reset();
  EXPECT_TRUE(other.claim());
}

TEST_F(UserSessionsTest, ASessionWithNothingReadyIsInNobodysWay) {
  publish({release(2, "1.1.0")});
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::Breaks;
  EXPECT_THAT(check(), ElementsAre(2001));
  EXPECT_TRUE(SelfContainedCopy(root).claim());
}

TEST_F(UserSessionsTest, AVersionThatAnotherSessionInstalledIsNotFetchedOnceMore) {
  publish({release(2, "1.1.0")});
  start();
  makeVersion(root + u"/versions/2"_s, "1.1.0", 2);
  QFile::remove(root + u"/current"_s);
  QFile::link(u"versions/2"_s, root + u"/current"_s);
  EXPECT_THAT(check(), ElementsAre(1001));
}

TEST_F(UserSessionsTest, APreferenceLeavesWhatAnotherSessionHasSeen) {
  publish({}, 5);
  check();
  SelfUpdater idle(with(), delegate, delegate);
  publish({}, 9);
  check();
  idle.setAutomaticallyDownloadsUpdates(false);
  publish({release(2, "1.1.0")}, 7);
  EXPECT_THAT(check(), ElementsAre(1002));
  EXPECT_FALSE(updater->automaticallyDownloadsUpdates());
}

TEST_F(UserSessionsTest, AKeyThatAnotherSessionHasLearntDuringACheckStays) {
  publish({});
  check();
  publish({release(2, "1.1.0")});
  const QString file = folder.filePath(u"updates.json"_s);
  UpdateMemory memory = UpdateMemory::read(file, keys.publicKey);
  memory.key = SigningKeys::generate().publicKey;
  server.beforeAnswer = [&](const QByteArray& name) {
    if (name == "appcast.xml") memory.write(file, keys.publicKey);
  };
  EXPECT_THAT(check(), ElementsAre(1002));
  EXPECT_FALSE(delegate.ready);
  EXPECT_EQ(UpdateMemory::read(file, keys.publicKey).key, memory.key);
}

TEST_F(UserSessionsTest, WhatCouldNotBeWrittenHoldsAsLongAsItRuns) {
  publish({}, 5);
  check();
  const QString memory = folder.filePath(u"updates.json"_s);
  QFile::remove(memory);
  QDir().mkpath(memory + u"/in the way"_s);
  publish({}, 9);
  check();
  publish({release(2, "1.1.0")}, 7);
  EXPECT_THAT(check(), ElementsAre(1002));
}

}  // namespace vemo
