#include "UpdateFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::IsEmpty;

class UpdateManagerTest : public UpdateFixture {
 protected:
  bool isConfiguredWith(const QString& key) {
    with.configuration.updateFeedPublicKey = key;
    return UpdateManager(neighbours()).isConfigured();
  }
};

TEST_F(UpdateManagerTest, AKeyOf44CharactersOfBase64TurnsUpdatesOn) {
  EXPECT_TRUE(isConfiguredWith(QString(43, u'A') + u'='));
  EXPECT_TRUE(isConfiguredWith(u" \n"_s + QString(43, u'A') + u"=\t"_s));
}

TEST_F(UpdateManagerTest, AKeyOf43Or45CharactersOrNoBase64LeavesUpdatesOff) {
  EXPECT_FALSE(isConfiguredWith({}));
  EXPECT_FALSE(isConfiguredWith(QString(43, u'A')));
  EXPECT_FALSE(isConfiguredWith(QString(45, u'A')));
  EXPECT_FALSE(isConfiguredWith(QString(43, u'*') + u'='));
  EXPECT_FALSE(isConfiguredWith(QString(43, u'ä') + u'='));
  EXPECT_FALSE(isConfiguredWith(QString(22, u'A') + u'=' + QString(21, u'A')));
}

TEST_F(UpdateManagerTest, WithoutAKeyThereIsOneLogLineAndNothingElseHappens) {
  with.configuration.updateFeedPublicKey.clear();
  start();
  manager->checkForUpdates();
  manager->setAutomaticallyChecksForUpdates(false);
  clock.advance(1h);
  EXPECT_EQ(updater, nullptr);
  EXPECT_EQ(storage.logMessages(),
            QStringList(u"updates: SUPublicEDKey not set; in-app updates disabled"_s));
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_TRUE(manager->automaticallyChecksForUpdates());
  EXPECT_THAT(windows.takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, StartsOnceAndTellsItsFeed) {
  start();
  manager->start();
  EXPECT_EQ(updatersMade, 1);
  EXPECT_TRUE(storage.hasLogged(
      u"updates: started, feed https://example.com/v1/desktop/updates/appcast.xml"_s));
}

TEST_F(UpdateManagerTest, MirrorsTheUpdatersFirstValuesAndEveryLaterOne) {
  start();
  EXPECT_TRUE(manager->canCheckForUpdates());
  int changes = 0;
  const auto observation = manager->changed.observe([&] { ++changes; });
  updater->canCheck = false;
  updater->lastCheck = QDateTime(QDate(2026, 3, 14), QTime(9, 26));
  updater->automaticallyChecks = updater->automaticallyDownloads = false;
  updater->changed.notify();
  EXPECT_TRUE(manager->canCheckForUpdates()) << "before the main queue has turned";
  mainThread.drain();
  EXPECT_FALSE(manager->canCheckForUpdates());
  EXPECT_EQ(manager->lastUpdateCheckDate(), QDateTime(QDate(2026, 3, 14), QTime(9, 26)));
  EXPECT_FALSE(manager->automaticallyChecksForUpdates());
  EXPECT_FALSE(manager->automaticallyDownloadsUpdates());
  EXPECT_EQ(changes, 1);
}

TEST_F(UpdateManagerTest, ThePreferencesAreTheUpdaters) {
  start();
  manager->setAutomaticallyChecksForUpdates(false);
  manager->setAutomaticallyDownloadsUpdates(false);
  mainThread.drain();
  EXPECT_FALSE(updater->automaticallyChecks);
  EXPECT_FALSE(updater->automaticallyDownloads);
  EXPECT_FALSE(manager->automaticallyChecksForUpdates());
  EXPECT_FALSE(manager->automaticallyDownloadsUpdates());
}

TEST_F(UpdateManagerTest, ChecksInTheBackground15SecondsAfterTheStartAndNotBefore) {
  start();
  clock.advance(14999ms);
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
  clock.advance(1ms);
  EXPECT_THAT(updater->takeCalls(), ElementsAre("check in background"));
  clock.advance(1h);
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, DoesNotCheckAfterTheStartWhenAnUpdateIsReady) {
  start();
  beReady();
  clock.advance(1min);
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, DoesNotCheckAfterTheStartWhenAutomaticChecksAreOff) {
  checksAtFirst = false;
  start();
  clock.advance(1min);
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, DoesNotCheckAfterTheStartWhileTheUpdaterCant) {
  canCheckAtFirst = false;
  start();
  clock.advance(1min);
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, AManagerThatGoesBefore15SecondsLeavesNothingBehind) {
  start();
  manager.reset();
  clock.advance(1min);
  EXPECT_EQ(clock.sleeperCount(), 0U);
}

TEST_F(UpdateManagerTest, AManualCheckIsReportedAndBringsTheProgramForward) {
  start();
  manager->checkForUpdates();
  EXPECT_THAT(takeEvents(), ElementsAre("update_check_manual {}"));
  EXPECT_THAT(windows.takeCalls(), ElementsAre("activate"));
  EXPECT_THAT(updater->takeCalls(), ElementsAre("check"));
}

TEST_F(UpdateManagerTest,
       AManualCheckIsReportedFirstThenTheProgramComesForwardThenTheUpdaterChecks) {
  start();
  std::vector<std::string> events;
  std::vector<std::string> calls;
  windows.whenActivated = [&] { events = takeEvents(); };
  updater->whenAsked = [&] { calls = windows.takeCalls(); };
  manager->checkForUpdates();
  EXPECT_THAT(events, ElementsAre("update_check_manual {}"));
  EXPECT_THAT(calls, ElementsAre("activate"));
}

TEST_F(UpdateManagerTest, AnAccessoryGetsAPlaceInTheTaskBarUntilTheSessionsEnd) {
  storage.settings.set(keys::showInDock, false);
  windows.setActivationPolicy(ActivationPolicy::Accessory);
  windows.takeCalls();
  start();
  manager->checkForUpdates();
  EXPECT_THAT(windows.takeCalls(), ElementsAre("regular", "activate"));
  manager->willFinishUpdateSession();
  EXPECT_THAT(windows.takeCalls(), ElementsAre("accessory"));
  manager->willFinishUpdateSession();
  EXPECT_THAT(windows.takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, WithThePolicyRegularNothingIsSavedAndNothingRestored) {
  start();
  manager->checkForUpdates();
  manager->willFinishUpdateSession();
  EXPECT_THAT(windows.takeCalls(), ElementsAre("activate"));
}

TEST_F(UpdateManagerTest, AUserWhoTurnsTheDockIconOnMeanwhileKeepsIt) {
  storage.settings.set(keys::showInDock, false);
  windows.setActivationPolicy(ActivationPolicy::Accessory);
  start();
  manager->checkForUpdates();
  storage.settings.set(keys::showInDock, true);
  windows.takeCalls();
  manager->willFinishUpdateSession();
  EXPECT_THAT(windows.takeCalls(), ElementsAre("regular"));
}

TEST_F(UpdateManagerTest, AScheduledUpdateIsShownOnlyToWhoIsInFrontOfTheProgram) {
  start();
  EXPECT_TRUE(manager->supportsGentleScheduledUpdateReminders());
  EXPECT_TRUE(manager->shouldHandleShowingScheduledUpdate(item, ImmediateFocus::Yes));
  EXPECT_FALSE(manager->shouldHandleShowingScheduledUpdate(item, ImmediateFocus::No));
}

TEST_F(UpdateManagerTest, AnUpdateThatTheUpdaterShowsBringsTheProgramForward) {
  start();
  manager->willHandleShowingUpdate(UpdateShownBy::Updater, item, UpdateCheck::Scheduled);
  EXPECT_THAT(windows.takeCalls(), ElementsAre("activate"));
  EXPECT_EQ(manager->pendingUpdateVersion(), std::nullopt);
}

TEST_F(UpdateManagerTest, AnUpdateFoundQuietlyIsPendingUntilSomebodyLooks) {
  start();
  manager->willHandleShowingUpdate(UpdateShownBy::Delegate, item, UpdateCheck::Scheduled);
  EXPECT_EQ(manager->pendingUpdateVersion(), u"1.4.0"_s);
  EXPECT_THAT(windows.takeCalls(), IsEmpty());
  manager->didReceiveUserAttention(item);
  EXPECT_EQ(manager->pendingUpdateVersion(), std::nullopt);
}

TEST_F(UpdateManagerTest, AnUpdateThatTheUserAskedForIsNotPending) {
  start();
  manager->willHandleShowingUpdate(UpdateShownBy::Delegate, item, UpdateCheck::UserInitiated);
  EXPECT_EQ(manager->pendingUpdateVersion(), std::nullopt);
}

TEST_F(UpdateManagerTest, WithBetaOffNoChannelIsAllowedAndTurningItOnChecksOnce) {
  start();
  EXPECT_THAT(manager->allowedChannels(), IsEmpty());
  EXPECT_FALSE(manager->receivesBetaUpdates());
  manager->setReceivesBetaUpdates(true);
  EXPECT_THAT(manager->allowedChannels(), ElementsAre(u"beta"_s));
  EXPECT_TRUE(manager->receivesBetaUpdates());
  EXPECT_EQ(storage.settings.get(keys::receiveBetaUpdates), true);
  EXPECT_THAT(updater->takeCalls(), ElementsAre("check in background"));
  manager->setReceivesBetaUpdates(false);
  EXPECT_THAT(manager->allowedChannels(), IsEmpty());
  EXPECT_THAT(updater->takeCalls(), IsEmpty());
}

TEST_F(UpdateManagerTest, TheCheckAfterTurningBetaOnAsksForTheBetaChannel) {
  start();
  QStringList channels;
  updater->whenAsked = [&] { channels = manager->allowedChannels(); };
  manager->setReceivesBetaUpdates(true);
  EXPECT_THAT(channels, ElementsAre(u"beta"_s));
}

TEST_F(UpdateManagerTest, ReportsWhatWasOfferedWithItsBuildAsANumber) {
  start();
  manager->didFindValidUpdate(item);
  EXPECT_THAT(takeEvents(), IsEmpty()) << "before the main queue has turned";
  mainThread.drain();
  manager->didFindValidUpdate(
      {.displayVersion = u"2.0"_s, .buildVersion = u"57b"_s, .isCritical = true, .notes = {}});
  mainThread.drain();
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(update_offered {"build":57,"critical":false,"version":"1.4.0"})",
                          R"(update_offered {"build":0,"critical":true,"version":"2.0"})"));
}

TEST_F(UpdateManagerTest, ReportsASkippedAndAPostponedUpdateAndNoOtherChoice) {
  start();
  for (const auto choice : {UpdateChoice::Skip, UpdateChoice::Install, UpdateChoice::Dismiss})
    manager->userDidMakeChoice(choice, item);
  mainThread.drain();
  EXPECT_THAT(takeEvents(), ElementsAre(R"(update_skipped {"version":"1.4.0"})",
                                        R"(update_postponed {"version":"1.4.0"})"));
}

TEST_F(UpdateManagerTest, ReportsEveryFailureButThatThereIsNoUpdate) {
  start();
  manager->didAbort({u"SUSparkleErrorDomain"_s, 1001});
  mainThread.drain();
  EXPECT_THAT(takeEvents(), IsEmpty());
  manager->didAbort({u"SUSparkleErrorDomain"_s, 1002});
  manager->didAbort({u"NSURLErrorDomain"_s, 1001});
  mainThread.drain();
  EXPECT_THAT(takeEvents(),
              ElementsAre(R"(update_failed {"code":1002,"error":"SUSparkleErrorDomain"})",
                          R"(update_failed {"code":1001,"error":"NSURLErrorDomain"})"));
}

TEST_F(UpdateManagerTest, ADownloadedUpdateIsReadyAndNoLongerPending) {
  start();
  manager->willHandleShowingUpdate(UpdateShownBy::Delegate, item, UpdateCheck::Scheduled);
  EXPECT_TRUE(manager->willInstallUpdateOnQuit(item, [] {}));
  EXPECT_EQ(manager->readyUpdate(), (ReadyUpdate{u"1.4.0"_s, u"# New"_s}));
  EXPECT_EQ(manager->pendingUpdateVersion(), std::nullopt);
  EXPECT_TRUE(storage.hasLogged(u"updates: 1.4.0 downloaded, ready to install"_s));
  mainThread.drain();
  EXPECT_THAT(takeEvents(), ElementsAre(R"(update_downloaded {"version":"1.4.0"})"));
}

}  // namespace vemo
