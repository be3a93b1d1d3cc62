// Restarting and quitting, with sheets in the way.
#include "UpdateFixture.h"

namespace vemo {

using testing::ElementsAre;
using testing::IsEmpty;

class UpdateManagerSheetsTest : public UpdateFixture {
 protected:
  UpdateManagerSheetsTest() {
    start();
    m_observation = manager->vemoCloseAllSheets.observe([this] { ++closings; });
  }

  int closings = 0;

 private:
  Observation m_observation;
};

TEST_F(UpdateManagerSheetsTest, WithoutAReadyUpdateThereIsNothingToRestartFor) {
  EXPECT_FALSE(manager->canRestartNow());
  manager->restartToUpdate();
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(UpdateManagerSheetsTest, WhileADictationRunsARestartDoesNothingNotEvenTheEvent) {
  beReady();
  isIdle = false;
  EXPECT_FALSE(manager->canRestartNow());
  manager->restartToUpdate();
  clock.advance(1min);
  EXPECT_EQ(installations, 0);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_FALSE(storage.hasLogged(u"updates: restarting to install 1.4.0"_s));
  isIdle = true;
  EXPECT_TRUE(manager->canRestartNow());
  manager->restartToUpdate();
  EXPECT_EQ(installations, 1);
}

TEST_F(UpdateManagerSheetsTest, WithNoSheetOpenNothingIsAnnouncedAndTheInstallationRunsAtOnce) {
  beReady();
  manager->restartToUpdate();
  EXPECT_EQ(closings, 0);
  EXPECT_EQ(installations, 1);
  EXPECT_THAT(takeEvents(), ElementsAre(R"(update_restart_clicked {"version":"1.4.0"})"));
  EXPECT_TRUE(storage.hasLogged(u"updates: restarting to install 1.4.0"_s));
}

TEST_F(UpdateManagerSheetsTest, ARestartIsReportedAndLoggedBeforeTheInstallation) {
  beReady();
  std::vector<std::string> events;
  bool isLogged = false;
  whenInstalled = [&] {
    events = takeEvents();
    isLogged = storage.hasLogged(u"updates: restarting to install 1.4.0"_s);
  };
  manager->restartToUpdate();
  EXPECT_THAT(events, ElementsAre(R"(update_restart_clicked {"version":"1.4.0"})"));
  EXPECT_TRUE(isLogged);
}

TEST_F(UpdateManagerSheetsTest, ASheetThatClosesAfter300MillisecondsIsSeenAtTheFourthPoll) {
  beReady();
  sheets.attach();
  manager->restartToUpdate();
  EXPECT_EQ(closings, 1);
  clock.advance(299ms);
  EXPECT_EQ(installations, 0);
  sheets.close();
  clock.advance(1ms);
  EXPECT_EQ(installations, 1);
  EXPECT_EQ(sheets.endCount(), 0);
}

TEST_F(UpdateManagerSheetsTest, ASheetThatNeverClosesIsEndedAfter3Seconds) {
  beReady();
  whenInstalled = [this] { EXPECT_EQ(sheets.endCount(), 1) << "the sheet goes first"; };
  sheets.attach();
  manager->restartToUpdate();
  clock.advance(2999ms);
  EXPECT_EQ(sheets.endCount(), 0);
  EXPECT_EQ(installations, 0);
  clock.advance(1ms);
  EXPECT_EQ(sheets.endCount(), 1);
  EXPECT_EQ(installations, 1);
  EXPECT_TRUE(storage.hasLogged(
      u"updates: a sheet was still open after 3.0 seconds; ending it directly"_s));
}

TEST_F(UpdateManagerSheetsTest,
       ADictationThatBeginsWhileASheetClosesIsWaitedForBeforeTheInstallation) {
  beReady();
  sheets.attach();
  manager->restartToUpdate();
  clock.advance(1s);
  isIdle = false;
  sheets.close();
  clock.advance(10min);
  EXPECT_EQ(installations, 0);
  isIdle = true;
  clock.advance(100ms);
  EXPECT_EQ(installations, 1);
  EXPECT_EQ(sheets.endCount(), 0);
}

TEST_F(UpdateManagerSheetsTest, ADictationThatBeginsBesideASheetThatNeverClosesIsWaitedForToo) {
  beReady();
  sheets.attach();
  manager->restartToUpdate();
  isIdle = false;
  clock.advance(3s);
  EXPECT_EQ(sheets.endCount(), 1);
  EXPECT_EQ(installations, 0);
  clock.advance(1min);
  EXPECT_EQ(installations, 0);
  isIdle = true;
  clock.advance(100ms);
  EXPECT_EQ(installations, 1);
}

TEST_F(UpdateManagerSheetsTest, AManagerThatGoesWhileItWaitsForADictationLeavesNothingBehind) {
  beReady();
  sheets.attach();
  manager->restartToUpdate();
  isIdle = false;
  clock.advance(5s);
  manager.reset();
  isIdle = true;
  clock.advance(1min);
  EXPECT_EQ(installations, 0);
}

TEST_F(UpdateManagerSheetsTest, ARelaunchWithoutSheetsIsNotPutOff) {
  int relaunches = 0;
  EXPECT_FALSE(manager->shouldPostponeRelaunch(item, [&] { ++relaunches; }));
  clock.advance(1min);
  EXPECT_EQ(relaunches, 0);
  EXPECT_EQ(closings, 0);
}

TEST_F(UpdateManagerSheetsTest, ARelaunchWaitsForTheSheetsToClose) {
  sheets.attach();
  int relaunches = 0;
  EXPECT_TRUE(manager->shouldPostponeRelaunch(item, [&] { ++relaunches; }));
  EXPECT_EQ(closings, 1);
  EXPECT_TRUE(storage.hasLogged(u"updates: closing sheets before installing 1.4.0"_s));
  clock.advance(500ms);
  EXPECT_EQ(relaunches, 0);
  sheets.close();
  clock.advance(100ms);
  EXPECT_EQ(relaunches, 1);
}

TEST_F(UpdateManagerSheetsTest, ARelaunchThatWaitedForSheetsWaitsForADictationToo) {
  sheets.attach();
  int relaunches = 0;
  manager->shouldPostponeRelaunch(item, [&] { ++relaunches; });
  isIdle = false;
  sheets.close();
  clock.advance(1min);
  EXPECT_EQ(relaunches, 0);
  isIdle = true;
  clock.advance(100ms);
  EXPECT_EQ(relaunches, 1);
}

TEST_F(UpdateManagerSheetsTest, QuittingWithoutSheetsEndsTheProgramAtOnce) {
  manager->quitClosingSheets();
  EXPECT_EQ(terminations, 1);
  EXPECT_EQ(closings, 0);
}

TEST_F(UpdateManagerSheetsTest, QuittingClosesTheSheetsFirstAndWaitsForNoDictation) {
  isIdle = false;
  sheets.attach();
  manager->quitClosingSheets();
  EXPECT_EQ(closings, 1);
  EXPECT_EQ(terminations, 0);
  clock.advance(3s);
  EXPECT_EQ(terminations, 1);
  EXPECT_EQ(sheets.endCount(), 1);
}

}  // namespace vemo
