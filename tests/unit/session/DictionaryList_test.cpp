// What the dictionary's list shows: from the store, from the account, and to nobody.
#include "DictionaryListFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

using DictionaryListTest = DictionaryListFixture;

// Loading.

TEST_F(DictionaryListTest, AtTheStartItHoldsWhatIsStored) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"1"_s, u"p"_s, u"r"_s}));
}

TEST_F(DictionaryListTest, StoredBytesThatAreNoListAreAnEmptyOne) {
  storage.settings.set(keys::customDictionaryEntries, "{broken"_ba);
  makeSignedInList();
  EXPECT_THAT(list->entries(), IsEmpty());
}

TEST_F(DictionaryListTest, WithNobodySignedInTheListIsEmptyAndNothingIsAsked) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  startUp();
  makeList();
  load();
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
  EXPECT_THAT(stored(), SizeIs(1)) << "the stored list is not touched";
}

TEST_F(DictionaryListTest, APullComesAfterTheProfile) {
  makeSignedInList();
  const auto before = requestCount();
  serverHolds({});
  load();
  ASSERT_EQ(requestCount(), before + 2);
  EXPECT_EQ(http.requests().at(before).url.path(), profilePath);
  EXPECT_EQ(http.requests().at(before + 1).url.path(), dictionaryPath);
}

TEST_F(DictionaryListTest, AProfileThatEndsTheSessionEndsTheLoading) {
  makeSignedInList();
  http.answer(profilePath, 401);
  load();
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_FALSE(list->isDictionaryLoading());
}

TEST_F(DictionaryListTest, TheServersListComesInItsOrderAndIsStored) {
  makeSignedInList();
  const Entry second{u"2"_s, u"p"_s, u"r"_s};
  const Entry first{u"1"_s, u"q"_s, u"s"_s};
  serverHolds({second, first});
  load();
  EXPECT_THAT(list->entries(), ElementsAre(second, first));
  EXPECT_THAT(stored(), ElementsAre(second, first));
}

TEST_F(DictionaryListTest, AServersListOfOneReplacesALocalListOfFifty) {
  storeFifty();
  makeSignedInList();
  ASSERT_THAT(list->entries(), SizeIs(50));
  serverHolds({{u"only"_s, u"p"_s, u"r"_s}});
  load();
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"only"_s, u"p"_s, u"r"_s}));
  EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(DictionaryListTest, AnEmptyServersListLeavesALocalListOfFiftyUntouched) {
  storeFifty();
  makeSignedInList();
  serverHolds({});
  load();
  EXPECT_EQ(list->entries(), fifty);
  EXPECT_EQ(stored(), fifty);
}

TEST_F(DictionaryListTest, AFailedPullLeavesTheLocalListUntouched) {
  storeFifty();
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  load();
  http.answer(dictionaryPath, 401);
  load();
  http.answer(dictionaryPath, 200, "no list");
  load();
  http.fail(dictionaryPath, UrlError::NotConnectedToInternet);
  load();
  EXPECT_EQ(list->entries(), fifty);
  EXPECT_EQ(stored(), fifty);
  EXPECT_TRUE(auth->isSignedIn()) << "a 401 from here ends no session";
  EXPECT_FALSE(list->isDictionaryLoading());
}

TEST_F(DictionaryListTest, ItIsLoadingFromTheRequestToTheAnswer) {
  makeSignedInList();
  serverHolds({{u"1"_s, u"p"_s, u"r"_s}}, 5s);
  EXPECT_FALSE(list->isDictionaryLoading());
  load();
  EXPECT_TRUE(list->isDictionaryLoading());
  clock.advance(4'999ms);
  EXPECT_TRUE(list->isDictionaryLoading());
  changes = 0;
  clock.advance(1ms);
  EXPECT_FALSE(list->isDictionaryLoading());
  EXPECT_EQ(changes, 1);
}

TEST_F(DictionaryListTest, ASecondAppearanceReplacesThePullUnderWay) {
  makeSignedInList();
  serverHolds({{u"first"_s, u"p"_s, u"r"_s}}, 5s);
  load();
  serverHolds({{u"second"_s, u"p"_s, u"r"_s}}, 1s);
  load();
  EXPECT_EQ(http.openCount(), 1);
  clock.advance(1s);
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"second"_s, u"p"_s, u"r"_s}));
  EXPECT_FALSE(list->isDictionaryLoading());
  clock.advance(10s);
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"second"_s, u"p"_s, u"r"_s}));
}

TEST_F(DictionaryListTest, ASignInLoads) {
  startUp();
  makeList();
  serverHolds({{u"1"_s, u"p"_s, u"r"_s}});
  signIn();
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"1"_s, u"p"_s, u"r"_s}));
  EXPECT_EQ(requestsTo(dictionaryPath).size(), 1);
}

// Signing out.

TEST_F(DictionaryListTest, ASignOutEmptiesTheListAndTheNextSignInBringsItBack) {
  const Entry row{u"1"_s, u"p"_s, u"r"_s};
  store({row});
  makeSignedInList();
  auth->signOut();
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
  serverHolds({row});
  signIn();
  EXPECT_THAT(list->entries(), ElementsAre(row));
}

TEST_F(DictionaryListTest, APullOfTheAccountThatSignedOutIsNeverShown) {
  makeSignedInList();
  serverHolds({{u"old"_s, u"p"_s, u"r"_s}}, 5s);
  load();
  ASSERT_TRUE(list->isDictionaryLoading());
  auth->signOut();
  EXPECT_FALSE(list->isDictionaryLoading());
  serverHolds({});
  signIn();
  clock.advance(10s);
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
}

TEST_F(DictionaryListTest, AnAdditionAnsweredAfterTheSignOutStoresNothing) {
  makeSignedInList();
  serverAdds({u"7"_s, u"p"_s, u"r"_s}, 5s);
  add(u"p"_s, u"r"_s);
  auth->signOut();
  clock.advance(5s);
  EXPECT_THAT(list->entries(), IsEmpty());
  EXPECT_FALSE(storage.settings.contains(keys::customDictionaryEntries));
}

TEST_F(DictionaryListTest, AListThatGoesAwayLeavesNoRequestBehind) {
  makeSignedInList();
  serverHolds({}, 5s);
  load();
  EXPECT_EQ(http.openCount(), 1);
  list.reset();
  EXPECT_EQ(http.openCount(), 0);
  auth->signOut();
}

}  // namespace
}  // namespace vemo
