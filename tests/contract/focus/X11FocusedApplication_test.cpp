// What every FocusedApplication promises of its answers, and what the X11 one reads from real
// windows under a real window manager.
#include "platform/x11/X11FocusedApplication.h"

#include <gmock/gmock.h>
#include <unistd.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include "contract/x11/EventLoop.h"
#include "contract/x11/PrivateServer.h"
#include "contract/x11/TestWindow.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::IsEmpty;
using testing::SizeIs;

class X11FocusedApplicationTest : public testing::Test {
 protected:
  X11FocusedApplicationTest() {
    QFile file(folder.filePath(u"org.example.scribe.desktop"_s));
    if (file.open(QIODevice::WriteOnly))
      file.write("[Desktop Entry]\nType=Application\nName=The Scribe\n");
  }
  /// Whether the application in front comes to have this identifier.
  bool comesToTheFront(const QString& identifier) {
    return EventLoop::runUntil([&] {
      const auto application = focused->frontmost();
      return application && application->identifier == identifier;
    });
  }
  /// Whether the window comes to have the focus, after which it doesn't ask for it any more.
  static bool settles(const TestWindow& window) {
    return EventLoop::runUntil([&] { return window.hasFocus(); });
  }
  static QByteArray number(std::uint32_t value) {
    return {reinterpret_cast<const char*>(&value), sizeof value};
  }

  EventLoop loop;
  QTemporaryDir folder;
  std::unique_ptr<X11FocusedApplication> focused =
      X11FocusedApplication::create({}, {folder.path()});
};

TEST_F(X11FocusedApplicationTest, AnApplicationIsNamedByItsDesktopEntry) {
  const TestWindow window("Scribe");
  ASSERT_TRUE(comesToTheFront(u"org.example.scribe"_s));
  const auto application = focused->frontmost();
  EXPECT_EQ(application->name, u"The Scribe"_s);
  EXPECT_TRUE(application->isActive);
  EXPECT_TRUE(application->isRegular);
  EXPECT_FALSE(application->isSelf);
}

TEST_F(X11FocusedApplicationTest, AnApplicationWithoutAnEntryIsNamedByItsClass) {
  const TestWindow window("Homemade", "homemade-instance");
  ASSERT_TRUE(comesToTheFront(u"Homemade"_s));
  EXPECT_EQ(focused->frontmost()->name, u"Homemade"_s);
}

TEST_F(X11FocusedApplicationTest, AnApplicationThatTellsItsEntryIsBelieved) {
  TestWindow window("Unlike");
  window.setProperty("_KDE_NET_WM_DESKTOP_FILE", "UTF8_STRING", 8, "org.example.scribe");
  EXPECT_TRUE(comesToTheFront(u"org.example.scribe"_s));
}

TEST_F(X11FocusedApplicationTest, AWindowOfThisProcessIsThisProgram) {
  TestWindow window("Ourselves");
  window.setProperty("_NET_WM_PID", "CARDINAL", 32, number(static_cast<std::uint32_t>(getpid())));
  ASSERT_TRUE(comesToTheFront(u"Ourselves"_s));
  EXPECT_TRUE(focused->frontmost()->isSelf);
}

TEST_F(X11FocusedApplicationTest, TheSameProcessNumberOnAnotherMachineIsAnotherProgram) {
  TestWindow window("Remote");
  window.setProperty("_NET_WM_PID", "CARDINAL", 32, number(static_cast<std::uint32_t>(getpid())));
  window.setProperty("WM_CLIENT_MACHINE", "STRING", 8, "elsewhere.example");
  ASSERT_TRUE(comesToTheFront(u"Remote"_s));
  EXPECT_FALSE(focused->frontmost()->isSelf);
}

TEST_F(X11FocusedApplicationTest, ADockIsNoRegularApplicationAndADialogIs) {
  TestWindow window("Panel");
  ASSERT_TRUE(comesToTheFront(u"Panel"_s));
  const auto typeNamed = [&](const QByteArray& name) {
    return number(window.connection().atom(name));
  };
  window.setProperty("_NET_WM_WINDOW_TYPE", "ATOM", 32, typeNamed("_NET_WM_WINDOW_TYPE_DOCK"));
  EXPECT_FALSE(focused->frontmost()->isRegular);
  window.setProperty("_NET_WM_WINDOW_TYPE", "ATOM", 32, typeNamed("_NET_WM_WINDOW_TYPE_DIALOG"));
  EXPECT_TRUE(focused->frontmost()->isRegular);
  window.setProperty("_NET_WM_WINDOW_TYPE", "ATOM", 32,
                     typeNamed("_OWN_TYPE") + typeNamed("_NET_WM_WINDOW_TYPE_NOTIFICATION"));
  EXPECT_FALSE(focused->frontmost()->isRegular);
}

TEST_F(X11FocusedApplicationTest, RunningApplicationsAreListedOnceInTheDesktopsOrder) {
  const TestWindow first("First");
  ASSERT_TRUE(comesToTheFront(u"First"_s) && settles(first));
  const TestWindow second("Second");
  ASSERT_TRUE(comesToTheFront(u"Second"_s) && settles(second));
  const TestWindow firstAgain("First");
  ASSERT_TRUE(comesToTheFront(u"First"_s));
  const auto running = focused->running();
  ASSERT_THAT(running, SizeIs(2));
  EXPECT_EQ(running[0].identifier, u"First"_s);
  EXPECT_TRUE(running[0].isActive);
  EXPECT_EQ(running[1].identifier, u"Second"_s);
  EXPECT_FALSE(running[1].isActive);
}

TEST_F(X11FocusedApplicationTest, WithoutWindowsThereIsNoApplication) {
  EXPECT_TRUE(EventLoop::runUntil([&] { return focused->running().empty(); }));
  EXPECT_TRUE(EventLoop::runUntil([&] { return !focused->frontmost(); }));
}

TEST_F(X11FocusedApplicationTest, HostilePropertiesAreReadWithoutHarm) {
  TestWindow window("Hostile");
  ASSERT_TRUE(comesToTheFront(u"Hostile"_s));
  window.setProperty("_NET_WM_PID", "STRING", 8, "not a number");
  window.setProperty("_NET_WM_WINDOW_TYPE", "ATOM", 32, number(0xFFFFFFFF));
  window.setProperty("_GTK_APPLICATION_ID", "UTF8_STRING", 8, QByteArray(1'000'000, '/'));
  window.setProperty("_KDE_NET_WM_DESKTOP_FILE", "UTF8_STRING", 8, QByteArray("\0\0", 2));
  EXPECT_EQ(focused->frontmost()->identifier, u"Hostile"_s);

  window.setProperty("WM_CLASS", "STRING", 8, "caf\xE9");
  EXPECT_EQ(focused->frontmost()->identifier, u"café"_s);
  window.setProperty("WM_CLASS", "STRING", 8, QByteArray(1'000'000, 'x'));
  EXPECT_FALSE(focused->frontmost() && focused->frontmost()->identifier);
  window.setProperty("WM_CLASS", "STRING", 8, QByteArray("\0\0\0", 3));
  EXPECT_FALSE(focused->frontmost() && focused->frontmost()->identifier);
}

TEST_F(X11FocusedApplicationTest, AWindowThatVanishesIsNoError) {
  for (int round = 0; round < 20; ++round) {
    const TestWindow window("Fleeting");
    EventLoop::runUntil([&] { return window.hasFocus(); });
    focused->frontmost();
    focused->running();
  }
  EXPECT_TRUE(EventLoop::runUntil([&] { return focused->running().empty(); }));
}

TEST_F(X11FocusedApplicationTest, WithoutAServerThereIsNoAdapter) {
  EXPECT_EQ(X11FocusedApplication::create(":9876"), nullptr);
}

TEST_F(X11FocusedApplicationTest, AServerThatDiesReadsAsNoApplication) {
  PrivateServer server;
  const auto doomed = X11FocusedApplication::create(server.display());
  ASSERT_TRUE(doomed);
  server.kill();
  EXPECT_FALSE(doomed->frontmost());
  EXPECT_THAT(doomed->running(), IsEmpty());
}

}  // namespace
}  // namespace vemo
