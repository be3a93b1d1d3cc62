#include "ui/models/DictionaryModel.h"

#include "session/DictionaryList.h"
#include "session/EntryListFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

class DictionaryModelTest : public EntryListFixture {
 protected:
  void startWith(const std::vector<CustomDictionaryEntry>& entries) {
    storage.settings.set(keys::customDictionaryEntries, encodeDictionary(entries).value());
    startSignedIn();
    list.emplace(mainThread, storage.settings, *auth);
    model.emplace(*list);
  }

  void saveSheet(const QString& spoken, const QString& written) {
    model->sheet()->setSpoken(spoken);
    model->sheet()->setWritten(written);
    model->sheet()->save();
  }

  std::vector<CustomDictionaryEntry> stored() const {
    return decodeDictionary(storage.settings.get(keys::customDictionaryEntries, {})).value();
  }

  std::optional<DictionaryList> list;
  std::optional<DictionaryModel> model;
};

TEST_F(DictionaryModelTest, TheRowsAreTheWordsInTheirOrder) {
  startWith({{u"1"_s, u"btw"_s, u"by the way"_s}, {u"2"_s, u"memo"_s, u"vemo"_s}});
  EXPECT_THAT(model->rows()->rows(), ElementsAre(PhraseRow{u"1"_s, u"btw"_s, u"by the way"_s},
                                                 PhraseRow{u"2"_s, u"memo"_s, u"vemo"_s}));
}

TEST_F(DictionaryModelTest, AddingTrimsAppendsStoresAndSyncs) {
  startWith({{u"1"_s, u"btw"_s, u"by the way"_s}});
  http.answer(dictionaryPath, 201,
              R"({"status":"ok","entry":{"id":"9","phrase":"p","replacement":"r"}})");
  model->sheet()->open();
  saveSheet(u" Worcester\t"_s, u"  Worcestershire "_s);
  ASSERT_EQ(model->rows()->count(), 2);
  const auto row = model->rows()->rows().back();
  EXPECT_FALSE(QUuid(row.id).isNull()) << "a new UUID";
  EXPECT_EQ(row.spoken, u"Worcester"_s);
  EXPECT_EQ(row.written, u"Worcestershire"_s);
  EXPECT_EQ(stored().back().id, row.id) << "before the service has answered";
  settle();
  EXPECT_EQ(model->rows()->rows().back().id, u"9"_s);
}

TEST_F(DictionaryModelTest, ARowIsChangedInItsPlace) {
  startWith({{u"1"_s, u"btw"_s, u"by the way"_s}, {u"2"_s, u"memo"_s, u"vemo"_s}});
  http.answer(dictionaryPath + u"/1"_s, 204);
  http.answer(dictionaryPath, 500);
  model->edit(u"1"_s);
  EXPECT_TRUE(model->sheet()->isEditing());
  EXPECT_EQ(model->sheet()->spoken(), u"btw"_s);
  saveSheet(u"btw"_s, u"By the way"_s);
  settle();
  ASSERT_THAT(stored(), SizeIs(2));
  EXPECT_EQ(stored().front().replacement, u"By the way"_s);
}

TEST_F(DictionaryModelTest, ARowThatHasGoneDoesNotOpenTheSheet) {
  startWith({});
  model->edit(u"1"_s);
  EXPECT_FALSE(model->sheet()->isOpen());
}

TEST_F(DictionaryModelTest, ARowThatGoesWhileItIsChangedIsWrittenAnew) {
  startWith({{u"1"_s, u"btw"_s, u"by the way"_s}});
  model->edit(u"1"_s);
  http.answer(dictionaryPath + u"/1"_s, 204);
  model->remove(u"1"_s);
  settle();
  http.answer(dictionaryPath, 500);
  saveSheet(u"btw"_s, u"By the way"_s);
  settle();
  ASSERT_THAT(stored(), SizeIs(1));
  EXPECT_EQ(stored().front().replacement, u"By the way"_s);
}

TEST_F(DictionaryModelTest, DeletingTakesTheRowAway) {
  startWith({{u"1"_s, u"btw"_s, u"by the way"_s}, {u"2"_s, u"memo"_s, u"vemo"_s}});
  http.answer(dictionaryPath + u"/1"_s, 204);
  model->remove(u"1"_s);
  EXPECT_THAT(model->rows()->rows(), ElementsAre(PhraseRow{u"2"_s, u"memo"_s, u"vemo"_s}));
  settle();
  EXPECT_THAT(requestsTo(dictionaryPath), ElementsAre("DELETE /dictionary/1"));
}

TEST_F(DictionaryModelTest, ItIsLoadingWhileTheCloudListIsOnItsWay) {
  startWith({});
  http.answer(dictionaryPath, 200, R"({"status":"ok","dictionary":[]})", 3s);
  int changes = 0;
  QObject::connect(&*model, &DictionaryModel::changed, [&changes] { ++changes; });
  list->load();
  settle();
  EXPECT_TRUE(model->isLoading());
  EXPECT_GT(changes, 0);
  clock.advance(3s);
  EXPECT_FALSE(model->isLoading());
}

TEST_F(DictionaryModelTest, ASheetThatIsDismissedChangesNothing) {
  startWith({});
  model->sheet()->open();
  model->sheet()->setSpoken(u"a"_s);
  model->sheet()->setWritten(u"b"_s);
  model->sheet()->dismiss();
  settle();
  EXPECT_THAT(stored(), IsEmpty());
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

}  // namespace
}  // namespace vemo
