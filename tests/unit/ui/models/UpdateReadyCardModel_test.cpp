#include "ui/models/UpdateReadyCardModel.h"

#include "fakes/FakeApplicationSheets.h"
#include "fakes/FakeUpdater.h"
#include "session/SessionFixture.h"

namespace vemo {

class UpdateReadyCardTest : public SessionFixture {
 protected:
  void SetUp() override {
    startUp();
    configuration.updateFeedPublicKey = QString(43, u'A') + u'=';
    updates.emplace(UpdateManager::Neighbours{
        .mainThread = FakeTime::mainThread,
        .clock = FakeTime::clock,
        .settings = storage.settings,
        .debugLog = storage.debugLog,
        .telemetry = telemetry,
        .windows = windows,
        .sheets = sheets,
        .configuration = configuration,
        .makeUpdater = [](auto&, auto&) { return std::make_unique<FakeUpdater>(); },
        .isDictationIdle = [this] { return appState->phase() == Phase::idle(); },
        .terminate = [] {}});
    card.emplace(*updates, *appState);
    QObject::connect(&*card, &UpdateReadyCardModel::changed, &*card, [this] { ++changes; });
  }

  void beReady(const std::optional<QString>& notes) {
    updates->willInstallUpdateOnQuit({.displayVersion = u"1.4.0"_s,
                                      .buildVersion = u"57"_s,
                                      .isCritical = false,
                                      .notes = notes},
                                     [this] { ++installations; });
  }

  /// Of the first page.
  QVariantList rows() { return card->notes()->index(0).data(ReleaseNotesPages::Rows).toList(); }

  FakeApplicationSheets sheets;
  std::optional<UpdateManager> updates;
  std::optional<UpdateReadyCardModel> card;
  int changes = 0;
  int installations = 0;
};

TEST_F(UpdateReadyCardTest, IsShownOnceAnUpdateIsReady) {
  EXPECT_FALSE(card->isShown());
  EXPECT_FALSE(card->canRestart());
  beReady({});
  EXPECT_TRUE(card->isShown());
  EXPECT_EQ(card->versionLine(), u"Vemo 1.4.0"_s);
  EXPECT_EQ(changes, 1);
}

TEST_F(UpdateReadyCardTest, TheButtonWorksAgainWhenTheDictationHasEnded) {
  beReady({});
  EXPECT_EQ(card->tooltip(), u"Quit Vemo, install the update and open it again"_s);
  startRecording();
  EXPECT_FALSE(card->canRestart());
  EXPECT_EQ(card->tooltip(), u"Available when dictation finishes"_s);
  card->restart();
  EXPECT_EQ(installations, 0);
  changes = 0;
  stopRecording();
  EXPECT_GT(changes, 0);
  clock.advance(1min);
  EXPECT_TRUE(card->canRestart());
  card->restart();
  EXPECT_EQ(installations, 1);
}

TEST_F(UpdateReadyCardTest, NotesAreReadFromTheirMarkdownAndShownOnRequest) {
  beReady(u"# New\n- *this* and [that](https://vemo.example/that)"_s);
  EXPECT_TRUE(card->hasNotes());
  EXPECT_FALSE(card->showNotes());
  card->toggleNotes();
  EXPECT_TRUE(card->showNotes());
  ASSERT_EQ(rows().size(), 2);
  EXPECT_TRUE(rows()[1].toMap()[u"markup"_s].toString().contains(u"<i>this</i>"_s));
}

TEST_F(UpdateReadyCardTest, ADictationLeavesTheNotesAsTheyAre) {
  beReady(u"# New"_s);
  int resets = 0;
  QObject::connect(card->notes(), &QAbstractItemModel::modelReset, &*card, [&] { ++resets; });
  dictate(u"Hello."_s);
  clock.advance(1min);
  updates->changed.notify();
  EXPECT_GT(changes, 2);
  EXPECT_EQ(resets, 0);
  beReady(u"# Newer"_s);
  EXPECT_EQ(resets, 1);
  EXPECT_TRUE(rows()[0].toMap()[u"markup"_s].toString().contains(u"Newer"_s));
}

TEST_F(UpdateReadyCardTest, ACardThatIsMadeWhileAnUpdateIsReadyHasItsNotes) {
  beReady(u"# New"_s);
  card.emplace(*updates, *appState);
  EXPECT_EQ(rows().size(), 1);
}

TEST_F(UpdateReadyCardTest, BlankNotesKeepTheButtonAndShowNothingEmptyOnesHaveNone) {
  beReady(u"\n \n"_s);
  EXPECT_TRUE(card->hasNotes());
  EXPECT_TRUE(rows().isEmpty());
  beReady(QString());
  EXPECT_FALSE(card->hasNotes());
  beReady({});
  EXPECT_FALSE(card->hasNotes());
}

}  // namespace vemo
