// Entries added and removed, and how that overlaps with a pull.
#include "DictionaryListFixture.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

using DictionaryListChangesTest = DictionaryListFixture;

// Adding.

TEST_F(DictionaryListChangesTest, AnEntryIsStoredAtOnceAndTakesTheServersIdentifierLater) {
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

TEST_F(DictionaryListChangesTest, NewEntriesComeLast) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(u"new"_s, u"word"_s);
  ASSERT_THAT(list->entries(), SizeIs(2));
  EXPECT_EQ(list->entries().back().phrase, u"new"_s);
}

TEST_F(DictionaryListChangesTest, SpacesAndTabsAroundTheTextsAreDroppedAndLineBreaksStay) {
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(u" \t\u00a0a b\t "_s, u" \n c\n\t"_s);
  ASSERT_THAT(list->entries(), SizeIs(1));
  EXPECT_EQ(list->entries().front().phrase, u"a b"_s);
  EXPECT_EQ(list->entries().front().replacement, u"\n c\n"_s);
  EXPECT_EQ(lastRequest().body, R"({"phrase":"a b","replacement":"\n c\n"})");
}

TEST_F(DictionaryListChangesTest, AnAdditionThatFailsStaysLocalUntilThePullThatReturnsAnything) {
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

TEST_F(DictionaryListChangesTest, AnEntryAddedWhileSignedOutStaysLocalAndIsNeverPushed) {
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

TEST_F(DictionaryListChangesTest, AnEntryAddedWhileSignedOutLeavesTheStoredOnes) {
  storeFifty();
  startUp();
  makeList();
  add(u"p"_s, u"r"_s);
  EXPECT_THAT(stored(), SizeIs(51));
}

TEST_F(DictionaryListChangesTest, ATextThatCannotBeEncodedStaysInMemoryAndTheStoredListStands) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  http.answer(dictionaryPath, 500);
  add(QString(QChar(0xd800)), u"r"_s);
  EXPECT_THAT(list->entries(), SizeIs(2));
  EXPECT_THAT(stored(), SizeIs(1));
}

TEST_F(DictionaryListChangesTest, AListTooLongToBeReadAgainIsNotStored) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  makeSignedInList();
  serverHolds({{u"2"_s, u"p"_s, QString(maxStoredBytes, u'x')}});
  load();
  EXPECT_THAT(list->entries(), SizeIs(1));
  EXPECT_EQ(list->entries().front().id, u"2"_s);
  EXPECT_EQ(stored().front().id, u"1"_s);
}

// A pull and an addition at once.

TEST_F(DictionaryListChangesTest, APullAnsweredBeforeAnAdditionAndLandingAfterItDropsTheNewRow) {
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

TEST_F(DictionaryListChangesTest, AnAdditionAnsweredAfterThePullFindsItsRowGone) {
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

TEST_F(DictionaryListChangesTest, TwoAdditionsAnsweredInTheOtherOrderKeepTheirRows) {
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

TEST_F(DictionaryListChangesTest, AChangedRowKeepsItsPlaceAndIsANewEntryOfTheAccount) {
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

TEST_F(DictionaryListChangesTest, AChangeThatTheServiceFailsToTakeStaysLocal) {
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

TEST_F(DictionaryListChangesTest, ARowThatHasGoneIsNotChanged) {
  makeSignedInList();
  EXPECT_FALSE(list->edit(u"1"_s, u"p"_s, u"r"_s));
  settle();
  EXPECT_EQ(changes, 0);
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

TEST_F(DictionaryListChangesTest, AChangeWhileSignedOutStaysLocal) {
  store({{u"1"_s, u"p"_s, u"r"_s}});
  startUp();
  makeList();
  EXPECT_TRUE(list->edit(u"1"_s, u"q"_s, u"s"_s));
  settle();
  EXPECT_EQ(stored().front().phrase, u"q"_s);
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

// Removing.

TEST_F(DictionaryListChangesTest, ARemovalIsStoredAtOnceAndToldInTheBackground) {
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

TEST_F(DictionaryListChangesTest, ARemovalThatFailsComesBackWithTheNextPull) {
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

TEST_F(DictionaryListChangesTest, ARowRemovedUnderItsTemporaryIdentifierComesBackFromTheServer) {
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

TEST_F(DictionaryListChangesTest, ARemovalWhileSignedOutStaysLocal) {
  store({{u"1"_s, u"p"_s, u"r"_s}, {u"2"_s, u"q"_s, u"s"_s}});
  startUp();
  makeList();
  list->remove(u"1"_s);
  settle();
  EXPECT_THAT(stored(), ElementsAre(Entry{u"2"_s, u"q"_s, u"s"_s}));
  EXPECT_THAT(requestsTo(dictionaryPath), IsEmpty());
}

}  // namespace
}  // namespace vemo
