// Snapshots of owners that behave, and of owners that don't.
#include <gmock/gmock.h>
#include <poll.h>

#include "contract/x11/EventLoop.h"
#include "contract/x11/ScriptedOwner.h"
#include "fakes/FakeMainThread.h"
#include "platform/x11/X11Clipboard.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using Manner = ScriptedOwner::Manner;

class X11ClipboardReadingTest : public testing::Test {
 protected:
  std::vector<ClipboardEntry> snapshot() {
    const auto contents = loop.await(clipboard->snapshot());
    EXPECT_TRUE(contents.has_value()) << "the snapshot hangs";
    if (!contents || contents->empty()) return {};
    return contents->front().contents;
  }

  EventLoop loop;
  std::unique_ptr<X11Clipboard> clipboard = X11Clipboard::create(loop.mainThread());
};

TEST_F(X11ClipboardReadingTest, QuestionsAboutTheSelectionAreNoContent) {
  ScriptedOwner owner({{"UTF8_STRING", "text"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"UTF8_STRING"_s, "text"}));
}

TEST_F(X11ClipboardReadingTest, TargetsWithSideEffectsAreNotAskedFor) {
  ScriptedOwner owner(
      {{"DELETE", ""}, {"INSERT_SELECTION", ""}, {"INSERT_PROPERTY", ""}, {"STRING", "text"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"STRING"_s, "text"}));
  EXPECT_EQ(owner.requestCount(), 2U);
}

TEST_F(X11ClipboardReadingTest, MoreTargetsThanAreAskedForAtATimeKeepTheirOrder) {
  std::vector<ScriptedOwner::Target> targets;
  for (int i = 0; i < 30; ++i) {
    targets.push_back({"type/" + QByteArray::number(i), QByteArray::number(i * i),
                       i % 3 == 0 ? Manner::InPieces : Manner::AtOnce});
  }
  ScriptedOwner owner(targets);
  const auto entries = snapshot();
  ASSERT_EQ(entries.size(), targets.size());
  for (std::size_t i = 0; i < entries.size(); ++i)
    EXPECT_EQ(entries[i], (ClipboardEntry{QString::fromLatin1(targets[i].name), targets[i].data}));
}

TEST_F(X11ClipboardReadingTest, PiecesArePutTogether) {
  const QByteArray data(ScriptedOwner::pieceBytes * 3 + 17, 'x');
  ScriptedOwner owner({{"image/png", data, Manner::InPieces}, {"text/plain", "t"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"image/png"_s, data},
                                      ClipboardEntry{u"text/plain"_s, "t"}));
}

TEST_F(X11ClipboardReadingTest, AnnouncedPiecesOfNothingAreEmptyData) {
  ScriptedOwner owner({{"image/png", "", Manner::InPieces}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"image/png"_s, ""}));
}

TEST_F(X11ClipboardReadingTest, ARefusedTargetIsKeptEmpty) {
  ScriptedOwner owner({{"text/html", "", Manner::Refuse}, {"text/plain", "t"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"text/html"_s, ""},
                                      ClipboardEntry{u"text/plain"_s, "t"}));
}

TEST_F(X11ClipboardReadingTest, AnOwnerThatCannotListItsTargetsIsAskedForText) {
  ScriptedOwner owner({{"STRING", "old"}});
  owner.answerTargetsWith(Manner::Refuse);
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"STRING"_s, "old"}));
}

TEST_F(X11ClipboardReadingTest, AnOwnerThatNeverAnswersCostsABoundedWait) {
  ScriptedOwner owner({{"UTF8_STRING", "text"}});
  owner.answerTargetsWith(Manner::NeverAnswer);
  EXPECT_THAT(snapshot(), ElementsAre());
}

TEST_F(X11ClipboardReadingTest, AMachineThatStoodStillWaitsForItsOwnerAllTheSame) {
  ScriptedOwner owner({{"UTF8_STRING", "text"}});
  // Runs when the owner has been asked, and holds up the owner and the reader alike.
  TaskScope scope(loop.mainThread());
  std::optional<ClipboardContents> contents;
  const auto read = [](X11Clipboard* from, std::optional<ClipboardContents>* to) -> Task<> {
    *to = co_await from->snapshot();
  };
  scope.start([&](std::stop_token) { return read(clipboard.get(), &contents); });
  loop.mainThread().post([] { poll(nullptr, 0, 600); });
  ASSERT_TRUE(loop.runUntil([&] { return contents.has_value(); }));
  EXPECT_EQ(*contents, ClipboardContents{ClipboardItem({{u"UTF8_STRING"_s, "text"}})});
}

TEST_F(X11ClipboardReadingTest, ATargetThatIsNeverAnsweredIsLeftEmptyAndTheOthersAreRead) {
  ScriptedOwner owner({{"text/html", "h", Manner::NeverAnswer}, {"text/plain", "t"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"text/html"_s, ""},
                                      ClipboardEntry{u"text/plain"_s, "t"}));
}

TEST_F(X11ClipboardReadingTest, AnOwnerThatAnnouncesPiecesAndStallsLeavesThatTargetEmpty) {
  ScriptedOwner owner({{"image/png", "p", Manner::AnnouncePiecesAndStall}, {"text/plain", "t"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"image/png"_s, ""},
                                      ClipboardEntry{u"text/plain"_s, "t"}));
}

TEST_F(X11ClipboardReadingTest, AnOwnerThatStallsMidwayLeavesNoHalfData) {
  ScriptedOwner owner({{"image/png", QByteArray(300'000, 'p'), Manner::StallAfterTheFirstPiece}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"image/png"_s, ""}));
}

TEST_F(X11ClipboardReadingTest, AnAnswerWithoutAPropertyIsEmptyData) {
  ScriptedOwner owner({{"image/png", "p", Manner::NameATypeAndNothingElse}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"image/png"_s, ""}));
}

TEST_F(X11ClipboardReadingTest, AnOwnerThatDiesLeavesWhatItHandedOver) {
  ScriptedOwner owner({{"text/plain", "t"}, {"image/png", "p"}});
  owner.dieAt("image/png");
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"text/plain"_s, "t"},
                                      ClipboardEntry{u"image/png"_s, ""}));
  EXPECT_TRUE(owner.isDead());
}

TEST_F(X11ClipboardReadingTest, ANewOwnerDuringASnapshotIsReadInstead) {
  ScriptedOwner first({{"text/plain", "first", Manner::NeverAnswer}});
  std::optional<ScriptedOwner> second;
  std::optional<ClipboardContents> contents;
  TaskScope scope(loop.mainThread());
  const auto read = [](X11Clipboard* from, std::optional<ClipboardContents>* to) -> Task<> {
    *to = co_await from->snapshot();
  };
  scope.start([&](std::stop_token) { return read(clipboard.get(), &contents); });
  ASSERT_TRUE(loop.runUntil([&] { return first.requestCount() == 2; }));
  second.emplace(std::vector<ScriptedOwner::Target>{{"text/plain", "second"}});
  ASSERT_TRUE(loop.runUntil([&] { return contents.has_value(); }));
  ASSERT_EQ(contents->size(), 1U);
  EXPECT_THAT(contents->front().contents, ElementsAre(ClipboardEntry{u"text/plain"_s, "second"}));
}

TEST_F(X11ClipboardReadingTest, ASnapshotThatIsAbandonedLeavesNothingBehind) {
  ScriptedOwner owner({{"text/plain", "t", Manner::NeverAnswer}});
  {
    TaskScope scope(loop.mainThread());
    const auto read = [](X11Clipboard* from) -> Task<> { co_await from->snapshot(); };
    scope.start([&](std::stop_token) { return read(clipboard.get()); });
    ASSERT_TRUE(loop.runUntil([&] { return owner.requestCount() == 2; }));
  }
  ScriptedOwner next({{"text/plain", "next"}});
  EXPECT_THAT(snapshot(), ElementsAre(ClipboardEntry{u"text/plain"_s, "next"}));
}

TEST_F(X11ClipboardReadingTest, OurOwnContentIsReadWithoutAskingTheServer) {
  EXPECT_TRUE(clipboard->replace({ClipboardItem{{{u"text/html"_s, "<i>"}}}}));
  // Nobody answers requests here unless the event loop runs; the snapshot ends without one.
  FakeMainThread unused;
  TaskScope scope(unused);
  bool isDone = false;
  const auto read = [](X11Clipboard* from, bool* done) -> Task<> {
    const ClipboardContents contents = co_await from->snapshot();
    *done = contents == ClipboardContents{ClipboardItem{{{u"text/html"_s, "<i>"}}}};
  };
  scope.start([&](std::stop_token) { return read(clipboard.get(), &isDone); });
  unused.drain();
  EXPECT_TRUE(isDone);
}

}  // namespace
}  // namespace vemo
