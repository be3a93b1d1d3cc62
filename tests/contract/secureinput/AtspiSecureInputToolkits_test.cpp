// Password fields as real toolkits have them, on a real accessibility bus.
#include <gtest/gtest.h>
#include <signal.h>

#include <QDBusConnectionInterface>
#include <QDBusReply>
#include <QFile>
#include <QProcess>
#include <QTemporaryDir>
#include <chrono>
#include <memory>

#include "contract/x11/EventLoop.h"
#include "fakes/OnceWithin.h"
#include "platform/atspi/AtspiSecureInput.h"
#include "platform/gio/GioThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class AtspiSecureInputToolkitsTest : public testing::Test, protected EventLoop {
 protected:
  ~AtspiSecureInputToolkitsTest() override {
    for (auto& process : m_processes) end(*process);
  }

  QProcess& start(const QString& program, const QStringList& arguments) {
    auto& process = m_processes.emplace_back(std::make_unique<QProcess>());
    process->setStandardErrorFile(QProcess::nullDevice());
    process->setStandardOutputFile(QProcess::nullDevice());
    process->start(program, arguments);
    EXPECT_TRUE(process->waitForStarted());
    return *process;
  }

  static void end(QProcess& process) {
    process.terminate();
    if (!process.waitForFinished(10'000)) process.kill();
    process.waitForFinished();
  }

  static QString output(const QString& program, const QStringList& arguments) {
    QProcess process;
    process.start(program, arguments);
    process.waitForFinished();
    return QString::fromUtf8(process.readAllStandardOutput()).trimmed();
  }

  static QString titleInFront() {
    return output(u"xdotool"_s, {u"getactivewindow"_s, u"getwindowname"_s});
  }

  static bool isInFront(const QString& title) {
    return runUntil([&] { return titleInFront().contains(title); });
  }

  static void press(const QString& key) { output(u"xdotool"_s, {u"key"_s, key}); }

  bool becomes(bool isActive) {
    return runUntil([&] { return secureInput.isActive() == isActive; });
  }

  /// In front is a form with an ordinary field in focus, below it a password field.
  void expectThePasswordAloneIsSecure() {
    ASSERT_FALSE(secureInput.isActive());
    // A program that doesn't know yet that somebody listens reports nothing.
    ASSERT_TRUE(runUntil([this] {
      press(u"Tab"_s);
      if (runUntil([this] { return secureInput.isActive(); }, 2s)) return true;
      press(u"shift+Tab"_s);
      return false;
    }));
    press(u"shift+Tab"_s);
    ASSERT_TRUE(becomes(false));
    press(u"Tab"_s);
    ASSERT_TRUE(becomes(true));

    auto& terminal = start(u"xterm"_s, {u"-T"_s, u"another window"_s});
    ASSERT_TRUE(isInFront(u"another window"_s));
    EXPECT_TRUE(becomes(false)) << "the field's window is no longer in front";
    end(terminal);
    EXPECT_TRUE(becomes(true)) << "the field is back in front";
  }

  GioThread thread;
  AtspiSecureInput secureInput{thread};

 private:
  std::vector<std::unique_ptr<QProcess>> m_processes;
};

const QStringList gtkForm{u"--forms"_s, u"--title=gtk form"_s, u"--add-entry=Name"_s,
                          u"--add-password=Secret"_s};

TEST_F(AtspiSecureInputToolkitsTest, OfAGtkFormThePasswordAloneIsSecure) {
  start(u"zenity"_s, gtkForm);
  ASSERT_TRUE(isInFront(u"gtk form"_s));
  expectThePasswordAloneIsSecure();
}

TEST_F(AtspiSecureInputToolkitsTest, OfAQtFormThePasswordAloneIsSecure) {
  start(QStringLiteral(PASSWORD_FORM), {});
  ASSERT_TRUE(isInFront(u"password form"_s));
  expectThePasswordAloneIsSecure();
}

TEST_F(AtspiSecureInputToolkitsTest, OfAPageInChromiumThePasswordAloneIsSecure) {
  const QTemporaryDir folder;
  QFile page(folder.filePath(u"page.html"_s));
  ASSERT_TRUE(page.open(QIODevice::WriteOnly));
  page.write(
      "<title>page form</title><input autofocus onkeydown=\"document.title = 'form with keys'\">"
      "<input type=password>");
  page.close();
  start(u"chromium"_s,
        {u"--force-renderer-accessibility"_s, u"--no-sandbox"_s, u"--disable-gpu"_s,
         u"--no-first-run"_s, u"--no-default-browser-check"_s, u"--disable-background-networking"_s,
         u"--disable-component-update"_s, u"--disable-sync"_s, u"--disable-dev-shm-usage"_s,
         u"--password-store=basic"_s, u"--user-data-dir="_s + folder.filePath(u"profile"_s),
         u"--app=file://"_s + page.fileName()});
  ASSERT_TRUE(isInFront(u"page form"_s));
  // Chromium drops every key until it has drawn the page.
  ASSERT_TRUE(runUntil([] {
    press(u"Shift_L"_s);
    return titleInFront().contains(u"form with keys"_s);
  }));
  expectThePasswordAloneIsSecure();
}

TEST_F(AtspiSecureInputToolkitsTest, APasswordInFocusBeforeTheStartIsFound) {
  start(u"zenity"_s, {u"--password"_s, u"--title=gtk password"_s});
  ASSERT_TRUE(becomes(true));
  GioThread laterThread;
  AtspiSecureInput later(laterThread);
  EXPECT_TRUE(runUntil([&] { return later.isActive(); }));
}

TEST_F(AtspiSecureInputToolkitsTest, AFrozenAccessibilityBusCostsAtMost50msAndIsUnknown) {
  start(u"zenity"_s, {u"--password"_s, u"--title=gtk password"_s});
  ASSERT_TRUE(becomes(true));
  const QString address =
      QDBusReply<QString>(QDBusConnection::sessionBus().call(QDBusMessage::createMethodCall(
          u"org.a11y.Bus"_s, u"/org/a11y/bus"_s, u"org.a11y.Bus"_s, u"GetAddress"_s)));
  auto bus = QDBusConnection::connectToBus(address, u"accessibility"_s);
  const pid_t daemon =
      static_cast<pid_t>(bus.interface()->servicePid(u"org.freedesktop.DBus"_s).value());
  ASSERT_GT(daemon, 0);

  ASSERT_EQ(kill(daemon, SIGSTOP), 0);
  // The 50 ms, and what a machine whose cores are all taken needs to wake a thread up.
  EXPECT_TRUE(isOnceWithin(100ms, [this] { EXPECT_FALSE(secureInput.isActive()); }, 100));
  ASSERT_EQ(kill(daemon, SIGCONT), 0);
  EXPECT_TRUE(becomes(true));
}

}  // namespace
}  // namespace vemo
