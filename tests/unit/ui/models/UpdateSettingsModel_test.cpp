#include "ui/models/UpdateSettingsModel.h"

#include "fakes/FakeApplicationSheets.h"
#include "fakes/FakeUpdater.h"
#include "session/SessionFixture.h"
#include "updates/UpdateManager.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class UpdateSettingsModelTest : public SessionFixture {
 protected:
  void open(const QString& key = u"AAECAwQFBgcICQoLDA0ODxAREhMUFRYXGBkaGxwdHh8="_s) {
    configuration.updateFeedPublicKey = key;
    startUp();
    updates.emplace(UpdateManager::Neighbours{
        .mainThread = mainThread,
        .clock = clock,
        .settings = storage.settings,
        .debugLog = storage.debugLog,
        .telemetry = telemetry,
        .windows = windows,
        .sheets = sheets,
        .configuration = configuration,
        .makeUpdater =
            [this](auto&&...) {
              auto made = std::make_unique<FakeUpdater>();
              made->lastCheck = lastCheck;
              updater = made.get();
              return made;
            },
        .isDictationIdle = [this] { return appState->phase() == Phase::idle(); },
        .terminate = [] {}});
    updates->start();
    mainThread.drain();
    model.emplace(UpdateSettingsModel::With{
        .updates = *updates, .appState = *appState, .locale = QLocale(u"en_US"_s)});
    if (updater) updater->takeCalls();
  }

  void download() {
    updates->willInstallUpdateOnQuit(
        {.displayVersion = u"1.4.0"_s, .buildVersion = u"140"_s, .notes = {}},
        [this] { ++installs; });
  }

  FakeApplicationSheets sheets;
  std::optional<QDateTime> lastCheck;
  FakeUpdater* updater = nullptr;
  int installs = 0;
  std::optional<UpdateManager> updates;
  std::optional<UpdateSettingsModel> model;
};

TEST_F(UpdateSettingsModelTest, WithoutUpdatesInThisBuildTheSwitchesAreInactiveAndTheLineSaysWhy) {
  open({});
  EXPECT_FALSE(model->isConfigured());
  EXPECT_EQ(model->statusLine(), u"In-app updates aren't set up in this build."_s);
  EXPECT_EQ(model->buttonLabel(), u"Check for Updates"_s);
  EXPECT_FALSE(model->isButtonEnabled());
}

TEST_F(UpdateSettingsModelTest, BeforeTheFirstCheckTheLineSaysSo) {
  open();
  EXPECT_TRUE(model->isConfigured());
  EXPECT_EQ(model->statusLine(), u"Not checked yet"_s);
}

TEST_F(UpdateSettingsModelTest, TheLastCheckIsToldByItsDate) {
  lastCheck = QDateTime(QDate(2026, 3, 5), QTime(14, 7));
  open();
  EXPECT_EQ(model->statusLine(),
            u"Last checked "_s + QLocale(u"en_US"_s).toString(*lastCheck, QLocale::ShortFormat));
}

TEST_F(UpdateSettingsModelTest, AnUpdateThatIsReadyComesBeforeTheLastCheck) {
  lastCheck = QDateTime(QDate(2026, 3, 5), QTime(14, 7));
  open();
  download();
  EXPECT_EQ(model->statusLine(), u"Vemo 1.4.0 is downloaded and ready to install"_s);
  EXPECT_EQ(model->buttonLabel(), u"Restart to Update"_s);
  EXPECT_TRUE(model->isButtonEnabled());
  EXPECT_EQ(model->tooltip(), u"Quit Vemo, install the update and open it again"_s);
}

TEST_F(UpdateSettingsModelTest, TheButtonChecksAndIsDisabledWhileNoCheckIsPossible) {
  open();
  EXPECT_TRUE(model->isButtonEnabled());
  model->press();
  EXPECT_THAT(updater->takeCalls(), ElementsAre("check"));
  updater->canCheck = false;
  updater->changed.notify();
  mainThread.drain();
  EXPECT_FALSE(model->isButtonEnabled());
}

TEST_F(UpdateSettingsModelTest, ADictationHoldsTheRestartBackUntilItIsDone) {
  open();
  download();
  startRecording();
  EXPECT_FALSE(model->isButtonEnabled());
  EXPECT_EQ(model->tooltip(), u"Available when dictation finishes"_s);
  model->press();
  EXPECT_EQ(installs, 0);
  stopRecording();
  clock.advance(10s);
  EXPECT_TRUE(model->isButtonEnabled());
  model->press();
  EXPECT_EQ(installs, 1);
}

TEST_F(UpdateSettingsModelTest, TheSwitchesSetTheUpdater) {
  open();
  model->setChecksAutomatically(false);
  model->setDownloadsAutomatically(false);
  mainThread.drain();
  EXPECT_FALSE(updater->automaticallyChecks);
  EXPECT_FALSE(updater->automaticallyDownloads);
  EXPECT_FALSE(model->checksAutomatically());
  EXPECT_FALSE(model->downloadsAutomatically());
}

TEST_F(UpdateSettingsModelTest, BetaUpdatesAreLookedForAtOnce) {
  open();
  model->setReceivesBetaUpdates(true);
  EXPECT_TRUE(model->receivesBetaUpdates());
  EXPECT_EQ(storage.settings.get(keys::receiveBetaUpdates), true);
  EXPECT_THAT(updater->takeCalls(), ElementsAre("check in background"));
}

}  // namespace
}  // namespace vemo
