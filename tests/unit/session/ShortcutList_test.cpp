#include "session/ShortcutList.h"

#include "EntryListFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using Entry = CustomShortcutEntry;

class ShortcutListTest : public EntryListFixture {
 protected:
  void makeList() {
    list.emplace(storage.settings, *auth);
    observation = list->changed.observe([this] { ++changes; });
  }

  void store(const std::vector<Entry>& entries) {
    storage.settings.set(keys::customShortcutEntries, encodeShortcuts(entries).value());
  }
  std::vector<Entry> stored() const {
    return decodeShortcuts(storage.settings.get(keys::customShortcutEntries, "[]"_ba)).value();
  }

  std::optional<ShortcutList> list;
  Observation observation;
  int changes = 0;
};

TEST_F(ShortcutListTest, AnEntryIsTrimmedStoredAtOnceAndComesLast) {
  const Entry old{u"1"_s, u"t"_s, u"s"_s};
  store({old});
  startSignedIn();
  makeList();
  list->add(u"\tmy address "_s, u" line 1\nline 2\n "_s);
  ASSERT_THAT(stored(), SizeIs(2));
  EXPECT_EQ(stored().front(), old);
  EXPECT_FALSE(QUuid(stored().back().id).isNull());
  EXPECT_EQ(stored().back().trigger, u"my address"_s);
  EXPECT_EQ(stored().back().snippet, u"line 1\nline 2\n"_s);
  EXPECT_EQ(list->entries(), stored());
  EXPECT_EQ(changes, 1);
}

TEST_F(ShortcutListTest, AChangedRowKeepsItsPlaceAndItsIdentifier) {
  const Entry last{u"2"_s, u"t"_s, u"s"_s};
  store({{u"1"_s, u"t"_s, u"s"_s}, last});
  startSignedIn();
  makeList();
  EXPECT_TRUE(list->edit(u"1"_s, u" my address"_s, u"line 1\nline 2 "_s));
  EXPECT_THAT(stored(), ElementsAre(Entry{u"1"_s, u"my address"_s, u"line 1\nline 2"_s}, last));
  EXPECT_EQ(list->entries(), stored());
  EXPECT_EQ(changes, 1);
}

TEST_F(ShortcutListTest, ARowThatHasGoneIsNotChanged) {
  startSignedIn();
  makeList();
  EXPECT_FALSE(list->edit(u"1"_s, u"t"_s, u"s"_s));
  EXPECT_EQ(changes, 0);
}

TEST_F(ShortcutListTest, NothingOfItLeavesTheMachine) {
  startSignedIn();
  makeList();
  const auto before = requestCount();
  list->add(u"t"_s, u"s"_s);
  list->load();
  list->remove(list->entries().front().id);
  settle();
  EXPECT_EQ(requestCount(), before);
}

TEST_F(ShortcutListTest, ARemovalIsStoredAtOnce) {
  const Entry kept{u"2"_s, u"t"_s, u"s"_s};
  store({{u"1"_s, u"t"_s, u"s"_s}, kept});
  startSignedIn();
  makeList();
  list->remove(u"1"_s);
  EXPECT_THAT(stored(), ElementsAre(kept));
  EXPECT_THAT(list->entries(), ElementsAre(kept));
  EXPECT_EQ(changes, 1);
}

TEST_F(ShortcutListTest, ASignOutEmptiesItAndItsStore) {
  store({{u"1"_s, u"t"_s, u"s"_s}});
  startSignedIn();
  makeList();
  auth->signOut();
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::customShortcutEntries));
  EXPECT_EQ(changes, 1);
}

TEST_F(ShortcutListTest, WithNobodySignedInItIsEmptyAndASignInShowsWhatIsStored) {
  const Entry row{u"1"_s, u"t"_s, u"s"_s};
  store({row});
  startUp();
  makeList();
  list->load();
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_THAT(stored(), ElementsAre(row));
  signIn();
  EXPECT_THAT(list->entries(), ElementsAre(row));
}

TEST_F(ShortcutListTest, AChangeWithNobodySignedInLosesNothingThatIsStored) {
  store({{u"1"_s, u"t"_s, u"s"_s}, {u"2"_s, u"t"_s, u"s"_s}});
  startUp();
  makeList();
  list->add(u"new"_s, u"snippet"_s);
  EXPECT_THAT(stored(), SizeIs(3));
  list->remove(u"1"_s);
  EXPECT_THAT(stored(), SizeIs(2));
}

TEST_F(ShortcutListTest, ATextThatCannotBeEncodedStaysInMemoryAndTheStoredListStands) {
  store({{u"1"_s, u"t"_s, u"s"_s}});
  startSignedIn();
  makeList();
  list->add(u"t"_s, QString(QChar(0xdc00)));
  EXPECT_THAT(list->entries(), SizeIs(2));
  EXPECT_THAT(stored(), SizeIs(1));
}

}  // namespace
}  // namespace vemo
