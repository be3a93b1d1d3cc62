// The clipboard beside programs that nobody here wrote, a clipboard manager, and servers that go.
#include <gmock/gmock.h>

#include <QProcess>
#include <thread>

#include "contract/x11/EventLoop.h"
#include "contract/x11/PrivateServer.h"
#include "contract/x11/ScriptedOwner.h"
#include "fakes/FakeClipboard.h"
#include "platform/x11/X11Clipboard.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class X11ClipboardPeersTest : public testing::Test {
 protected:
  /// What the program prints, while the event loop goes on serving it.
  QByteArray outputOf(const QString& program, const QStringList& arguments,
                      const QByteArray& input = {}) {
    QProcess process;
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    EXPECT_TRUE(loop.runUntil([&] { return process.state() == QProcess::NotRunning; }));
    return process.readAllStandardOutput();
  }
  /// Runs a program that copies and stays in the background for as long as it owns the clipboard.
  void copyWith(const QString& program, const QStringList& arguments, const QByteArray& input) {
    const std::uint64_t before = clipboard->changeCount();
    QProcess process;
    process.setStandardOutputFile(QProcess::nullDevice());
    process.start(program, arguments);
    process.write(input);
    process.closeWriteChannel();
    ASSERT_TRUE(loop.runUntil([&] {
      return process.state() == QProcess::NotRunning && clipboard->changeCount() > before;
    }));
  }
  ClipboardContents snapshot() {
    return loop.await(clipboard->snapshot()).value_or(ClipboardContents());
  }
  /// The data of one type in a snapshot.
  QByteArray snapshotData(const QString& type) {
    for (const ClipboardItem& item : snapshot()) {
      for (const ClipboardEntry& entry : item.contents) {
        if (entry.type == type) return entry.data;
      }
    }
    return "(absent)";
  }

  EventLoop loop;
  std::unique_ptr<X11Clipboard> clipboard = X11Clipboard::create(loop.mainThread());
};

const QStringList pasteText{u"-selection"_s, u"clipboard"_s, u"-out"_s};

TEST_F(X11ClipboardPeersTest, XclipPastesOurText) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"naïve 日本 👩‍👩‍👧"_s)));
  EXPECT_EQ(outputOf(u"xclip"_s, pasteText),
            QString(u"naïve 日本 👩‍👩‍👧"_s).toUtf8());
}

TEST_F(X11ClipboardPeersTest, XselPastesOurText) {
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"naïve 日本"_s)));
  EXPECT_EQ(outputOf(u"xsel"_s, {u"--clipboard"_s, u"--output"_s}),
            QString(u"naïve 日本"_s).toUtf8());
}

TEST_F(X11ClipboardPeersTest, XclipReceivesATextOfManyMegabytes) {
  const QString text(12'000'000, u'x');
  EXPECT_TRUE(clipboard->replace(plainTextContents(text)));
  EXPECT_TRUE(outputOf(u"xclip"_s, pasteText) == text.toUtf8());
}

TEST_F(X11ClipboardPeersTest, ACopyMadeWithXselIsReadAndRestored) {
  copyWith(u"xsel"_s, {u"--clipboard"_s, u"--input"_s}, "copied");
  const ClipboardContents saved = snapshot();
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"ours"_s)));
  EXPECT_EQ(outputOf(u"xclip"_s, pasteText), "ours");
  EXPECT_TRUE(clipboard->replace(saved));
  EXPECT_EQ(outputOf(u"xclip"_s, pasteText), "copied");
}

TEST_F(X11ClipboardPeersTest, AFileListCopiedWithXclipIsReadAndRestored) {
  const QByteArray files = "file:///home/someone/a%20file.txt\r\nfile:///tmp/b\r\n";
  copyWith(u"xclip"_s, {u"-selection"_s, u"clipboard"_s, u"-t"_s, u"text/uri-list"_s, u"-in"_s},
           files);
  EXPECT_EQ(snapshotData(u"text/uri-list"_s), files);
  const ClipboardContents saved = snapshot();
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"ours"_s)));
  EXPECT_TRUE(clipboard->replace(saved));
  EXPECT_EQ(outputOf(u"xclip"_s, pasteText + QStringList{u"-t"_s, u"text/uri-list"_s}), files);
}

TEST_F(X11ClipboardPeersTest, AnImageOfFiftyMegabytesCopiedWithXclipIsReadAndRestored) {
  QByteArray image(50'000'000, '\0');
  for (qsizetype i = 0; i < image.size(); ++i) image[i] = static_cast<char>(i * 7 + (i >> 11));
  copyWith(u"xclip"_s, {u"-selection"_s, u"clipboard"_s, u"-t"_s, u"image/png"_s, u"-in"_s}, image);
  const ClipboardContents saved = snapshot();
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"ours"_s)));
  EXPECT_TRUE(clipboard->replace(saved));
  EXPECT_TRUE(outputOf(u"xclip"_s, pasteText + QStringList{u"-t"_s, u"image/png"_s}) == image);
}

/// Owns CLIPBOARD_MANAGER on a thread of its own and saves what it's told to.
class ClipboardManager {
 public:
  ClipboardManager() {
    m_connection = X11Connection::create();
    m_connection->setEventHandler([this](const xcb_generic_event_t& event) { handle(event); });
    xcb_set_selection_owner(m_connection->xcb(), m_connection->window(),
                            m_connection->atom("CLIPBOARD_MANAGER"), XCB_CURRENT_TIME);
    m_connection->synchronize();
  }
  /// Serves until the content has been saved.
  void run() {
    m_connection->processEventsUntil([this] { return m_isDone; }, EventLoop::generousLimit);
  }
  QByteArray savedText;

 private:
  void handle(const xcb_generic_event_t& event) {
    if (event.response_type == XCB_SELECTION_REQUEST) {
      m_request = reinterpret_cast<const xcb_selection_request_event_t&>(event);
      xcb_convert_selection(m_connection->xcb(), m_connection->window(),
                            m_connection->atom("CLIPBOARD"), m_connection->atom("UTF8_STRING"),
                            m_connection->atom("SAVED"), XCB_CURRENT_TIME);
    } else if ((event.response_type & 0x7F) == XCB_SELECTION_NOTIFY) {
      const auto text = m_connection->property(m_connection->window(), m_connection->atom("SAVED"),
                                               X11Connection::AfterRead::Delete, 1000);
      if (text) savedText = text->data;
      xcb_selection_notify_event_t answer{};
      answer.response_type = XCB_SELECTION_NOTIFY;
      answer.requestor = m_request.requestor;
      answer.selection = m_request.selection;
      answer.target = m_request.target;
      answer.property = m_request.property;
      xcb_send_event(m_connection->xcb(), 0, m_request.requestor, 0,
                     reinterpret_cast<const char*>(&answer));
      m_connection->synchronize();
      m_isDone = true;
    }
  }

  std::unique_ptr<X11Connection> m_connection;
  xcb_selection_request_event_t m_request{};
  bool m_isDone = false;
};

TEST_F(X11ClipboardPeersTest, AtTheEndTheContentIsHandedToTheClipboardManager) {
  ClipboardManager manager;
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"kept"_s)));
  std::thread thread([&] { manager.run(); });
  clipboard.reset();
  thread.join();
  EXPECT_EQ(manager.savedText, "kept");
}

TEST_F(X11ClipboardPeersTest, AClipboardManagerThatDoesNotAnswerDoesNotHoldUpTheEnd) {
  const ClipboardManager manager;
  EXPECT_TRUE(clipboard->replace(plainTextContents(u"lost"_s)));
  clipboard.reset();
  EXPECT_EQ(manager.savedText, "");
}

TEST_F(X11ClipboardPeersTest, WithoutAServerThereIsNoClipboard) {
  EXPECT_EQ(X11Clipboard::create(loop.mainThread(), ":9876"), nullptr);
}

TEST_F(X11ClipboardPeersTest, AServerThatDiesReadsAsAnEmptyClipboardAndEndsNothing) {
  PrivateServer server;
  const auto doomed = X11Clipboard::create(loop.mainThread(), server.display());
  ASSERT_TRUE(doomed);
  EXPECT_TRUE(doomed->replace(plainTextContents(u"t"_s)));
  server.kill();
  EXPECT_FALSE(doomed->replace(plainTextContents(u"later"_s)));
  EXPECT_FALSE(doomed->replace({}));
  doomed->changeCount();
  EXPECT_EQ(loop.await(doomed->snapshot()), ClipboardContents());
}

TEST_F(X11ClipboardPeersTest, AServerThatDiesDuringASnapshotEndsIt) {
  PrivateServer server;
  const QByteArray display = qgetenv("DISPLAY");
  qputenv("DISPLAY", server.display());
  const auto doomed = X11Clipboard::create(loop.mainThread());
  ScriptedOwner owner({{"text/plain", "t", ScriptedOwner::Manner::NeverAnswer}});
  qputenv("DISPLAY", display);
  std::optional<ClipboardContents> contents;
  TaskScope scope(loop.mainThread());
  const auto read = [](X11Clipboard* from, std::optional<ClipboardContents>* to) -> Task<> {
    *to = co_await from->snapshot();
  };
  scope.start([&](std::stop_token) { return read(doomed.get(), &contents); });
  ASSERT_TRUE(loop.runUntil([&] { return owner.requestCount() == 2; }));
  server.kill();
  EXPECT_TRUE(loop.runUntil([&] { return contents.has_value(); }));
}

TEST_F(X11ClipboardPeersTest, AServerThatStandsStillCostsABoundedWait) {
  PrivateServer server;
  const auto waiting = X11Clipboard::create(loop.mainThread(), server.display());
  ASSERT_TRUE(waiting);
  server.stopAnswering();
  EXPECT_EQ(loop.await(waiting->snapshot()), ClipboardContents());
  server.stopAnswering(false);
}

}  // namespace
}  // namespace vemo
