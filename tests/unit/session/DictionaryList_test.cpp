#include "session/DictionaryList.h"

#include "EntryListFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using Entry = CustomDictionaryEntry;

class DictionaryListTest : public EntryListFixture {
 protected:
  void makeList() {
    list.emplace(mainThread, storage.settings, *auth);
    observation = list->changed.observe([this] { ++changes; });
  }

  void makeSignedInList() {
    startSignedIn();
    makeList();
  }

  void store(const std::vector<Entry>& entries) {
    storage.settings.set(keys::customDictionaryEntries, encodeDictionary(entries).value());
  }
  std::vector<Entry> stored() const {
    return decodeDictionary(storage.settings.get(keys::customDictionaryEntries, "[]"_ba)).value();
  }

  void storeFifty() {
    for (int number = 0; number < 50; ++number)
      fifty.push_back({QString::number(number), u"phrase"_s, u"replacement"_s});
    store(fifty);
  }

  static QByteArray row(const Entry& entry) {
    return compactJson(QJsonObject{
        {u"id"_s, entry.id}, {u"phrase"_s, entry.phrase}, {u"replacement"_s, entry.replacement}});
  }
  void serverHolds(const std::vector<Entry>& entries, Clock::Duration delay = {}) {
    QByteArrayList rows;
    for (const Entry& entry : entries) rows.append(row(entry));
    http.answer(dictionaryPath, 200, R"({"status":"ok","dictionary":[)" + rows.join(',') + "]}",
                delay);
  }
  void serverAdds(const Entry& entry, Clock::Duration delay = {}) {
    http.answer(dictionaryPath, 201, R"({"status":"ok","entry":)" + row(entry) + "}", delay);
  }

  void load() {
    list->load();
    settle();
  }

  void add(const QString& phrase, const QString& replacement) {
    list->add(phrase, replacement);
    settle();
  }

  std::optional<DictionaryList> list;
  std::vector<Entry> fifty;
  Observation observation;
  int changes = 0;
};

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

// Adding.

TEST_F(DictionaryListTest, AnEntryIsStoredAtOnceAndTakesTheServersIdentifierLater) {
  makeSignedInList();
  serverAdds({u"7"_s, u"as the server has it"_s, u"other"_s}, 3s);
  list->add(u"btw"_s, u"by the way"_s);
  ASSERT_THAT(stored(), SizeIs(1));
  const Entry temporary = stored().front();
  EXPECT_FALSE(QUuid(temporary.id).isNull());
  EXPECT_EQ(temporary.phrase, u"btw"_s);
  EXPECT_EQ(temporary.replacement, u"by the way"_s);
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
  settle();
  EXPECT_EQ(lastRequest().body, R"({"phrase":"btw","replacement":"by the way"})");
  changes = 0;
  clock.advance(3s);
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"7"_s, u"btw"_s, u"by the way"_s}));
  EXPECT_THAT(stored(), ElementsAre(Entry{u"7"_s, u"btw"_s, u"by the way"_s}));
  EXPECT_EQ(changes, 1);
}

TEST_F(DictionaryListTest, NewEntriesComeLast) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(u"new"_s, u"word"_s);
  ASSERT_THAT(list->entries(), SizeIs(2));
  EXPECT_EQ(list->entries().back().phrase, u"new"_s);
}

TEST_F(DictionaryListTest, SpacesAndTabsAroundTheTextsAreDroppedAndLineBreaksStay) {
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(u" \t\u00a0a b\t "_s, u" \n c\n\t"_s);
  ASSERT_THAT(list->entries(), SizeIs(1));
  EXPECT_EQ(list->entries().front().phrase, u"a b"_s);
  EXPECT_EQ(list->entries().front().replacement, u"\n c\n"_s);
  EXPECT_EQ(lastRequest().body, R"({"phrase":"a b","replacement":"\n c\n"})");
}

TEST_F(DictionaryListTest, AnAdditionThatFailsStaysLocalUntilThePullThatReturnsAnything) {
  makeSignedInList();
  http.fail(dictionaryPath, UrlError::TimedOut);
  add(u"p"_s, u"r"_s);
  EXPECT_THAT(stored(), SizeIs(1));
  serverHolds({});
  load();
  EXPECT_THAT(stored(), SizeIs(1));
  serverHolds({{u"1"_s, u"q"_s, u"s"_s}});
  load();
  EXPECT_THAT(stored(), ElementsAre(Entry{u"1"_s, u"q"_s, u"s"_s}));
}

TEST_F(DictionaryListTest, AnEntryAddedWhileSignedOutStaysLocalAndIsNeverPushed) {
  startUp();
  makeList();
  add(u"p"_s, u"r"_s);
  ASSERT_THAT(stored(), SizeIs(1));
  const Entry local = stored().front();
  EXPECT_FALSE(QUuid(local.id).isNull());
  serverHolds({});
  signIn();
  EXPECT_THAT(list->entries(), ElementsAre(local));
  EXPECT_THAT(requestsTo(dictionaryPath), ElementsAre("GET /dictionary"));
  serverHolds({{u"1"_s, u"q"_s, u"s"_s}});
  load();
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"1"_s, u"q"_s, u"s"_s}));
  EXPECT_THAT(requestsTo(dictionaryPath), Not(Contains("POST /dictionary")));
}

TEST_F(DictionaryListTest, AnEntryAddedWhileSignedOutLeavesTheStoredOnes) {
  storeFifty();
  startUp();
  makeList();
  add(u"p"_s, u"r"_s);
  EXPECT_THAT(stored(), SizeIs(51));
}

TEST_F(DictionaryListTest, ATextThatCannotBeEncodedStaysInMemoryAndTheStoredListStands) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(QString(QChar(0xd800)), u"r"_s);
  EXPECT_THAT(list->entries(), SizeIs(2));
  EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(DictionaryListTest, AListTooLongToBeReadAgainIsNotStored) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  serverHolds({{u"2"_s, u"p"_s, QString(maxStoredBytes, u'x')}});
  load();
  EXPECT_THAT(list->entries(), SizeIs(1));
  EXPECT_EQ(list->entries().front().id, u"2"_s);
  EXPECT_EQ(stored().front().id, u"1"_s);
}

// A pull and an addition at once.

TEST_F(DictionaryListTest, APullAnsweredBeforeAnAdditionAndLandingAfterItDropsTheNewRow) {
  makeSignedInList();
  serverHolds({{u"1"_s, u"q"_s, u"s"_s}}, 5s);
  load();
  serverAdds({u"7"_s, u"p"_s, u"r"_s}, 1s);
  add(u"p"_s, u"r"_s);
  clock.advance(1s);
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"7"_s, u"p"_s, u"r"_s}));
  clock.advance(4s);
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"1"_s, u"q"_s, u"s"_s}));
  EXPECT_EQ(stored(), list->entries());
}

TEST_F(DictionaryListTest, AnAdditionAnsweredAfterThePullFindsItsRowGone) {
  makeSignedInList();
  serverHolds({{u"1"_s, u"q"_s, u"s"_s}}, 1s);
  load();
  serverAdds({u"7"_s, u"p"_s, u"r"_s}, 5s);
  add(u"p"_s, u"r"_s);
  clock.advance(1s);
  const std::vector<Entry> pulled{{u"1"_s, u"q"_s, u"s"_s}};
  EXPECT_EQ(list->entries(), pulled);
  clock.advance(4s);
  EXPECT_EQ(list->entries(), pulled);
  EXPECT_EQ(stored(), pulled);
}

TEST_F(DictionaryListTest, TwoAdditionsAnsweredInTheOtherOrderKeepTheirRows) {
  makeSignedInList();
  serverAdds({u"slow"_s, u"a"_s, u"b"_s}, 5s);
  add(u"a"_s, u"b"_s);
  serverAdds({u"fast"_s, u"c"_s, u"d"_s}, 1s);
  add(u"c"_s, u"d"_s);
  clock.advance(5s);
  EXPECT_THAT(stored(),
              ElementsAre(Entry{u"slow"_s, u"a"_s, u"b"_s}, Entry{u"fast"_s, u"c"_s, u"d"_s}));
}

// Editing.

TEST_F(DictionaryListTest, AChangedRowKeepsItsPlaceAndIsANewEntryOfTheAccount) {
  const Entry first{u"1"_s, u"a"_s, u"b"_s};
  const Entry last{u"3"_s, u"e"_s, u"f"_s};
  store({first, {u"2"_s, u"c"_s, u"d"_s}, last});
  makeSignedInList();
  http.answer(dictionaryPath + u"/2"_s, 204);
  serverAdds({u"9"_s, u"spoken"_s, u"written"_s});
  EXPECT_TRUE(list->edit(u"2"_s, u" spoken\t"_s, u"written "_s));
  EXPECT_EQ(stored(), list->entries()) << "at once";
  settle();
  EXPECT_THAT(list->entries(), ElementsAre(first, Entry{u"9"_s, u"spoken"_s, u"written"_s}, last));
  EXPECT_EQ(stored(), list->entries());
  EXPECT_THAT(requestsTo(dictionaryPath), ElementsAre("DELETE /dictionary/2", "POST /dictionary"));
}

TEST_F(DictionaryListTest, AChangeThatTheServiceFailsToTakeStaysLocal) {
  store({{u"2"_s, u"c"_s, u"d"_s}});
  makeSignedInList();
  http.answer(dictionaryPath + u"/2"_s, 500);
  http.answer(dictionaryPath, 500);
  EXPECT_TRUE(list->edit(u"2"_s, u"p"_s, u"r"_s));
  settle();
  ASSERT_THAT(stored(), SizeIs(1));
  EXPECT_FALSE(QUuid(stored().front().id).isNull());
  EXPECT_EQ(stored().front().phrase, u"p"_s);
}

TEST_F(DictionaryListTest, ARowThatHasGoneIsNotChanged) {
  makeSignedInList();
  EXPECT_FALSE(list->edit(u"1"_s, u"p"_s, u"r"_s));
  settle();
  EXPECT_EQ(changes, 0);
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

TEST_F(DictionaryListTest, AChangeWhileSignedOutStaysLocal) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  startUp();
  makeList();
  EXPECT_TRUE(list->edit(u"1"_s, u"q"_s, u"s"_s));
  settle();
  EXPECT_EQ(stored().front().phrase, u"q"_s);
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

// Removing.

TEST_F(DictionaryListTest, ARemovalIsStoredAtOnceAndToldInTheBackground) {
  const Entry kept{u"2"_s, u"q"_s, u"s"_s};
  store({{u"1"_s, u"p"_s, u"r"_s}, kept, {u"1"_s, u"same id"_s, u"r"_s}});
  makeSignedInList();
  http.answer(dictionaryPath + u"/1"_s, 204);
  list->remove(u"1"_s);
  EXPECT_THAT(list->entries(), ElementsAre(kept));
  EXPECT_THAT(stored(), ElementsAre(kept));
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
  settle();
  EXPECT_THAT(requestsTo(dictionaryPath), ElementsAre("DELETE /dictionary/1"));
}

TEST_F(DictionaryListTest, ARemovalThatFailsComesBackWithTheNextPull) {
  const Entry row{u"1"_s, u"p"_s, u"r"_s};
  store({row});
  makeSignedInList();
  http.answer(dictionaryPath + u"/1"_s, 500);
  list->remove(u"1"_s);
  settle();
  EXPECT_THAT(list->entries(), IsEmpty());
  serverHolds({row});
  load();
  EXPECT_THAT(list->entries(), ElementsAre(row));
}

TEST_F(DictionaryListTest, ARowRemovedUnderItsTemporaryIdentifierComesBackFromTheServer) {
  makeSignedInList();
  serverAdds({u"7"_s, u"p"_s, u"r"_s}, 5s);
  add(u"p"_s, u"r"_s);
  const QString temporary = list->entries().front().id;
  const QString path = dictionaryPath + u'/' + temporary;
  http.answer(path, 404);
  list->remove(temporary);
  settle();
  EXPECT_THAT(requestsTo(path), SizeIs(1));
  clock.advance(5s);
  EXPECT_THAT(list->entries(), IsEmpty()) << "the answer to the addition finds no row";
  serverHolds({{u"7"_s, u"p"_s, u"r"_s}});
  load();
  EXPECT_THAT(list->entries(), ElementsAre(Entry{u"7"_s, u"p"_s, u"r"_s}));
}

TEST_F(DictionaryListTest, ARemovalWhileSignedOutStaysLocal) {
  store({{u"1"_s, u"p"_s, u"r"_s}, {u"2"_s, u"q"_s, u"s"_s}});
  startUp();
  makeList();
  list->remove(u"1"_s);
  settle();
  EXPECT_THAT(stored(), ElementsAre(Entry{u"2"_s, u"q"_s, u"s"_s}));
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
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
