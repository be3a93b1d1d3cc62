// The windows from their own shared object, on a real display with a window manager.
#include "platform/quick/QuickScenes.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QGuiApplication>
#include <QProcess>
#include <QScreen>
#include <QWindow>

#include "ScenesFixture.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtTaskBar.h"
#include "windows/offline/MainWindowOnFakes.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::HasSubstr;
using testing::Not;

class QuickScenesTest : public ScenesFixture {
 protected:
  QuickScenesTest() {
    scenes.modelOf = [this](Scene) -> QObject& { return offline.model(); };
    scenes.applyPolicy = applyTaskBarPolicy;
    scenes.onChanged = [this] { ++changes; };
  }

  static QWindow* mainWindow() {
    for (QWindow* window : QGuiApplication::topLevelWindows())
      if (window->title() == u"Vemo") return window;
    return nullptr;
  }

  static bool isExposed() { return mainWindow() && mainWindow()->isExposed(); }

  /// What the window manager has noted of the window.
  static std::string windowState() {
    QProcess xprop;
    xprop.start(u"xprop"_s, {u"-id"_s, QString::number(mainWindow()->winId()), u"_NET_WM_STATE"_s});
    xprop.waitForFinished();
    return xprop.readAllStandardOutput().toStdString();
  }

  bool openMain() {
    scenes.open(Scene::Main);
    return QtTestLoop::runUntil(isExposed);
  }

  bool closeMain() {
    scenes.close(Scene::Main);
    return QtTestLoop::runUntil([this] { return !scenes.isOpen(Scene::Main); });
  }

  MainWindowOnFakes offline{u"home-full"_s};
  QuickScenes scenes{{.sharedObject = QStringLiteral(VEMO_WINDOWS),
                      .symbolsFolder = QStringLiteral(VEMO_SYMBOLS_IN_SOURCE)}};
  int changes = 0;
};

TEST_F(QuickScenesTest, TheMainWindowOpensInItsSizeInTheMiddle) {
  EXPECT_FALSE(scenes.isOpen(Scene::Main));
  ASSERT_TRUE(openMain());
  EXPECT_TRUE(scenes.isOpen(Scene::Main));
  EXPECT_EQ(mainWindow()->size(), QSize(860, 620));
  const QPoint middle = mainWindow()->screen()->availableGeometry().center();
  EXPECT_LE((mainWindow()->frameGeometry().center() - middle).manhattanLength(), 40);
  EXPECT_TRUE(QtTestLoop::runUntil([] { return mainWindow()->isActive(); }));
}

TEST_F(QuickScenesTest, ASecondOpeningBringsTheSameWindowForward) {
  ASSERT_TRUE(openMain());
  QWindow* const first = mainWindow();
  first->showMinimized();
  ASSERT_TRUE(QtTestLoop::runUntil([&] { return !first->isExposed(); }));
  scenes.open(Scene::Main);
  EXPECT_TRUE(QtTestLoop::runUntil(isExposed));
  EXPECT_EQ(mainWindow(), first);
}

TEST_F(QuickScenesTest, ClosingByTheUserFreesTheWindowAndItCanOpenAgain) {
  ASSERT_TRUE(openMain());
  mainWindow()->close();
  EXPECT_TRUE(QtTestLoop::runUntil([this] { return !scenes.isOpen(Scene::Main); }));
  EXPECT_EQ(mainWindow(), nullptr);
  EXPECT_EQ(changes, 2) << "one for the opening, one for the end";
  EXPECT_TRUE(openMain());
}

TEST_F(QuickScenesTest, AnAccessoryHasNoPlaceInTheTaskBar) {
  scenes.setActivationPolicy(ActivationPolicy::Accessory);
  ASSERT_TRUE(openMain());
  EXPECT_TRUE(
      QtTestLoop::runUntil([] { return windowState().find("SKIP_TASKBAR") != std::string::npos; }));
  EXPECT_THAT(windowState(), HasSubstr("SKIP_PAGER"));
  scenes.setActivationPolicy(ActivationPolicy::Regular);
  EXPECT_TRUE(
      QtTestLoop::runUntil([] { return windowState().find("SKIP_TASKBAR") == std::string::npos; }));
  EXPECT_TRUE(isExposed()) << "the window stays";
}

TEST_F(QuickScenesTest, WithoutTheSharedObjectTheProgramGoesOn) {
  QuickScenes missing({.sharedObject = u"/nowhere/vemo-windows.so"_s, .symbolsFolder = {}});
  missing.modelOf = scenes.modelOf;
  missing.open(Scene::Main);
  missing.close(Scene::Main);
  EXPECT_FALSE(missing.isOpen(Scene::Main));
}

}  // namespace
}  // namespace vemo
