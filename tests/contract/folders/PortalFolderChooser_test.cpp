// The chooser against a portal on a real session bus, as a desktop would serve it.
#include "platform/xdg/PortalFolderChooser.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusObjectPath>
#include <QDBusVirtualObject>
#include <QDir>
#include <QGuiApplication>
#include <QUrl>
#include <QVariantMap>

#include "base/TaskScope.h"
#include "fakes/FakeFolderChooser.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

const QString portalName = u"org.freedesktop.portal.Desktop"_s;
const QString portalPath = u"/org/freedesktop/portal/desktop"_s;
const QString fileChooser = u"org.freedesktop.portal.FileChooser"_s;

/// A portal of the test's, with a connection of its own.
class ScriptedPortal : public QDBusVirtualObject {
 public:
  ScriptedPortal()
      : m_bus(QDBusConnection::connectToBus(QDBusConnection::SessionBus, u"portal"_s)) {
    EXPECT_TRUE(m_bus.registerService(portalName));
    EXPECT_TRUE(m_bus.registerVirtualObject(u"/"_s, this, QDBusConnection::SubPath));
  }
  ~ScriptedPortal() override { QDBusConnection::disconnectFromBus(u"portal"_s); }

  QString introspect(const QString&) const override { return {}; }

  bool handleMessage(const QDBusMessage& message, const QDBusConnection& connection) override {
    if (message.member() == u"Close") {
      closed = message.path();
      return true;
    }
    if (message.interface() != fileChooser || !hasFileChooser) return false;
    title = message.arguments().value(1).toString();
    options = qdbus_cast<QVariantMap>(message.arguments().value(2));
    const QString caller = message.service().mid(1).replace(u'.', u'_');
    request = ownPath ? portalPath + u"/request/of/its/own"_s
                      : portalPath + u"/request/"_s + caller + u'/' +
                            options.value(u"handle_token"_s).toString();
    connection.send(message.createReply(QVariant::fromValue(QDBusObjectPath(request))));
    return true;
  }

  void answer(uint code, const QStringList& addresses = {}) {
    auto signal =
        QDBusMessage::createSignal(request, u"org.freedesktop.portal.Request"_s, u"Response"_s);
    QVariantMap results;
    if (!addresses.isEmpty()) results.insert(u"uris"_s, addresses);
    signal << code << results;
    m_bus.send(signal);
  }

  bool hasFileChooser = true;
  bool ownPath = false;
  QString title;
  QVariantMap options;
  QString request;
  QString closed;

 private:
  QDBusConnection m_bus;
};

class PortalFolderChooserTest : public testing::Test, protected TestApplication<QGuiApplication> {
 protected:
  StartedTask ask() {
    return scope.start([this](std::stop_token stop) { return keep(std::move(stop)); });
  }
  void waitForQuestion(const ScriptedPortal& portal) {
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return !portal.request.isEmpty(); }));
  }
  void waitForAnswer() {
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return isAnswered; }));
  }

  Task<> keep(std::stop_token stop) {
    chosen = co_await chooser.chooseFolder({u"Choose the root folder"_s, u"Select Codebase"_s},
                                           std::move(stop));
    isAnswered = true;
  }

  QtMainThread mainThread;
  FakeFolderChooser withoutPortal{mainThread};
  PortalFolderChooser chooser{mainThread, withoutPortal};
  std::optional<QString> chosen;
  bool isAnswered = false;
  TaskScope scope{mainThread};
};

TEST_F(PortalFolderChooserTest, WithoutAPortalTheOtherChooserIsAsked) {
  withoutPortal.answer(u"/srv"_s);
  ask();
  waitForAnswer();
  EXPECT_EQ(chosen, u"/srv"_s);
  ASSERT_EQ(withoutPortal.questions().size(), 1u);
  EXPECT_EQ(withoutPortal.questions().front().prompt, u"Select Codebase"_s);
}

TEST_F(PortalFolderChooserTest, APortalThatShowsNoFilesLeavesTheQuestionToTheOther) {
  ScriptedPortal portal;
  portal.hasFileChooser = false;
  withoutPortal.answer(u"/srv"_s);
  ask();
  waitForAnswer();
  EXPECT_EQ(chosen, u"/srv"_s);
}

TEST_F(PortalFolderChooserTest, ThePortalIsAskedForOneFolderInTheseWords) {
  ScriptedPortal portal;
  ask();
  waitForQuestion(portal);
  EXPECT_EQ(portal.title, u"Choose the root folder"_s);
  EXPECT_EQ(portal.options.value(u"accept_label"_s), u"Select Codebase"_s);
  EXPECT_EQ(portal.options.value(u"directory"_s), true);
  EXPECT_EQ(portal.options.value(u"multiple"_s), false);
  portal.answer(0, {QUrl::fromLocalFile(QDir::tempPath()).toString()});
  waitForAnswer();
  EXPECT_EQ(chosen, QDir::tempPath());
  EXPECT_TRUE(withoutPortal.questions().empty());
}

TEST_F(PortalFolderChooserTest, APortalThatChoosesThePathOfTheRequestItselfIsHeard) {
  ScriptedPortal portal;
  portal.ownPath = true;
  ask();
  waitForQuestion(portal);
  // Where to listen, the chooser learns from the answer to its call.
  EXPECT_TRUE(QtTestLoop::runUntil([&] {
    portal.answer(0, {QUrl::fromLocalFile(QDir::tempPath()).toString()});
    return isAnswered;
  }));
  EXPECT_EQ(chosen, QDir::tempPath());
}

TEST_F(PortalFolderChooserTest, ADecisionAgainstItIsNoFolder) {
  ScriptedPortal portal;
  ask();
  waitForQuestion(portal);
  portal.answer(1);
  waitForAnswer();
  EXPECT_EQ(chosen, std::nullopt);
  EXPECT_TRUE(withoutPortal.questions().empty());
}

TEST_F(PortalFolderChooserTest, WhatIsNoFolderHereIsNone) {
  for (const QString& address : {u"sftp://host/home"_s, u"file:///no/such/folder"_s, QString()}) {
    ScriptedPortal portal;
    isAnswered = false;
    ask();
    waitForQuestion(portal);
    portal.answer(0, {address});
    waitForAnswer();
    EXPECT_EQ(chosen, std::nullopt);
  }
}

TEST_F(PortalFolderChooserTest, AStopTakesTheQuestionBack) {
  ScriptedPortal portal;
  const auto task = ask();
  waitForQuestion(portal);
  task.cancel();
  waitForAnswer();
  EXPECT_EQ(chosen, std::nullopt);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return portal.closed == portal.request; }));
}

TEST_F(PortalFolderChooserTest, ADestroyedQuestionIsTakenBackAtThePortal) {
  ScriptedPortal portal;
  {
    TaskScope shortLived(mainThread);
    shortLived.start([this](std::stop_token stop) { return keep(std::move(stop)); });
    waitForQuestion(portal);
  }
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return portal.closed == portal.request; }));
}

}  // namespace
}  // namespace vemo
