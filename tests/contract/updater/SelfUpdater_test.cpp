#include <QElapsedTimer>

#include "UpdaterFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::IsEmpty;

class SelfUpdaterTest : public UpdaterFixture {};

TEST_F(SelfUpdaterTest, FetchesVerifiesAndInstallsANewerVersion) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty()) << qPrintable(log.join(u'\n'));
  ASSERT_TRUE(delegate.ready);
  EXPECT_EQ(delegate.ready->displayVersion, u"1.1.0"_s);
  EXPECT_EQ(delegate.ready->notes, u"# New"_s);
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  delegate.installNow();
  EXPECT_EQ(relaunches, 1);
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, InstallsAtTheQuitWithoutARelaunch) {
  publish({release(2, "1.1.0")});
  check();
  updater->installOnQuit();
  EXPECT_EQ(relaunches, 0);
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, NothingNewerIsTheErrorThatCountsAsNone) {
  publish({});
  EXPECT_THAT(check(), ElementsAre(1001));
  EXPECT_THAT(announced, IsEmpty());
  EXPECT_THAT(check(UpdateCheck::UserInitiated), ElementsAre(1001));
  EXPECT_THAT(announced, ElementsAre(u"Vemo is up to date"_s));
}

TEST_F(SelfUpdaterTest, ChoosesByBuildChannelSystemAndArchitecture) {
  AppcastItem beta = release(5, "2.0.0");
  beta.channel = u"beta"_s;
  AppcastItem tooNew = release(4, "1.4.0");
  tooNew.minimumSystemVersion = u"13"_s;
  AppcastItem foreign = release(6, "1.6.0");
  foreign.architecture = u"arm64"_s;
  AppcastItem fits = release(3, "1.3.0");
  fits.minimumSystemVersion = u"12.8"_s;
  fits.architecture = u"x86_64"_s;
  publish({beta, tooNew, foreign, release(2, "1.2.0"), fits});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_EQ(delegate.ready->displayVersion, u"1.3.0"_s);
  delegate.channels = {u"beta"_s};
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_EQ(delegate.ready->displayVersion, u"2.0.0"_s);
}

TEST_F(SelfUpdaterTest, ADownloadThatBrokeOffGoesOnWhereItStopped) {
  QByteArray noise;
  quint32 state = 1;
  while (noise.size() < 2'500'000)
    noise.append(static_cast<char>((state = state * 1664525 + 1013904223) >> 24));
  const AppcastItem item = release(2, "1.1.0", noise);
  ASSERT_GT(item.archiveSize, 2 * UpdateDownload::pieceSize);
  publish({item});
  // What had come before the break.
  writeTestFile(root + u"/versions/.download-2"_s, server.files["vemo-2.tar.xz"].first(1'500'000),
                false);
  EXPECT_THAT(check(), IsEmpty());
  ASSERT_EQ(server.asked.size(), 3);
  EXPECT_TRUE(server.asked[2].startsWith("vemo-2.tar.xz bytes=1500000-")) << server.asked[2].data();
  ASSERT_TRUE(delegate.ready);
}

TEST_F(SelfUpdaterTest, ABrokenConnectionEndsTheSessionAndTheNextOneSucceeds) {
  publish({release(2, "1.1.0")});
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::Breaks;
  EXPECT_THAT(check(), ElementsAre(2001));
  server.manners.clear();
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(SelfUpdaterTest, AServerWithoutRangesStillServesASmallArchive) {
  publish({release(2, "1.1.0")});
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::IgnoresRanges;
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(SelfUpdaterTest, WhereAPackageManagerOwnsTheFilesTheUserIsOnlyTold) {
  isOurs = false;
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_FALSE(delegate.ready);
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Delegate);
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
  EXPECT_THAT(server.asked, ElementsAre("keys.txt", "appcast.xml"));
}

TEST_F(SelfUpdaterTest, WithoutAutomaticDownloadsAnUpdateIsToldAndFetchedOnRequest) {
  publish({release(2, "1.1.0")});
  start().setAutomaticallyDownloadsUpdates(false);
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_FALSE(delegate.ready);
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Delegate);
  EXPECT_THAT(check(UpdateCheck::UserInitiated), IsEmpty());
  EXPECT_EQ(delegate.shownBy, UpdateShownBy::Updater);
  EXPECT_TRUE(delegate.ready);
}

TEST_F(SelfUpdaterTest, ACriticalUpdateIsAnnouncedWhereItIsNotFetchedByItself) {
  AppcastItem item = release(2, "1.1.0");
  publish({item});
  start().setAutomaticallyDownloadsUpdates(false);
  check();
  EXPECT_THAT(announced, IsEmpty());
  item.shown.isCritical = true;
  publish({item});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(announced, ElementsAre(u"Vemo 1.1.0 is available"_s));
  EXPECT_FALSE(delegate.ready);
}

TEST_F(SelfUpdaterTest, AReadyUpdateStaysWholeWhileANewerOneTurnsOutBad) {
  const AppcastItem ready = release(2, "1.1.0");
  publish({ready});
  EXPECT_THAT(check(), IsEmpty());
  AppcastItem bad = release(3, "1.2.0");
  bad.shown.displayVersion = u"9.9.9"_s;
  publish({ready, bad});
  EXPECT_THAT(check(), ElementsAre(4005));
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, ANewerUpdateTakesTheReadyOnesPlaceAndWhatWasLeftGoesWithTheNextFetch) {
  writeTestFile(root + u"/versions/.download-7"_s, "half", false);
  writeTestFile(root + u"/versions/.staging-7/bin/vemo"_s, "half", true);
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_THAT(leftovers(), ElementsAre(u".download-2"_s, u".staging-2"_s));
  publish({release(3, "1.2.0")});
  EXPECT_THAT(check(), IsEmpty());
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.2.0");
}

TEST_F(SelfUpdaterTest, WhatTheLastEndDidNotInstallIsReadyAgainWithoutFetchingIt) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  start();
  delegate.ready.reset();
  server.asked.clear();
  EXPECT_THAT(check(), IsEmpty());
  EXPECT_TRUE(delegate.ready);
  EXPECT_THAT(server.asked, ElementsAre("keys.txt", "appcast.xml"));
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(SelfUpdaterTest, ABuildThatWasReleasedAnewTakesTheReadyOnesPlace) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  publish({release(2, "1.1.0", "new")}, 2);
  EXPECT_THAT(check(), IsEmpty());
  updater->installOnQuit();
  QFile ballast(root + u"/current/lib/ballast"_s);
  ASSERT_TRUE(ballast.open(QIODevice::ReadOnly));
  EXPECT_EQ(ballast.readAll(), "new1.1.0");
}

TEST_F(SelfUpdaterTest, WhatWasRefusedLeavesNothingOnTheDisk) {
  AppcastItem item = release(2, "1.1.0");
  item.shown.displayVersion = u"9.9.9"_s;
  publish({item});
  EXPECT_THAT(check(), ElementsAre(4005));
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(SelfUpdaterTest, AnInstallationThatFailsIsReportedAndNothingRelaunches) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  QDir(root + u"/versions/.staging-2"_s).removeRecursively();
  delegate.installNow();
  EXPECT_THAT(delegate.errors, ElementsAre(4005));
  EXPECT_EQ(relaunches, 0);
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
}

TEST_F(SelfUpdaterTest, AnInstallationThatFailedIsTriedAgainWhenTheUserAsksAgain) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  makeVersion(root + u"/versions/2"_s, "1.1.0", 2);
  auto runs = FolderLock::take(root + u"/versions/2"_s, FolderLock::Kind::Shared);
  delegate.installNow();
  EXPECT_THAT(delegate.errors, ElementsAre(4005));
  EXPECT_THAT(announced, ElementsAre(u"The update didn't work"_s));
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  runs.reset();
  delegate.installNow();
  EXPECT_EQ(relaunches, 1);
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, AnUpdateThatIsGoneFromTheDiskIsFetchedAndOfferedOnceMore) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  QDir(root + u"/versions/.staging-2"_s).removeRecursively();
  delegate.ready.reset();
  delegate.installNow();
  EXPECT_TRUE(loop.runUntil([&] { return delegate.ready.has_value(); }));
  delegate.installNow();
  EXPECT_EQ(relaunches, 1);
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, AnUpdateThatIsGoneAndCouldNotBeFetchedIsFetchedWhenTheUserAsksAgain) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  QDir(root + u"/versions/.staging-2"_s).removeRecursively();
  QFile::remove(root + u"/versions/.download-2"_s);
  server.manners["vemo-2.tar.xz"] = ReleaseServer::Manner::Breaks;
  delegate.ready.reset();
  delegate.installNow();
  EXPECT_TRUE(loop.runUntil([&] { return delegate.finished == 2; }));
  EXPECT_FALSE(delegate.ready);
  server.manners.clear();
  delegate.installNow();
  EXPECT_TRUE(loop.runUntil([&] { return delegate.ready.has_value(); }));
}

TEST_F(SelfUpdaterTest, AskedTwiceToInstallItDoesSoOnce) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  std::function<void()> relaunch;
  delegate.postpone = [&](std::function<void()> next) { relaunch = std::move(next); };
  delegate.installNow();
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0") << "before the sheets are closed";
  relaunch();
  relaunch();
  delegate.installNow();
  EXPECT_FALSE(updater->canCheckForUpdates());
  EXPECT_EQ(relaunches, 1);
  EXPECT_THAT(delegate.errors, IsEmpty());
  EXPECT_EQ(startedVersion(root), "Vemo 1.1.0");
}

TEST_F(SelfUpdaterTest, AnUpdateThatTheUserAskedForHasTheUsersAttentionAndAScheduledOneHasNot) {
  isOurs = false;
  publish({release(2, "1.1.0")});
  check();
  EXPECT_EQ(delegate.attentions, 0);
  check(UpdateCheck::UserInitiated);
  EXPECT_EQ(delegate.attentions, 1);
}

TEST_F(SelfUpdaterTest, ChecksAskedForDuringACheckAreOneAfterItAndTheUsersIsTold) {
  publish({});
  start().checkForUpdatesInBackground();
  EXPECT_FALSE(updater->canCheckForUpdates());
  updater->checkForUpdates();
  updater->checkForUpdatesInBackground();
  EXPECT_TRUE(loop.runUntil([&] { return updater->canCheckForUpdates(); }));
  EXPECT_EQ(delegate.finished, 2);
  EXPECT_THAT(delegate.errors, ElementsAre(1001, 1001));
  EXPECT_THAT(announced, ElementsAre(u"Vemo is up to date"_s));
}

TEST_F(SelfUpdaterTest, RemembersItsPreferencesAndItsLastCheck) {
  publish({});
  start().setAutomaticallyChecksForUpdates(false);
  check();
  start();
  EXPECT_FALSE(updater->automaticallyChecksForUpdates());
  EXPECT_EQ(updater->lastUpdateCheckDate(), QDateTime(QDate(2026, 3, 14), {}, Qt::UTC));
}

TEST_F(SelfUpdaterTest, AVersionThatDoesNotStartHereIsNotInstalledNorFetchedAgainByItself) {
  const QString made = folder.filePath(u"broken"_s);
  writeTestFile(made + u"/bin/vemo"_s, "#!/bin/sh\necho \"Vemo 1.1.0 (2)\"\nexit 1\n", true);
  publish({packed(made, 2, "1.1.0")});
  EXPECT_THAT(check(), ElementsAre(4005));
  EXPECT_FALSE(delegate.ready);
  server.asked.clear();
  EXPECT_THAT(check(), ElementsAre(1001));
  EXPECT_THAT(server.asked, ElementsAre("keys.txt", "appcast.xml"));
  EXPECT_THAT(check(UpdateCheck::UserInitiated), ElementsAre(4005));
}

TEST_F(SelfUpdaterTest, AVersionThatCallsItselfByAnotherBuildIsNotInstalled) {
  const QString made = folder.filePath(u"misnamed"_s);
  makeVersion(made, "1.1.0", 22);
  publish({packed(made, 2, "1.1.0")});
  EXPECT_THAT(check(), ElementsAre(4005));
  EXPECT_FALSE(delegate.ready);
}

TEST_F(SelfUpdaterTest, WhatIsReadyAndNoLongerOfferedIsNotInstalled) {
  publish({release(2, "1.1.0")});
  EXPECT_THAT(check(), IsEmpty());
  publish({});
  EXPECT_THAT(check(), ElementsAre(1001));
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
  updater.reset();  // when it has tidied up
  EXPECT_THAT(leftovers(), IsEmpty());
}

TEST_F(SelfUpdaterTest, ABetaThatIsReadyIsNotInstalledOnceBetasAreUnwanted) {
  AppcastItem beta = release(2, "1.1.0");
  beta.channel = u"beta"_s;
  publish({beta});
  delegate.channels = {u"beta"_s};
  EXPECT_THAT(check(), IsEmpty());
  ASSERT_TRUE(delegate.ready);
  delegate.channels.clear();
  EXPECT_THAT(check(), ElementsAre(1001));
  updater->installOnQuit();
  EXPECT_EQ(startedVersion(root), "Vemo 1.0.0");
}

TEST_F(SelfUpdaterTest, WithoutSpaceForTheArchiveAndItsFilesNothingIsFetched) {
  const AppcastItem item = release(2, "1.1.0");
  publish({item});
  freeSpace = item.archiveSize + item.files[0].size + item.files[1].size - 1;
  EXPECT_THAT(check(), ElementsAre(2001));
  EXPECT_THAT(server.asked, ElementsAre("keys.txt", "appcast.xml"));
  ++freeSpace;
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(SelfUpdaterTest, WhatHasComeOfADownloadNeedsNoSpaceAnyMore) {
  const AppcastItem item = release(2, "1.1.0");
  publish({item});
  writeTestFile(root + u"/versions/.download-2"_s, server.files["vemo-2.tar.xz"].first(100), false);
  freeSpace = item.archiveSize + item.files[0].size + item.files[1].size - 101;
  EXPECT_THAT(check(), ElementsAre(2001));
  ++freeSpace;
  EXPECT_THAT(check(), IsEmpty());
}

TEST_F(SelfUpdaterTest, ItsEndDoesNotWaitForAVersionThatDoesNotAnswer) {
  const QString made = folder.filePath(u"silent"_s);
  const QString marker = folder.filePath(u"asked"_s);
  writeTestFile(made + u"/bin/vemo"_s,
                "#!/bin/sh\ntouch '" + QFile::encodeName(marker) + "'\nexec sleep 600\n", true);
  publish({packed(made, 2, "1.1.0")});
  answerLimit = 10min;
  start().checkForUpdatesInBackground();
  ASSERT_TRUE(loop.runUntil([&] { return QFile::exists(marker); }));
  QElapsedTimer elapsed;
  elapsed.start();
  updater.reset();
  EXPECT_LT(elapsed.elapsed(), 60'000) << "the version would have had ten minutes";
}

TEST_F(SelfUpdaterTest, AKeyThatIsNoneIsToldOnce) {
  keys.publicKey.append('x');
  start();
  EXPECT_THAT(log, ElementsAre(u"updates: the key in vemo.conf isn't an Ed25519 key"_s));
}

}  // namespace vemo
