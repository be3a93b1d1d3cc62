#include "ui/models/HistoryModel.h"

#include "session/SessionFixture.h"
#include "ui/models/ToastModel.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class HistoryModelTest : public SessionFixture {
 protected:
  /// What was dictated how long ago, newest first.
  void startWith(const std::vector<std::pair<QString, Clock::Duration>>& dictations) {
    std::vector<DictationItem> items;
    for (const auto& [text, age] : dictations)
      items.push_back(
          {QUuid::createUuid(), text,
           clock.wallTime() - std::chrono::duration_cast<Clock::WallTime::duration>(age)});
    storage.settings.set(keys::recentDictations, encodeDictations(items));
    startUp();
    model.emplace(HistoryModel::With{mainThread, clock, *appState, toast});
  }

  void dictateAndPaste(const QString& text) {
    dictate(text);
    finishPaste();
  }

  QStringList all(HistoryModel::Role role) const {
    QStringList values;
    for (int row = 0; row < model->count(); ++row)
      values.append(model->data(model->index(row), role).toString());
    return values;
  }

  ToastModel toast{clock, mainThread};
  std::optional<HistoryModel> model;
};

TEST_F(HistoryModelTest, TheRowsAreTheHistoryNewestFirst) {
  startWith({{u"second"_s, 5min}, {u"first"_s, 2h}});
  EXPECT_THAT(all(HistoryModel::Text), ElementsAre(u"second"_s, u"first"_s));
  EXPECT_THAT(all(HistoryModel::Age), ElementsAre(u"5m ago"_s, u"2h ago"_s));
}

TEST_F(HistoryModelTest, ADictationComesFirstAndOneRowIsInserted) {
  startWith({{u"older"_s, 1h}});
  int inserted = 0, resets = 0;
  QObject::connect(&*model, &HistoryModel::rowsInserted, [&inserted] { ++inserted; });
  QObject::connect(&*model, &HistoryModel::modelReset, [&resets] { ++resets; });
  dictateAndPaste(u"new"_s);
  EXPECT_THAT(all(HistoryModel::Text), ElementsAre(u"new"_s, u"older"_s));
  EXPECT_EQ(inserted, 1);
  EXPECT_EQ(resets, 0);
}

TEST_F(HistoryModelTest, TheSameSentenceAgainMovesToTheFront) {
  startWith({{u"a"_s, 1h}, {u"b"_s, 2h}});
  dictateAndPaste(u"b"_s);
  EXPECT_THAT(all(HistoryModel::Text), ElementsAre(u"b"_s, u"a"_s));
  EXPECT_EQ(all(HistoryModel::Age).front(), u"Just now"_s);
}

TEST_F(HistoryModelTest, TheSixthPushesTheOldestOut) {
  startWith({{u"5"_s, 1h}, {u"4"_s, 2h}, {u"3"_s, 3h}, {u"2"_s, 4h}, {u"1"_s, 5h}});
  dictateAndPaste(u"6"_s);
  EXPECT_THAT(all(HistoryModel::Text), ElementsAre(u"6"_s, u"5"_s, u"4"_s, u"3"_s, u"2"_s));
}

TEST_F(HistoryModelTest, ASignOutRemovesAllRows) {
  startWith({{u"a"_s, 1h}, {u"b"_s, 2h}});
  int counts = 0;
  QObject::connect(&*model, &HistoryModel::countChanged, [&counts] { ++counts; });
  appState->clearLocalUserData();
  EXPECT_EQ(model->count(), 0);
  EXPECT_EQ(counts, 1);
}

TEST_F(HistoryModelTest, CopyingARowPutsItsTextOnTheClipboardAndSaysSo) {
  startWith({{u"a"_s, 1h}, {u"b"_s, 2h}});
  EXPECT_THAT(all(HistoryModel::CopySymbol), ElementsAre(u"doc.on.doc"_s, u"doc.on.doc"_s));
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s, u"Copy"_s));
  model->copy(1);
  EXPECT_THAT(pastedTexts(), ElementsAre(u"b"_s));
  EXPECT_THAT(takeEvents(), ElementsAre("transcript_copied {}"));
  EXPECT_THAT(all(HistoryModel::CopySymbol), ElementsAre(u"doc.on.doc"_s, u"checkmark"_s));
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s, u"Copied"_s));
  EXPECT_TRUE(toast.isShown());
  EXPECT_EQ(toast.message(), u"Transcription copied to clipboard"_s);
}

TEST_F(HistoryModelTest, ARowIsNotSaidToBeCopiedWhereTheClipboardCannotBeWritten) {
  startWith({{u"a"_s, 1h}});
  clipboard.refuseWrites();
  model->copy(0);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s));
  EXPECT_THAT(all(HistoryModel::CopySymbol), ElementsAre(u"doc.on.doc"_s));
  EXPECT_EQ(toast.message(), u"The clipboard can't be written"_s);
}

TEST_F(HistoryModelTest, ARowSaysForTwoSecondsThatItWasCopied) {
  startWith({{u"a"_s, 1h}});
  model->copy(0);
  clock.advance(1999ms);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copied"_s));
  clock.advance(1ms);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s));
}

TEST_F(HistoryModelTest, AnotherCopyMovesTheCheckMarkAndHasItsFullTime) {
  startWith({{u"a"_s, 1h}, {u"b"_s, 2h}});
  model->copy(0);
  clock.advance(1500ms);
  model->copy(1);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s, u"Copied"_s));
  clock.advance(1999ms);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s, u"Copied"_s));
  clock.advance(1ms);
  EXPECT_THAT(all(HistoryModel::CopyLabel), ElementsAre(u"Copy"_s, u"Copy"_s));
}

TEST_F(HistoryModelTest, ARowThatIsNotThereIsNotCopied) {
  startWith({{u"a"_s, 1h}});
  model->copy(-1);
  model->copy(1);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_FALSE(toast.isShown());
}

TEST_F(HistoryModelTest, AgesAreKeptCurrentWhileTheyAreShown) {
  startWith({{u"a"_s, 58s}, {u"b"_s, 3599s}});
  model->setShown(true);
  int updates = 0;
  QObject::connect(&*model, &HistoryModel::dataChanged, [&updates] { ++updates; });
  clock.advance(1s);
  EXPECT_THAT(all(HistoryModel::Age), ElementsAre(u"Just now"_s, u"1h ago"_s));
  EXPECT_EQ(updates, 1);
  clock.advance(1s);
  EXPECT_THAT(all(HistoryModel::Age), ElementsAre(u"1m ago"_s, u"1h ago"_s));
  EXPECT_EQ(updates, 2);
}

TEST_F(HistoryModelTest, AClosedWindowWakesNobody) {
  startWith({{u"a"_s, 58s}});
  const auto sleepers = clock.sleeperCount();
  model->setShown(true);
  mainThread.drain();
  EXPECT_EQ(clock.sleeperCount(), sleepers + 1);
  model->setShown(false);
  mainThread.drain();
  EXPECT_EQ(clock.sleeperCount(), sleepers);
}

TEST_F(HistoryModelTest, AnOpenedWindowShowsTheAgesOfNow) {
  startWith({{u"a"_s, 58s}});
  clock.advance(1h);
  int updates = 0;
  QObject::connect(&*model, &HistoryModel::dataChanged, [&updates] { ++updates; });
  model->setShown(true);
  EXPECT_EQ(updates, 1);
  EXPECT_THAT(all(HistoryModel::Age), ElementsAre(u"1h ago"_s));
}

}  // namespace
}  // namespace vemo
