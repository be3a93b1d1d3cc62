// The notes of an update as they are shown: text from outside that may do nothing but be read.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDesktopServices>
#include <QTcpServer>
#include <QTcpSocket>
#include <QTest>

#include "ShownWindow.h"
#include "updates/ReleaseNotesView.h"

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

/// What the card's model gives to the view, of any markdown.
class NotesModel : public QObject {
  Q_OBJECT
  Q_PROPERTY(bool canRestart MEMBER canRestart CONSTANT)
  Q_PROPERTY(QString tooltip MEMBER nothing CONSTANT)
  Q_PROPERTY(QString versionLine MEMBER nothing CONSTANT)
  Q_PROPERTY(bool hasNotes MEMBER isShown CONSTANT)
  Q_PROPERTY(bool showNotes MEMBER isShown CONSTANT)
  Q_PROPERTY(QVariantList notes MEMBER notes CONSTANT)

 public:
  explicit NotesModel(const QString& markdown) {
    for (const auto& block : ReleaseNotesView(markdown).rows()) {
      QVariantList links;
      for (const auto& [words, address] : inlineLinks(block.text))
        links.append(QVariantMap{{u"words"_s, words}, {u"address"_s, address}});
      notes.append(QVariantMap{{u"kind"_s, u"paragraph"_s},
                               {u"markup"_s, inlineMarkup(block.text)},
                               {u"links"_s, links}});
    }
  }

  bool canRestart = false;
  bool isShown = true;
  QString nothing;
  QVariantList notes;
};

class ReleaseNotesViewTest : public testing::Test {
 protected:
  ReleaseNotesViewTest() {
    EXPECT_TRUE(server.listen(QHostAddress::LocalHost));
    QObject::connect(&server, &QTcpServer::newConnection, [this] { ++connections; });
  }

  void show(const QString& markdown) {
    model.emplace(markdown);
    window.emplace(u"main/UpdateCard.qml"_s, *model, QSize(700, 500));
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

  QTcpServer server;
  int connections = 0;
  OpenedAddresses desktop;
  std::optional<NotesModel> model;
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
    QString text;
    QMetaObject::invokeMethod(item, "getText", Q_RETURN_ARG(QString, text), Q_ARG(int, 0),
                              Q_ARG(int, item->property("length").toInt()));
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

}  // namespace
}  // namespace vemo

#include "ReleaseNotes_test.moc"
