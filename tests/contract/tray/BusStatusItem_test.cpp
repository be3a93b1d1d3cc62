#include "platform/tray/BusStatusItem.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusReply>
#include <QDeadlineTimer>
#include <QGuiApplication>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

/// A panel with its watcher, as a desktop has them, on a connection of its own.
class Panel : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
  Q_PROPERTY(bool IsStatusNotifierHostRegistered MEMBER hasHost)

 public:
  Panel() : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"panel"_s)) {
    bus.registerObject(u"/StatusNotifierWatcher"_s, this,
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllProperties |
                           QDBusConnection::ExportAllSignals);
    EXPECT_TRUE(bus.registerService(u"org.kde.StatusNotifierWatcher"_s));
  }
  ~Panel() override { QDBusConnection::disconnectFromBus(u"panel"_s); }

  QDBusConnection bus;
  bool hasHost = true;
  QStringList items;
  uint announcedRevision = 0;

 public Q_SLOTS:
  void RegisterStatusNotifierItem(const QString& service) { items.append(service); }
  void layoutUpdated(uint revision, int) { announcedRevision = revision; }

 Q_SIGNALS:
  void StatusNotifierHostRegistered();
  void StatusNotifierHostUnregistered();
};

class BusStatusItemTest : public testing::Test {
 protected:
  template <typename Condition>
  [[nodiscard]] bool waitUntil(Condition condition) {
    const QDeadlineTimer limit(10'000);
    while (!condition() && !limit.hasExpired())
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 50);
    return condition();
  }

  /// Calls the item from outside, without stopping it from answering.
  QDBusMessage call(const Panel& panel, const QString& path, const QString& interface,
                    const QString& method, const QVariantList& arguments) {
    auto message = QDBusMessage::createMethodCall(panel.items.value(0), path, interface, method);
    message.setArguments(arguments);
    const auto pending = panel.bus.asyncCall(message);
    EXPECT_TRUE(waitUntil([&] { return pending.isFinished(); }));
    return pending.reply();
  }

  MenuLayout layout(const Panel& panel) {
    const auto answer = call(panel, u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"GetLayout"_s,
                             {0, -1, QStringList()});
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << qPrintable(answer.errorMessage());
    return qdbus_cast<MenuLayout>(answer.arguments().value(1));
  }

  void click(const Panel& panel, int id) {
    const auto answer = call(panel, u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"Event"_s,
                             {id, u"clicked"_s, QVariant::fromValue(QDBusVariant(QString())), 0u});
    EXPECT_EQ(answer.type(), QDBusMessage::ReplyMessage) << qPrintable(answer.errorMessage());
  }

  std::vector<MenuItem> menu() {
    return {{.kind = MenuItem::Kind::Line,
             .identifier = u"s"_s,
             .text = u"Ready"_s,
             .isEnabled = false,
             .action = [this] { pressed.push_back("line"); }},
            {.kind = MenuItem::Kind::Submenu,
             .identifier = u"l"_s,
             .text = u"Language"_s,
             .children = {{.kind = MenuItem::Kind::Button,
                           .identifier = u"hi"_s,
                           .text = u"Hindi"_s,
                           .action = [this] { pressed.push_back("hindi"); }}}},
            {.kind = MenuItem::Kind::Button,
             .identifier = u"q"_s,
             .text = u"Quit"_s,
             .shortcut = u"Ctrl+Q"_s,
             .action = [this] { pressed.push_back("quit"); }}};
  }

  std::vector<std::string> pressed;
};

TEST_F(BusStatusItemTest, APanelThatIsThereGetsTheItemWithItsMenu) {
  Panel panel;
  BusStatusItem item(u"/images"_s);
  item.setMenu(menu());
  ASSERT_TRUE(waitUntil([&] { return item.hasHost() && panel.items.size() == 1; }));
  const MenuLayout root = layout(panel);
  ASSERT_EQ(root.children.size(), 3);
  EXPECT_EQ(root.children[0].properties.value(u"label"_s), u"Ready"_s);
  EXPECT_EQ(root.children[0].properties.value(u"enabled"_s), false);
  ASSERT_EQ(root.children[1].children.size(), 1);
  EXPECT_EQ(root.children[1].children[0].properties.value(u"label"_s), u"Hindi"_s);
  EXPECT_TRUE(root.children[2].properties.contains(u"shortcut"_s));
}

TEST_F(BusStatusItemTest, WhatIsPressedActsAndWhatCantBePressedDoesNot) {
  Panel panel;
  BusStatusItem item(u"/images"_s);
  item.setMenu(menu());
  ASSERT_TRUE(waitUntil([&] { return panel.items.size() == 1; }));
  const MenuLayout root = layout(panel);
  click(panel, root.children[0].id);
  click(panel, root.children[1].children[0].id);
  click(panel, 4711);
  click(panel, root.children[2].id);
  EXPECT_TRUE(waitUntil([&] { return pressed.size() == 2; }));
  EXPECT_THAT(pressed, ElementsAre("hindi", "quit"));
}

TEST_F(BusStatusItemTest, AChangedMenuIsToldOf) {
  Panel panel;
  BusStatusItem item(u"/images"_s);
  ASSERT_TRUE(waitUntil([&] { return panel.items.size() == 1; }));
  panel.bus.connect(panel.items[0], u"/MenuBar"_s, u"com.canonical.dbusmenu"_s, u"LayoutUpdated"_s,
                    &panel, SLOT(layoutUpdated(uint, int)));
  EXPECT_EQ(layout(panel).children.size(), 0);
  item.setMenu(menu());
  EXPECT_TRUE(waitUntil([&] { return panel.announcedRevision > 0; }));
  EXPECT_EQ(layout(panel).children.size(), 3);
}

TEST_F(BusStatusItemTest, TheImageIsNamedForPanelsToDraw) {
  Panel panel;
  BusStatusItem item(u"/images"_s);
  ASSERT_TRUE(waitUntil([&] { return panel.items.size() == 1; }));
  const auto icon = [&] {
    const auto answer = call(panel, u"/StatusNotifierItem"_s, u"org.freedesktop.DBus.Properties"_s,
                             u"Get"_s, {u"org.kde.StatusNotifierItem"_s, u"IconName"_s});
    return answer.arguments().value(0).value<QDBusVariant>().variant().toString();
  };
  EXPECT_EQ(icon(), u"vemo-idle-symbolic"_s);
  item.setImage(u"record.circle"_s);
  EXPECT_EQ(icon(), u"vemo-record.circle-symbolic"_s);
}

TEST_F(BusStatusItemTest, PressingTheItemItselfActivates) {
  Panel panel;
  BusStatusItem item(u"/images"_s);
  int activated = 0;
  item.onActivated = [&] { ++activated; };
  ASSERT_TRUE(waitUntil([&] { return panel.items.size() == 1; }));
  call(panel, u"/StatusNotifierItem"_s, u"org.kde.StatusNotifierItem"_s, u"Activate"_s, {0, 0});
  EXPECT_EQ(activated, 1);
}

TEST_F(BusStatusItemTest, WithoutAPanelItIsKnownThatNobodySeesTheItemUntilOneComes) {
  BusStatusItem item(u"/images"_s);
  int told = 0;
  item.onHostKnown = [&] { ++told; };
  EXPECT_TRUE(waitUntil([&] { return told == 1; }));
  EXPECT_FALSE(item.hasHost());
  {
    Panel panel;
    EXPECT_TRUE(waitUntil([&] { return item.hasHost(); }));
    EXPECT_EQ(panel.items.size(), 1);
  }
  EXPECT_TRUE(waitUntil([&] { return !item.hasHost(); }));
}

TEST_F(BusStatusItemTest, AWatcherWithoutAPanelShowsNothing) {
  Panel panel;
  panel.hasHost = false;
  BusStatusItem item(u"/images"_s);
  bool isKnown = false;
  item.onHostKnown = [&] { isKnown = true; };
  EXPECT_TRUE(waitUntil([&] { return isKnown; }));
  EXPECT_FALSE(item.hasHost());
  panel.hasHost = true;
  Q_EMIT panel.StatusNotifierHostRegistered();
  EXPECT_TRUE(waitUntil([&] { return item.hasHost(); }));
}

}  // namespace
}  // namespace vemo

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QGuiApplication application(argc, argv);
  testing::InitGoogleTest(&argc, argv);
  return RUN_ALL_TESTS();
}

#include "BusStatusItem_test.moc"
