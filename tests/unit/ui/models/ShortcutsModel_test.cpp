#include "ui/models/ShortcutsModel.h"

#include "session/EntryListFixture.h"
#include "session/ShortcutList.h"

namespace vemo {
namespace {

using testing::ElementsAre;

class ShortcutsModelTest : public EntryListFixture {
 protected:
  ShortcutsModelTest() {
    const std::vector<CustomShortcutEntry> entries{{u"1"_s, u"my address"_s, u"1 High Street"_s},
                                                   {u"2"_s, u"my mail"_s, u"a@b.c"_s}};
    storage.settings.set(keys::customShortcutEntries, encodeShortcuts(entries).value());
    startSignedIn();
    list.emplace(storage.settings, *auth);
    model.emplace(*list);
  }

  void saveSheet(const QString& trigger, const QString& snippet) {
    model->sheet()->setSpoken(trigger);
    model->sheet()->setWritten(snippet);
    model->sheet()->save();
  }

  const PhraseRow address{u"1"_s, u"my address"_s, u"1 High Street"_s};
  const PhraseRow mail{u"2"_s, u"my mail"_s, u"a@b.c"_s};
  std::optional<ShortcutList> list;
  std::optional<ShortcutsModel> model;
};

TEST_F(ShortcutsModelTest, TheRowsAreTheShortcutsInTheirOrder) {
  EXPECT_THAT(model->rows()->rows(), ElementsAre(address, mail));
  EXPECT_FALSE(model->isLoading());
}

TEST_F(ShortcutsModelTest, AddingTrimsAppendsAndStoresUnderANewUuid) {
  model->sheet()->open();
  saveSheet(u" here's my calendar "_s, u" Book a time:\nhttps://calendar.example "_s);
  ASSERT_EQ(model->rows()->count(), 3);
  const auto row = model->rows()->rows().back();
  EXPECT_FALSE(QUuid(row.id).isNull());
  EXPECT_EQ(row.spoken, u"here's my calendar"_s);
  EXPECT_EQ(row.written, u"Book a time:\nhttps://calendar.example"_s);
  const auto stored = decodeShortcuts(storage.settings.get(keys::customShortcutEntries, {}));
  EXPECT_EQ(stored->back().snippet, row.written);
}

TEST_F(ShortcutsModelTest, ARowIsChangedInItsPlace) {
  model->edit(u"1"_s);
  saveSheet(u"my address"_s, u"2 High Street"_s);
  EXPECT_THAT(model->rows()->rows(),
              ElementsAre(PhraseRow{u"1"_s, u"my address"_s, u"2 High Street"_s}, mail));
}

TEST_F(ShortcutsModelTest, ARowThatGoesWhileItIsChangedIsWrittenAnew) {
  model->edit(u"1"_s);
  model->remove(u"1"_s);
  saveSheet(u"my address"_s, u"2 High Street"_s);
  ASSERT_EQ(model->rows()->count(), 2);
  EXPECT_EQ(model->rows()->rows().back().written, u"2 High Street"_s);
}

TEST_F(ShortcutsModelTest, DeletingTakesTheRowAway) {
  model->remove(u"1"_s);
  EXPECT_THAT(model->rows()->rows(), ElementsAre(mail));
}

}  // namespace
}  // namespace vemo
