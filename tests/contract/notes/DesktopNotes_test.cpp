// The notes on a real bus, against a notification service that a test scripts.
#include "platform/xdg/DesktopNotes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QVariantMap>
#include <optional>
#include <string>
#include <vector>

#include "fakes/QtTestLoop.h"

namespace vemo {

inline void PrintTo(const QString& text, std::ostream* stream) {
  *stream << text.toStdString();
}

namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

const QString service = u"org.freedesktop.Notifications"_s;
const QString path = u"/org/freedesktop/Notifications"_s;

constexpr uint expired = 1;
constexpr uint closedByTheUser = 2;
constexpr uint takenBack = 3;

/// A desktop's notification service, with a connection of its own.
class ScriptedService : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Notifications")

 public:
  struct Shown {
    QString program;
    uint replaced;
    QString icon;
    QString title;
    QString text;
    QStringList actions;
  };

  explicit ScriptedService(const QStringList& capabilities = {u"actions"_s, u"body-markup"_s})
      : bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"notes"_s)),
        m_capabilities(capabilities) {
    bus.registerObject(path, this,
                       QDBusConnection::ExportAllSlots | QDBusConnection::ExportAllSignals);
    EXPECT_TRUE(bus.registerService(service));
  }
  ~ScriptedService() override { QDBusConnection::disconnectFromBus(u"notes"_s); }

  QDBusConnection bus;
  std::vector<Shown> shown;
  std::vector<uint> closed;
  uint nextId = 7;
  /// Pressed before anybody can have seen the note.
  QString pressedAtOnce;

 public Q_SLOTS:
  // As the bus names them.
  QStringList GetCapabilities() { return m_capabilities; }
  uint Notify(const QString& program, uint replaced, const QString& icon, const QString& title,
              const QString& text, const QStringList& actions, const QVariantMap&, int) {
    shown.push_back({program, replaced, icon, title, text, actions});
    const uint id = replaced ? replaced : nextId++;
    if (!pressedAtOnce.isEmpty())
      QMetaObject::invokeMethod(
          this, [this, id] { Q_EMIT ActionInvoked(id, pressedAtOnce); }, Qt::QueuedConnection);
    return id;
  }
  void CloseNotification(uint id) { closed.push_back(id); }

 Q_SIGNALS:
  void ActionInvoked(uint id, const QString& action);
  void NotificationClosed(uint id, uint reason);

 private:
  const QStringList m_capabilities;
};

class DesktopNotesTest : public testing::Test, protected QtTestLoop {
 protected:
  void show(const QString& title) {
    notes->show({.title = title,
                 .text = u"Beans & <toast>"_s,
                 .choices = {{u"Skip"_s, [this] { heard.emplace_back("skip"); }},
                             {u"Later"_s, [this] { heard.emplace_back("later"); }}},
                 .dismiss = [this] { heard.emplace_back("dismiss"); }});
  }

  /// Shows it, and waits until its number has come back.
  void showOn(ScriptedService& desktop, const QString& title = u"New"_s) {
    const std::size_t before = desktop.shown.size();
    show(title);
    ASSERT_TRUE(runUntil([&] { return desktop.shown.size() > before; }));
    settle(desktop);
  }

  /// What the service has sent has arrived once an answer that it asked for afterwards has.
  static void settle(ScriptedService& desktop) {
    const auto echo = desktop.bus.asyncCall(
        QDBusMessage::createMethodCall(QDBusConnection::sessionBus().baseService(), u"/"_s,
                                       u"org.freedesktop.DBus.Peer"_s, u"Ping"_s));
    ASSERT_TRUE(runUntil([&] { return echo.isFinished(); }));
    QCoreApplication::processEvents();
  }

  void press(ScriptedService& desktop, uint id, const QString& action) {
    Q_EMIT desktop.ActionInvoked(id, action);
    settle(desktop);
  }

  void close(ScriptedService& desktop, uint id, uint reason) {
    Q_EMIT desktop.NotificationClosed(id, reason);
    settle(desktop);
  }

  std::optional<DesktopNotes> notes{std::in_place};
  std::vector<std::string> heard;
};

TEST_F(DesktopNotesTest, ANoteIsShownInTheNameOfTheProgramWithItsChoices) {
  ScriptedService desktop;
  showOn(desktop);
  ASSERT_EQ(desktop.shown.size(), 1U);
  const auto& shown = desktop.shown.front();
  EXPECT_EQ(shown.program, u"Vemo"_s);
  EXPECT_EQ(shown.icon, u"brelmox.Vemo"_s);
  EXPECT_EQ(shown.title, u"New"_s);
  EXPECT_EQ(shown.text, u"Beans &amp; &lt;toast&gt;"_s);
  EXPECT_THAT(shown.actions, ElementsAre(u"0"_s, u"Skip"_s, u"1"_s, u"Later"_s));
}

TEST_F(DesktopNotesTest, AServiceThatReadsNoMarkupGetsTheTextAsItIs) {
  ScriptedService desktop({u"actions"_s});
  showOn(desktop);
  EXPECT_EQ(desktop.shown.front().text, u"Beans & <toast>"_s);
}

TEST_F(DesktopNotesTest, AServiceWithoutButtonsGetsNone) {
  ScriptedService desktop({u"body"_s, u"body-markup"_s});
  showOn(desktop);
  EXPECT_THAT(desktop.shown.front().actions, IsEmpty());
  press(desktop, 7, u"0"_s);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(DesktopNotesTest, TheChoiceThatIsPressedIsTheOneThatCounts) {
  ScriptedService desktop;
  showOn(desktop);
  press(desktop, 7, u"1"_s);
  close(desktop, 7, closedByTheUser);
  press(desktop, 7, u"0"_s);
  EXPECT_THAT(heard, ElementsAre("later"));
}

TEST_F(DesktopNotesTest, AChoiceThatIsPressedAtOnceCounts) {
  ScriptedService desktop;
  desktop.pressedAtOnce = u"0"_s;
  show(u"New"_s);
  EXPECT_TRUE(runUntil([&] { return !heard.empty(); }));
  EXPECT_THAT(heard, ElementsAre("skip"));
}

TEST_F(DesktopNotesTest, AChoiceMayShowTheNextNote) {
  ScriptedService desktop;
  notes->show({.title = u"First"_s,
               .text = {},
               .choices = {{u"More"_s, [this] { show(u"Second"_s); }}},
               .dismiss = {}});
  ASSERT_TRUE(runUntil([&] { return desktop.shown.size() == 1; }));
  press(desktop, 7, u"0"_s);
  EXPECT_TRUE(runUntil([&] { return desktop.shown.size() == 2; }));
}

TEST_F(DesktopNotesTest, OnlyTheUsersClosingCountsAsSuch) {
  ScriptedService desktop;
  showOn(desktop);
  close(desktop, 7, expired);
  showOn(desktop);
  close(desktop, 7, takenBack);
  EXPECT_THAT(heard, IsEmpty());
  showOn(desktop);
  close(desktop, 7, closedByTheUser);
  close(desktop, 7, closedByTheUser);
  EXPECT_THAT(heard, ElementsAre("dismiss"));
}

TEST_F(DesktopNotesTest, ANoteThatNobodyListensToMayBeClosed) {
  ScriptedService desktop;
  notes->show({.title = u"Only this"_s, .text = {}, .choices = {}, .dismiss = {}});
  ASSERT_TRUE(runUntil([&] { return desktop.shown.size() == 1; }));
  settle(desktop);
  close(desktop, 7, closedByTheUser);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(DesktopNotesTest, WhatHappensToAnotherProgramsNoteCountsForNothing) {
  ScriptedService desktop;
  showOn(desktop);
  press(desktop, 8, u"0"_s);
  close(desktop, 6, closedByTheUser);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(DesktopNotesTest, AnActionThatWasNotOfferedCountsForNothing) {
  ScriptedService desktop;
  showOn(desktop);
  for (const QString& action : {u"default"_s, u"2"_s, u"-1"_s, u"4294967296"_s, QString()})
    press(desktop, 7, action);
  EXPECT_THAT(heard, IsEmpty());
  press(desktop, 7, u"0"_s);
  EXPECT_THAT(heard, ElementsAre("skip"));
}

TEST_F(DesktopNotesTest, NobodyButTheServiceSpeaksForTheUser) {
  ScriptedService desktop;
  showOn(desktop);
  auto stranger = QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"stranger"_s);
  auto signal = QDBusMessage::createSignal(path, service, u"ActionInvoked"_s);
  signal << 7U << u"0"_s;
  stranger.send(signal);
  stranger.call(QDBusMessage::createMethodCall(desktop.bus.baseService(), u"/"_s,
                                               u"org.freedesktop.DBus.Peer"_s, u"Ping"_s));
  settle(desktop);
  EXPECT_THAT(heard, IsEmpty());
  QDBusConnection::disconnectFromBus(u"stranger"_s);
}

TEST_F(DesktopNotesTest, TheNextNoteTakesThePlaceOfTheOneBefore) {
  ScriptedService desktop;
  showOn(desktop, u"First"_s);
  EXPECT_EQ(desktop.shown.back().replaced, 0U);
  showOn(desktop, u"Second"_s);
  EXPECT_EQ(desktop.shown.back().replaced, 7U);
  press(desktop, 7, u"0"_s);
  EXPECT_THAT(heard, ElementsAre("skip"));
}

TEST_F(DesktopNotesTest, TheNumbersOfAServiceThatHasGoneMeanNothingToTheNext) {
  std::optional<ScriptedService> desktop{std::in_place};
  showOn(*desktop);
  desktop.emplace();
  settle(*desktop);
  press(*desktop, 7, u"0"_s);
  EXPECT_THAT(heard, IsEmpty());
  showOn(*desktop);
  EXPECT_EQ(desktop->shown.front().replaced, 0U);
}

TEST_F(DesktopNotesTest, WhereNobodyShowsNotesNothingHappens) {
  show(u"Lost"_s);
  const auto echo = QDBusConnection::sessionBus().asyncCall(
      QDBusMessage::createMethodCall(service, path, service, u"GetCapabilities"_s));
  ASSERT_TRUE(runUntil([&] { return echo.isFinished(); }));
  EXPECT_THAT(heard, IsEmpty());
  ScriptedService desktop;
  showOn(desktop, u"Seen"_s);
  ASSERT_EQ(desktop.shown.size(), 1U);
  EXPECT_EQ(desktop.shown.front().title, u"Seen"_s);
}

TEST_F(DesktopNotesTest, ANoteWhoseChoicesWouldLeadNowhereIsTakenBack) {
  ScriptedService desktop;
  showOn(desktop);
  notes.reset();
  EXPECT_TRUE(runUntil([&] { return !desktop.closed.empty(); }));
  EXPECT_THAT(desktop.closed, ElementsAre(7U));
}

TEST_F(DesktopNotesTest, ANoteThatIsUnderWayAtTheEndLeadsNowhere) {
  ScriptedService desktop;
  show(u"Early"_s);
  notes.reset();
  settle(desktop);
  EXPECT_THAT(desktop.shown, IsEmpty());
  notes.emplace();
  show(u"Late"_s);
  ASSERT_TRUE(runUntil([&] { return !desktop.shown.empty(); }));
  notes.reset();
  Q_EMIT desktop.ActionInvoked(7, u"0"_s);
  settle(desktop);
  EXPECT_THAT(heard, IsEmpty());
}

TEST_F(DesktopNotesTest, ANoteWithoutChoicesOutlivesTheProgram) {
  ScriptedService desktop;
  notes->show({.title = u"Only this"_s, .text = {}, .choices = {}, .dismiss = {}});
  ASSERT_TRUE(runUntil([&] { return desktop.shown.size() == 1; }));
  settle(desktop);
  notes.reset();
  const auto echo = QDBusConnection::sessionBus().asyncCall(
      QDBusMessage::createMethodCall(service, path, service, u"GetCapabilities"_s));
  ASSERT_TRUE(runUntil([&] { return echo.isFinished(); }));
  EXPECT_THAT(desktop.closed, IsEmpty());
}

}  // namespace
}  // namespace vemo

#include "DesktopNotes_test.moc"
