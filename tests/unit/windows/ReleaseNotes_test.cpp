// The notes of an update as they are shown: text from outside that may do nothing but be read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "ShownWindow.h"
#include "windows/offline/MainWindowOnFakes.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

/// Takes what the window asks the desktop to open.
class OpenedAddresses : public QObject {
  Q_OBJECT
 public:
  OpenedAddresses() {
    for (const QString& scheme : schemes) QDesktopServices::setUrlHandler(scheme, this, "note");
  }
  ~OpenedAddresses() override {
    for (const QString& scheme : schemes) QDesktopServices::unsetUrlHandler(scheme);
  }

  Q_INVOKABLE void note(const QUrl& address) { opened.append(address.toString()); }

  QStringList opened;

 private:
  const QStringList schemes{u"http"_s, u"https"_s, u"file"_s, u"javascript"_s};
};

class ReleaseNotesViewTest : public testing::Test {
 protected:
  ReleaseNotesViewTest() {
    EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, [this] { ++connections; });
  }

  void show(const QString& markdown) {
    offline.downloadUpdate(markdown);
    if (!offline.updateCard().showNotes()) offline.updateCard().toggleNotes();
    window.emplace(u"main/UpdateCard.qml"_s, offline.updateCard(), QSize(700, 500));
    window->draw();
  }

  QString address(const QString& path) const {
    return u"http://127.0.0.1:%1/%2"_s.arg(QString::number(server.serverPort()), path);
  }

  /// Whoever had asked the server for anything would have come before this connection.
  int connectionsSoFar() {
    QTcpSocket last;
    last.connectToHost(QHostAddress::LocalHost, server.serverPort());
    while (connections == 0 && server.waitForNewConnection(20'000)) {
    }
    window->draw();
    return connections - 1;
  }

  QQuickItem* row() {
    for (QQuickItem* item : rowsBelow(*window->window().contentItem()))
      if (!item->property("hoveredLink").isNull()) return item;
    return nullptr;
  }

  static QList<QQuickItem*> rowsBelow(QQuickItem& item) {
    QList<QQuickItem*> found;
    if (QByteArray(item.metaObject()->className()).startsWith("QQuickTextEdit"))
      found.append(&item);
    const auto children = item.childItems();
    for (QQuickItem* child : children) found.append(rowsBelow(*child));
    return found;
  }

  /// What scrolls.
  QQuickItem& notes() {
    for (QQuickItem* item : window->window().contentItem()->findChildren<QQuickItem*>())
      if (QByteArray(item->metaObject()->className()).startsWith("ReleaseNotes_")) return *item;
    ADD_FAILURE() << "no notes are shown";
    return *window->window().contentItem();
  }

  qreal place() { return notes().property("contentY").toReal(); }
  qreal end() { return notes().property("contentHeight").toReal() - notes().height(); }
  void scrollTo(qreal place) {
    notes().setProperty("contentY", place);
    window->draw();
  }

  static QString textOf(QQuickItem& row) {
    QString text;
    QMetaObject::invokeMethod(&row, "getText", Q_RETURN_ARG(QString, text), Q_ARG(int, 0),
                              Q_ARG(int, row.property("length").toInt()));
    return text;
  }

  QQuickItem* rowOf(const QString& text) {
    for (QQuickItem* item : rowsBelow(*window->window().contentItem()))
      if (textOf(*item) == text) return item;
    return nullptr;
  }

  qsizetype rowsMade() { return rowsBelow(*window->window().contentItem()).size(); }

  /// What has the keyboard.
  QQuickItem* focused() { return window->window().activeFocusItem(); }

  QTcpServer server;
  int connections = 0;
  OpenedAddresses desktop;
  MainWindowOnFakes offline{u"home-empty"_s};
  std::optional<ShownWindow> window;
};

TEST_F(ReleaseNotesViewTest, NoImageIsFetchedAndNoMarkupIsDrawnAsSuch) {
  show(
      u"![seen](%1)\n<img src=\"%1\">\n<img src=%1>\n![a][b]\n- <script>x()</script>\n"
      u"# <iframe src='%1'></iframe>\n<link rel=stylesheet href=%1>\n&lt;img "
      u"src=&quot;%1&quot;&gt;\n"
      u"[x](%1 \"<img src='%1'>\")\n<b style=\"background-image:url(%1)\">b</b>"_s.arg(
          address(u"x.png"_s)));
  ASSERT_EQ(rowsBelow(*window->window().contentItem()).size(), 10);
  for (QQuickItem* item : rowsBelow(*window->window().contentItem())) {
    const QString text = textOf(*item);
    EXPECT_FALSE(text.contains(QChar::ObjectReplacementCharacter)) << text.toStdString();
  }
  EXPECT_EQ(connectionsSoFar(), 0);
  EXPECT_THAT(desktop.opened, IsEmpty());
  EXPECT_THAT(window->complaints(), IsEmpty());
}

TEST_F(ReleaseNotesViewTest, ALinkIsOpenedByTheKeyboard) {
  const QString page = address(u"page"_s);
  const QString other = address(u"other"_s);
  show(u"First\nSee [the notes](%1) and [more](%2)"_s.arg(page, other));
  QTest::keyClick(&window->window(), Qt::Key_Tab);
  EXPECT_THAT(desktop.opened, IsEmpty());
  QTest::keyClick(&window->window(), Qt::Key_Return);
  EXPECT_THAT(desktop.opened, ElementsAre(page));
  QTest::keyClick(&window->window(), Qt::Key_Tab);
  QTest::keyClick(&window->window(), Qt::Key_Return);
  EXPECT_THAT(desktop.opened, ElementsAre(page, other));
}

TEST_F(ReleaseNotesViewTest, ALinkIsOpenedByAClickAndByNothingElse) {
  const QString page = address(u"page"_s);
  show(u"[notes of this version](%1)"_s.arg(page));
  QQuickItem* const link = row();
  ASSERT_TRUE(link);
  const QPoint middle = link->mapToScene(QPointF(20, link->height() / 2)).toPoint();
  QTest::mouseMove(&window->window(), middle);
  window->draw();
  EXPECT_THAT(desktop.opened, IsEmpty());
  QTest::mouseClick(&window->window(), Qt::LeftButton, Qt::NoModifier, middle);
  window->draw();
  EXPECT_THAT(desktop.opened, ElementsAre(page));
  EXPECT_EQ(connectionsSoFar(), 0) << "it is the browser that fetches it";
}

TEST_F(ReleaseNotesViewTest, ALinkThatIsNoPageIsTextThatOpensNothing) {
  show(u"[notes of this version](file:///etc/passwd)"_s);
  QQuickItem* const link = row();
  ASSERT_TRUE(link);
  const QPoint middle = link->mapToScene(QPointF(20, link->height() / 2)).toPoint();
  QTest::mouseClick(&window->window(), Qt::LeftButton, Qt::NoModifier, middle);
  window->draw();
  EXPECT_THAT(desktop.opened, IsEmpty());
}

TEST_F(ReleaseNotesViewTest, LinksToOnePageHaveAPlaceEach) {
  const QString page = address(u"page"_s);
  show(u"[Read](%1) or [read](%1)"_s.arg(page));
  QTest::keyClick(&window->window(), Qt::Key_Tab);
  QQuickItem* const first = focused();
  QTest::keyClick(&window->window(), Qt::Key_Tab);
  QQuickItem* const second = focused();
  EXPECT_GT(first->width(), 0);
  EXPECT_GT(second->width(), 0);
  EXPECT_LT(first->x() + first->width(), second->x());
  QTest::keyClick(&window->window(), Qt::Key_Return);
  QTest::mouseClick(&window->window(), Qt::LeftButton, Qt::NoModifier,
                    second->mapToScene(second->boundingRect().center()).toPoint());
  EXPECT_THAT(desktop.opened, ElementsAre(page, page));
}

TEST_F(ReleaseNotesViewTest, ADictationLeavesSelectionScrollingAndKeyboardWhereTheyAre) {
  show(u"Line\n"_s.repeated(30) + u"Marked\n[link](%1)\n"_s.arg(address(u"page"_s)) +
       u"Line\n"_s.repeated(30));
  QTest::keyClick(&window->window(), Qt::Key_Tab);
  window->draw();
  QQuickItem* const link = focused();
  EXPECT_EQ(link->property("words"), u"link"_s);
  const qreal before = place();
  EXPECT_GT(before, 0);
  QMetaObject::invokeMethod(rowOf(u"Marked"_s), "select", Q_ARG(int, 0), Q_ARG(int, 4));

  offline.model().home()->toggleDictation();
  offline.pass({});
  window->draw();
  ASSERT_FALSE(offline.updateCard().canRestart());
  offline.model().home()->toggleDictation();
  offline.pass(std::chrono::minutes(1));
  window->draw();
  ASSERT_TRUE(offline.updateCard().canRestart());

  EXPECT_EQ(focused(), link);
  EXPECT_EQ(place(), before);
  ASSERT_TRUE(rowOf(u"Marked"_s));
  EXPECT_EQ(rowOf(u"Marked"_s)->property("selectedText"), u"Mark"_s);
}

TEST_F(ReleaseNotesViewTest, OfVeryLongNotesOnlyWhatIsLookedAtIsMade) {
  show(u"a\n"_s.repeated(32'000) + u"The end"_s);
  EXPECT_GE(rowsMade(), 40);
  EXPECT_LE(rowsMade(), 120);
  EXPECT_FALSE(rowOf(u"The end"_s));
  scrollTo(end());
  EXPECT_TRUE(rowOf(u"The end"_s));
  EXPECT_LE(rowsMade(), 240);
  EXPECT_THAT(window->complaints(), IsEmpty());
}

TEST_F(ReleaseNotesViewTest, TheKeyboardReachesEachLinkOfVeryLongNotesInBothDirections) {
  const QString gap = u"a\n"_s.repeated(1000);
  const QString notesWithLinks = gap + u"[first](http://e.com/1)\n"_s + gap +
                                 u"[second](http://e.com/2)\n"_s + gap +
                                 u"[third](http://e.com/3)\n"_s + gap;
  const auto walk = [this](Qt::Key key, Qt::KeyboardModifiers modifiers) {
    QStringList words;
    for (int stop = 0; stop < 3; ++stop) {
      QTest::keyClick(&window->window(), key, modifiers);
      window->draw();
      words.append(focused()->property("words").toString());
      const qreal y = focused()->mapToItem(&notes(), QPointF()).y();
      EXPECT_GE(y, 0) << stop;
      EXPECT_LE(y, notes().height()) << stop;
    }
    return words;
  };
  show(notesWithLinks);
  EXPECT_THAT(walk(Qt::Key_Tab, {}), ElementsAre(u"first"_s, u"second"_s, u"third"_s));
  EXPECT_LE(rowsMade(), 600);
  show(notesWithLinks);
  EXPECT_THAT(walk(Qt::Key_Backtab, Qt::ShiftModifier),
              ElementsAre(u"third"_s, u"second"_s, u"first"_s));
}

TEST_F(ReleaseNotesViewTest, WhatIsInSightStaysThereWhileThePagesAboveAreMade) {
  QString markdown;
  for (int line = 0; line < 400; ++line)
    markdown += u"%1: %2\n"_s.arg(QString::number(line), u"several words "_s.repeated(12));
  show(markdown + u"The end"_s);
  scrollTo(end());
  scrollTo(end());
  const auto seenAt = [this] { return rowOf(u"The end"_s)->mapToScene(QPointF()).y(); };
  const qreal before = seenAt();
  const qsizetype madeBefore = rowsMade();
  qreal scrolled = 0;
  while (rowsMade() == madeBefore && scrolled < 10'000) {
    scrolled += 50;
    scrollTo(place() - 50);
    EXPECT_NEAR(seenAt(), before + scrolled, 1);
  }
  EXPECT_GT(rowsMade(), madeBefore);
}

}  // namespace
}  // namespace vemo

#include "ReleaseNotes_test.moc"
