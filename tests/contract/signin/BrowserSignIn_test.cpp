// The way to the user's browser and back, with a browser of the test's own: a script that notes the
// page, and the desktop's own tool that opens the redirect.
#include "platform/xdg/BrowserSignIn.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QProcess>
#include <QSet>
#include <QTemporaryDir>
#include <optional>

#include "base/TaskScope.h"
#include "fakes/FakeMainThread.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"
#include "platform/xdg/SchemeHandler.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using Kind = WebAuthenticationError::Kind;

class BrowserSignInTest : public testing::Test {
 protected:
  /// One home for all tests: GLib reads these variables once.
  static const QTemporaryDir& home() {
    static const QTemporaryDir folder;
    return folder;
  }

  BrowserSignInTest() {
    makeTestApplication<QGuiApplication>();
    for (const auto& notes : {u"opened"_s, u"redirected"_s}) QFile::remove(folder.filePath(notes));
    qputenv("HOME", folder.path().toUtf8());
    qputenv("XDG_DATA_HOME", folder.filePath(u"data"_s).toUtf8());
    qputenv("XDG_CONFIG_HOME", folder.filePath(u"config"_s).toUtf8());
    installScript(u"browser"_s, u"opened"_s);
    installScript(u"vemo $ \"`x`\""_s, u"redirected"_s);
    write(u"data/applications/browser.desktop"_s,
          "[Desktop Entry]\nType=Application\nName=Browser\nExec=" +
              folder.filePath(u"browser"_s).toUtf8() + " %u\n");
    write(u"config/mimeapps.list"_s,
          "[Default Applications]\nx-scheme-handler/https=browser.desktop\n");
  }

  void write(const QString& name, const QByteArray& content) const {
    const QString path = folder.filePath(name);
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }

  /// Each page that was to open does so before the next test, or the test's end, meets its browser.
  void TearDown() override { EXPECT_EQ(openedPages(), m_pages); }

  /// A program that notes its arguments, a line a call, in a file.
  void installScript(const QString& name, const QString& notes) const {
    QFile script(folder.filePath(name));
    ASSERT_TRUE(script.open(QIODevice::WriteOnly));
    script.write(
        u"#!/bin/sh\nprintf '%s\\n' \"$*\" >> '%1'\n"_s.replace(u"%1"_s, folder.filePath(notes))
            .toUtf8());
    script.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  }

  QString program() const { return folder.filePath(u"vemo $ \"`x`\""_s); }

  /// The lines of the file, once there are as many.
  QStringList noted(const QString& notes, qsizetype count) const {
    QStringList lines;
    QtTestLoop::runUntil([&] {
      QFile file(folder.filePath(notes));
      if (file.open(QIODevice::ReadOnly))
        lines = QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
      return lines.size() >= count;
    });
    return lines;
  }

  /// In any order: browsers that open at once are as fast as they are.
  QSet<QString> openedPages() const {
    const QStringList pages = noted(u"opened"_s, m_pages.size());
    return {pages.begin(), pages.end()};
  }

  /// With a page of its own, which the user's browser is to open.
  StartedTask begin(std::optional<WebAuthentication::Redirect>& end) {
    const QString page = u"https://accounts.example/auth?x=%1&y=a%20b"_s.arg(m_pages.size());
    m_pages.insert(page);
    return begin(end, page);
  }

  StartedTask begin(std::optional<WebAuthentication::Redirect>& end, const QString& page) {
    auto task = scope.start([&](std::stop_token stop) {
      return keep(signIn.authenticate(QUrl(page), u"example.test"_s, std::move(stop)), &end);
    });
    mainThread.drain();
    return task;
  }

  const QTemporaryDir& folder = home();
  FakeMainThread mainThread;
  BrowserSignIn signIn{mainThread, program()};
  TaskScope scope{mainThread};

 private:
  static Task<> keep(Task<WebAuthentication::Redirect> waiting,
                     std::optional<WebAuthentication::Redirect>* end) {
    *end = co_await std::move(waiting);
  }

  QSet<QString> m_pages;
};

TEST_F(BrowserSignInTest, ThePageOpensInTheUsersBrowserAsItIs) {
  std::optional<WebAuthentication::Redirect> end;
  begin(end);
  EXPECT_THAT(openedPages(), ElementsAre(u"https://accounts.example/auth?x=0&y=a%20b"_s));
  EXPECT_FALSE(end);
}

TEST_F(BrowserSignInTest, TheDesktopOpensARedirectWithTheProgramWhateverItsName) {
  std::optional<WebAuthentication::Redirect> end;
  begin(end);
  const QString redirect = u"example.test:/oauth2redirect?code=4%2Fa&state=b"_s;
  ASSERT_EQ(QProcess::execute(u"gio"_s, {u"open"_s, redirect}), 0);
  EXPECT_THAT(noted(u"redirected"_s, 1), ElementsAre(u"open "_s + redirect));
}

TEST_F(BrowserSignInTest, ARedirectEndsTheWaitOfItsScheme) {
  std::optional<WebAuthentication::Redirect> end;
  begin(end);
  EXPECT_FALSE(signIn.deliver(QUrl(u"other.test:/oauth2redirect?code=c"_s)));
  EXPECT_TRUE(signIn.deliver(QUrl(u"EXAMPLE.test:/oauth2redirect?code=c"_s)));
  mainThread.drain();
  ASSERT_TRUE(end && *end);
  EXPECT_EQ(**end, QUrl(u"example.test:/oauth2redirect?code=c"_s));
}

TEST_F(BrowserSignInTest, WhenNobodyWaitsARedirectIsNobodys) {
  EXPECT_FALSE(signIn.deliver(QUrl(u"example.test:/oauth2redirect?code=c"_s)));
  std::optional<WebAuthentication::Redirect> end;
  begin(end);
  signIn.deliver(QUrl(u"example.test:/"_s));
  mainThread.drain();
  EXPECT_FALSE(signIn.deliver(QUrl(u"example.test:/"_s)));
}

TEST_F(BrowserSignInTest, OfTwoWaitsTheLatestGetsTheRedirect) {
  std::optional<WebAuthentication::Redirect> first;
  std::optional<WebAuthentication::Redirect> second;
  begin(first);
  begin(second);
  EXPECT_TRUE(signIn.deliver(QUrl(u"example.test:/"_s)));
  mainThread.drain();
  EXPECT_FALSE(first);
  EXPECT_TRUE(second);
}

TEST_F(BrowserSignInTest, StoppingIsCancelling) {
  std::optional<WebAuthentication::Redirect> end;
  begin(end).cancel();
  mainThread.drain();
  ASSERT_TRUE(end && !*end);
  EXPECT_EQ(end->error().kind, Kind::Cancelled);
}

TEST_F(BrowserSignInTest, ADesktopThatTakesNoClaimIsToldBeforeAPageOpens) {
  qputenv("XDG_DATA_HOME", "/proc/nowhere");
  std::optional<WebAuthentication::Redirect> end;
  begin(end, u"https://accounts.example/refused"_s);
  ASSERT_TRUE(end && !*end);
  EXPECT_EQ((*end).error().kind, Kind::Failed);

  qputenv("XDG_DATA_HOME", folder.filePath(u"data"_s).toUtf8());
  std::optional<WebAuthentication::Redirect> later;
  begin(later);
}

TEST_F(BrowserSignInTest, AClaimIsRenewedForAnotherProgramAndKeepsOtherClaims) {
  QFile list(folder.filePath(u"config/mimeapps.list"_s));
  EXPECT_TRUE(claimScheme(u"example.test"_s, u"/bin/true"_s));
  EXPECT_TRUE(claimScheme(u"example.test"_s, u"/bin/false"_s));
  ASSERT_TRUE(list.open(QIODevice::ReadOnly));
  EXPECT_TRUE(list.readAll().contains("x-scheme-handler/https=browser.desktop"));
  QFile entry(folder.filePath(u"data/applications/brelmox.Vemo.sign-in.desktop"_s));
  ASSERT_TRUE(entry.open(QIODevice::ReadOnly));
  EXPECT_TRUE(entry.readAll().contains("Exec=/bin/false open %u\n"));
}

}  // namespace
}  // namespace vemo
