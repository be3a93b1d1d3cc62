// What every clipboard promises.
#include <gmock/gmock.h>

#include "contract/x11/EventLoop.h"
#include "fakes/FakeClipboard.h"
#include "platform/x11/X11Clipboard.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class Desk {
 public:
  virtual ~Desk() = default;
  virtual Clipboard& clipboard() = 0;
  virtual void writeAsAnotherApplication(ClipboardContents contents) = 0;
  /// Whether the clipboard comes to count so many changes.
  virtual bool comesToCount(std::uint64_t count) = 0;

  ClipboardContents snapshot() {
    return m_loop.await(clipboard().snapshot()).value_or(ClipboardContents());
  }

 protected:
  EventLoop m_loop;
};

class FakeDesk : public Desk {
 public:
  Clipboard& clipboard() override { return m_clipboard; }
  void writeAsAnotherApplication(ClipboardContents contents) override {
    m_clipboard.writeAsAnotherApplication(std::move(contents));
  }
  bool comesToCount(std::uint64_t count) override { return m_clipboard.changeCount() == count; }

 private:
  FakeClipboard m_clipboard;
};

class X11Desk : public Desk {
 public:
  X11Desk()
      : m_clipboard(X11Clipboard::create(m_loop.mainThread())),
        m_otherApplication(X11Clipboard::create(m_loop.mainThread())) {
    EXPECT_TRUE(m_otherApplication->replace({}));
    m_clipboard->changeCount();
  }
  Clipboard& clipboard() override { return *m_clipboard; }
  void writeAsAnotherApplication(ClipboardContents contents) override {
    EXPECT_TRUE(m_otherApplication->replace(std::move(contents)));
  }
  bool comesToCount(std::uint64_t count) override {
    return m_loop.runUntil([&] { return m_clipboard->changeCount() >= count; }) &&
           m_clipboard->changeCount() == count;
  }

 private:
  std::unique_ptr<X11Clipboard> m_clipboard;
  std::unique_ptr<X11Clipboard> m_otherApplication;
};

using MakeDesk = std::unique_ptr<Desk> (*)();

class ClipboardContract : public testing::TestWithParam<MakeDesk> {
 protected:
  std::unique_ptr<Desk> desk = GetParam()();
  Clipboard& clipboard = desk->clipboard();
};

ClipboardContents severalFormats() {
  return {ClipboardItem{{{u"text/html"_s, "<b>bold</b>"},
                         {u"image/png"_s, QByteArray("\x89PNG\0\xFF\n", 7)},
                         {u"application/x-own"_s, QByteArray(3, '\0')},
                         {u"text/uri-list"_s, "file:///a%20b\r\nfile:///c\r\n"}}}};
}

TEST_P(ClipboardContract, AnEmptyClipboardHasAnEmptySnapshot) {
  EXPECT_EQ(desk->snapshot(), ClipboardContents());
}

TEST_P(ClipboardContract, ASnapshotHoldsEveryTypeByteForByteInTheOwnersOrder) {
  desk->writeAsAnotherApplication(severalFormats());
  EXPECT_EQ(desk->snapshot(), severalFormats());
}

TEST_P(ClipboardContract, ATypeWithoutDataIsKept) {
  const ClipboardContents contents{
      ClipboardItem{{{u"text/html"_s, ""}, {u"org.nspasteboard.TransientType"_s, ""}}}};
  desk->writeAsAnotherApplication(contents);
  EXPECT_EQ(desk->snapshot(), contents);
}

TEST_P(ClipboardContract, AnImageOfFiftyMegabytesIsReadByteForByte) {
  QByteArray image(50'000'003, '\0');
  for (qsizetype i = 0; i < image.size(); ++i) image[i] = static_cast<char>(i * 31 + (i >> 13));
  const ClipboardContents contents{ClipboardItem{{{u"image/bmp"_s, image}}}};
  desk->writeAsAnotherApplication(contents);
  EXPECT_TRUE(desk->snapshot() == contents);
}

TEST_P(ClipboardContract, WhatIsWrittenIsWhatASnapshotHolds) {
  const ClipboardContents contents{ClipboardItem{{{QString::fromUtf16(clipboardTextType), "text"},
                                                  {u"org.nspasteboard.ConcealedType"_s, ""},
                                                  {u"x-kde-passwordManagerHint"_s, "secret"}}}};
  EXPECT_TRUE(clipboard.replace(contents));
  EXPECT_EQ(desk->snapshot(), contents);
}

TEST_P(ClipboardContract, WritingNothingEmptiesTheClipboard) {
  desk->writeAsAnotherApplication(severalFormats());
  EXPECT_TRUE(clipboard.replace({}));
  EXPECT_EQ(desk->snapshot(), ClipboardContents());
}

TEST_P(ClipboardContract, AWriteCountsAsOneChangeAtOnce) {
  const std::uint64_t before = clipboard.changeCount();
  EXPECT_TRUE(clipboard.replace(severalFormats()));
  EXPECT_EQ(clipboard.changeCount(), before + 1);
  EXPECT_TRUE(clipboard.replace(severalFormats()));
  EXPECT_EQ(clipboard.changeCount(), before + 2);
  EXPECT_TRUE(clipboard.replace({}));
  EXPECT_EQ(clipboard.changeCount(), before + 3);
  desk->snapshot();
  EXPECT_EQ(clipboard.changeCount(), before + 3);
}

TEST_P(ClipboardContract, AWriteByAnotherApplicationCountsAsOneChange) {
  EXPECT_TRUE(clipboard.replace(severalFormats()));
  const std::uint64_t before = clipboard.changeCount();
  desk->writeAsAnotherApplication(severalFormats());
  EXPECT_TRUE(desk->comesToCount(before + 1));
  desk->writeAsAnotherApplication({});
  EXPECT_TRUE(desk->comesToCount(before + 2));
}

TEST_P(ClipboardContract, AWriteCountsTheChangesThatCameBeforeIt) {
  const std::uint64_t before = clipboard.changeCount();
  desk->writeAsAnotherApplication(severalFormats());
  EXPECT_TRUE(clipboard.replace({}));
  EXPECT_EQ(clipboard.changeCount(), before + 2);
}

TEST_P(ClipboardContract, ASnapshotDoesNotChangeTheClipboard) {
  desk->writeAsAnotherApplication(severalFormats());
  const std::uint64_t before = clipboard.changeCount();
  desk->snapshot();
  EXPECT_EQ(clipboard.changeCount(), before);
  EXPECT_EQ(desk->snapshot(), severalFormats());
}

TEST_P(ClipboardContract, ARestoredSnapshotEqualsItself) {
  desk->writeAsAnotherApplication(severalFormats());
  const ClipboardContents saved = desk->snapshot();
  EXPECT_TRUE(clipboard.replace(plainTextContents(u"ours"_s)));
  EXPECT_TRUE(clipboard.replace(saved));
  EXPECT_EQ(desk->snapshot(), severalFormats());
}

TEST_P(ClipboardContract, AForeignWriteReplacesOurs) {
  EXPECT_TRUE(clipboard.replace(plainTextContents(u"ours"_s)));
  desk->writeAsAnotherApplication(severalFormats());
  EXPECT_EQ(desk->snapshot(), severalFormats());
}

INSTANTIATE_TEST_SUITE_P(
    Adapters, ClipboardContract,
    testing::Values(MakeDesk([] { return std::unique_ptr<Desk>(new FakeDesk); }),
                    MakeDesk([] { return std::unique_ptr<Desk>(new X11Desk); })),
    [](const auto& parameter) { return parameter.index == 0 ? "FakeClipboard" : "X11Clipboard"; });

}  // namespace
}  // namespace vemo
