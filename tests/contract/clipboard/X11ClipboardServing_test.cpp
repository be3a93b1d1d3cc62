// What other programs get from a clipboard that is ours.
#include <gmock/gmock.h>

#include "contract/x11/EventLoop.h"
#include "contract/x11/ScriptedOwner.h"
#include "contract/x11/SelectionRequestor.h"
#include "fakes/FakeClipboard.h"
#include "platform/x11/X11Clipboard.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::IsSupersetOf;

class X11ClipboardServingTest : public testing::Test {
 protected:
  QByteArray dataOf(const QByteArray& target) {
    const auto answer = requestor.request(target);
    return answer ? answer->data : QByteArray("(refused)");
  }
  /// The targets of content alone.
  std::vector<QByteArray> contentTargets() {
    std::vector<QByteArray> targets = requestor.targets();
    EXPECT_THAT(targets, IsSupersetOf({"TARGETS", "TIMESTAMP", "MULTIPLE"}));
    std::erase_if(targets, [](const QByteArray& name) {
      return name == "TARGETS" || name == "TIMESTAMP" || name == "MULTIPLE";
    });
    return targets;
  }

  EventLoop loop;
  std::unique_ptr<X11Clipboard> clipboard = X11Clipboard::create(loop.mainThread());
  SelectionRequestor requestor;
};

TEST_F(X11ClipboardServingTest, TextIsOfferedUnderEveryNameThatProgramsAskFor) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"Käse"_s)));
  EXPECT_THAT(contentTargets(), ElementsAre("text/plain;charset=utf-8", "UTF8_STRING", "TEXT",
                                            "text/plain", "STRING"));
  EXPECT_EQ(dataOf("UTF8_STRING"), "K\xC3\xA4se");
  EXPECT_EQ(dataOf("text/plain;charset=utf-8"), "K\xC3\xA4se");
  EXPECT_EQ(dataOf("text/plain"), "K\xC3\xA4se");
  EXPECT_EQ(dataOf("STRING"), "K\xE4se");
  EXPECT_EQ(requestor.request("TEXT")->type, "UTF8_STRING");
  EXPECT_EQ(requestor.request("STRING")->type, "STRING");
}

TEST_F(X11ClipboardServingTest, TextBeyondLatin1IsNotOfferedAsString) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"日本"_s)));
  EXPECT_THAT(contentTargets(),
              ElementsAre("text/plain;charset=utf-8", "UTF8_STRING", "TEXT", "text/plain"));
  EXPECT_EQ(dataOf("STRING"), "(refused)");
}

TEST_F(X11ClipboardServingTest, TheLastCharacterOfLatin1IsOfferedAsStringAndTheNextIsNot) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"\u00FF"_s)));
  EXPECT_EQ(dataOf("STRING"), "\xFF");
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"\u0100"_s)));
  EXPECT_EQ(dataOf("STRING"), "(refused)");
}

TEST_F(X11ClipboardServingTest, MarkersAreOfferedAsTargets) {
  clipboard->replace({ClipboardItem{{{QString::fromUtf16(clipboardTextType), "t"},
                                     {u"org.nspasteboard.ConcealedType"_s, ""},
                                     {u"org.nspasteboard.TransientType"_s, ""},
                                     {u"x-kde-passwordManagerHint"_s, "secret"}}}});
  EXPECT_THAT(contentTargets(),
              IsSupersetOf({"org.nspasteboard.ConcealedType", "org.nspasteboard.TransientType",
                            "x-kde-passwordManagerHint"}));
  EXPECT_EQ(dataOf("org.nspasteboard.ConcealedType"), "");
  EXPECT_EQ(dataOf("x-kde-passwordManagerHint"), "secret");
}

TEST_F(X11ClipboardServingTest, ARestoredSnapshotOffersItsOwnTargetsInItsOwnOrder) {
  const QByteArray numbers("\1\0\0\0\2\0\0\0", 8);
  {
    ScriptedOwner owner({{"text/plain;charset=utf-8", "t"},
                         {"UTF8_STRING", "t"},
                         {"TEXT", "t", ScriptedOwner::Manner::AtOnce, "STRING"},
                         {"x-numbers", numbers, ScriptedOwner::Manner::AtOnce, "INTEGER", 32},
                         {"image/png", QByteArray(2'000'000, 'p')}});
    const auto saved = loop.await(clipboard->snapshot());
    ASSERT_TRUE(saved);
    EXPECT_TRUE(clipboard->replace(plainTextContents(u"ours"_s)));
    EXPECT_TRUE(clipboard->replace(*saved));
  }
  EXPECT_THAT(contentTargets(), ElementsAre("text/plain;charset=utf-8", "UTF8_STRING", "TEXT",
                                            "x-numbers", "image/png"));
  EXPECT_EQ(requestor.request("TEXT")->type, "STRING");
  const auto answer = requestor.request("x-numbers");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->type, "INTEGER");
  EXPECT_EQ(answer->format, 32);
  EXPECT_EQ(answer->data, numbers);
  EXPECT_EQ(dataOf("image/png"), QByteArray(2'000'000, 'p'));
}

TEST_F(X11ClipboardServingTest, ASnapshotRestoredTwiceStillOffersItsOwnTargets) {
  ScriptedOwner owner({{"text/plain;charset=utf-8", "t"}});
  for (int round = 0; round < 2; ++round) {
    const auto saved = loop.await(clipboard->snapshot());
    ASSERT_TRUE(saved);
    EXPECT_TRUE(clipboard->replace(plainTextContents(u"ours"_s)));
    EXPECT_TRUE(clipboard->replace(*saved));
    EXPECT_THAT(contentTargets(), ElementsAre("text/plain;charset=utf-8"));
  }
}

TEST_F(X11ClipboardServingTest, OurOwnTextThatIsRestoredKeepsAllItsNames) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"one"_s)));
  const auto saved = loop.await(clipboard->snapshot());
  ASSERT_TRUE(saved);
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"two"_s)));
  EXPECT_TRUE(clipboard->replace(*saved));
  EXPECT_EQ(dataOf("UTF8_STRING"), "one");
}

TEST_F(X11ClipboardServingTest, LongDataGoesInPiecesAndArrivesWhole) {
  for (const qsizetype size :
       {X11IncrementalSender::pieceBytes, X11IncrementalSender::pieceBytes + 1,
        3 * X11IncrementalSender::pieceBytes}) {
    QByteArray data(size, 'd');
    data[size - 1] = 'e';
    EXPECT_TRUE(clipboard->replace({ClipboardItem{{{u"image/png"_s, data}}}}));
    EXPECT_TRUE(dataOf("image/png") == data) << size;
  }
}

TEST_F(X11ClipboardServingTest, SeveralTargetsCanBeAskedForAtOnce) {
  EXPECT_TRUE(
      clipboard->replace({ClipboardItem{{{u"text/html"_s, "<b>"}, {u"image/png"_s, "png"}}}}));
  const auto answers = requestor.requestMultiple({"image/png", "unknown", "text/html"});
  ASSERT_EQ(answers.size(), 3U);
  EXPECT_EQ(answers[0]->data, "png");
  EXPECT_FALSE(answers[1]);
  EXPECT_EQ(answers[2]->data, "<b>");
}

TEST_F(X11ClipboardServingTest, ARequestorThatVanishesMidwayDisturbsNobody) {
  const QByteArray data(5'000'000, 'd');
  EXPECT_TRUE(clipboard->replace({ClipboardItem{{{u"image/png"_s, data}}}}));
  SelectionRequestor().requestAndVanish("image/png");
  EXPECT_TRUE(dataOf("image/png") == data);
}

TEST_F(X11ClipboardServingTest, TheTimestampIsTheServersTime) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"t"_s)));
  const auto answer = requestor.request("TIMESTAMP");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->type, "INTEGER");
  EXPECT_EQ(answer->data.size(), 4);
  EXPECT_NE(answer->data, QByteArray(4, '\0'));
}

TEST_F(X11ClipboardServingTest, AnUnknownTargetIsRefused) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"t"_s)));
  EXPECT_EQ(dataOf("image/png"), "(refused)");
}

TEST_F(X11ClipboardServingTest, AnEmptiedClipboardHasNoOwner) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"t"_s)));
  EXPECT_TRUE(clipboard->replace({}));
  EXPECT_THAT(requestor.targets(), IsEmpty());
}

TEST_F(X11ClipboardServingTest, LosingTheClipboardFreesTheContent) {
  QByteArray data(1'000'000, 'd');
  EXPECT_TRUE(clipboard->replace({ClipboardItem{{{u"image/png"_s, data}}}}));
  EXPECT_FALSE(data.isDetached());
  ScriptedOwner owner({{"text/plain", "t"}});
  EXPECT_TRUE(loop.runUntil([&] { return clipboard->changeCount() > 0 && data.isDetached(); }));
}

}  // namespace
}  // namespace vemo
