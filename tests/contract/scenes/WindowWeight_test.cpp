// What the windows cost in a process of their own, in the order of a session: before the first of
// them opens, while they are open, and after the last has closed.
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QGuiApplication>
#include <QWindow>
#include <algorithm>

#include "ScenesFixture.h"
#include "fakes/QtTestLoop.h"
#include "platform/quick/QuickScenes.h"
#include "windows/offline/MainWindowOnFakes.h"
#include "windows/offline/SettingsOnFakes.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

constexpr double mebibyte = 1024;  // in kB, as the system tells them
constexpr double limit = 10 * mebibyte;

#if __has_feature(address_sanitizer)
constexpr bool keepsFreedMemory = true;
#else
constexpr bool keepsFreedMemory = false;
#endif

QByteArray contentOf(const QString& path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

/// In kB. What can be read again from files isn't in it.
double anonymousMemory() {
  for (const QByteArray& line : contentOf(u"/proc/self/status"_s).split('\n'))
    if (line.startsWith("RssAnon:")) return line.simplified().split(' ').at(1).toDouble();
  return 0;
}

bool isLoaded(const QByteArray& library) {
  return contentOf(u"/proc/self/maps"_s).contains(library);
}

/// A QML engine has a thread of its own.
bool isEngineThere() {
  const QDir tasks(u"/proc/self/task"_s);
  return std::ranges::any_of(
      tasks.entryList(QDir::Dirs | QDir::NoDotAndDotDot), [&](const QString& task) {
        return contentOf(tasks.filePath(task + u"/comm"_s)).trimmed() == "QQmlThread";
      });
}

class WindowWeightTest : public ScenesFixture {
 protected:
  WindowWeightTest() {
    scenes.modelOf = [this](Scene scene) -> QObject& {
      return scene == Scene::Main ? m_main.viewModel() : m_settings.viewModel();
    };
  }

  [[nodiscard]] bool open(Scene scene) {
    scenes.open(scene);
    return QtTestLoop::runUntil([] {
      const auto windows = QGuiApplication::topLevelWindows();
      return !windows.isEmpty() && std::ranges::all_of(windows, &QWindow::isExposed);
    });
  }

  [[nodiscard]] bool close(Scene scene) {
    scenes.close(scene);
    return QtTestLoop::runUntil([&] { return !scenes.isOpen(scene); });
  }

  [[nodiscard]] bool openAndCloseBoth() {
    return open(Scene::Main) && open(Scene::Settings) && close(Scene::Main) &&
           close(Scene::Settings);
  }

 private:
  MainWindowOnFakes m_main{u"home-full"_s};
  SettingsOnFakes m_settings{u"settings-system"_s};

 protected:
  QuickScenes scenes{{.sharedObject = QStringLiteral(VEMO_WINDOWS),
                      .symbolsFolder = QStringLiteral(VEMO_SYMBOLS_IN_SOURCE)}};
};

TEST_F(WindowWeightTest, NothingOfQtQuickIsLoadedUntilTheFirstWindowOpens) {
  EXPECT_FALSE(isLoaded("libQt6Qml"));
  EXPECT_FALSE(isLoaded("libQt6Quick"));
  ASSERT_TRUE(open(Scene::Main));
  EXPECT_TRUE(isLoaded("libQt6Qml"));
  EXPECT_TRUE(isLoaded("libQt6Quick"));
}

TEST_F(WindowWeightTest, TheEngineIsThereFromTheFirstWindowToTheLast) {
  EXPECT_FALSE(isEngineThere());
  ASSERT_TRUE(open(Scene::Main));
  ASSERT_TRUE(open(Scene::Settings));
  EXPECT_TRUE(isEngineThere());
  ASSERT_TRUE(close(Scene::Main));
  EXPECT_TRUE(isEngineThere()) << "the settings need it still";
  ASSERT_TRUE(close(Scene::Settings));
  // Whoever waits for a thread goes on shortly before the system has forgotten it.
  EXPECT_TRUE(QtTestLoop::runUntil([] { return !isEngineThere(); }));
}

TEST_F(WindowWeightTest, WhatTheWindowsTookGoesBackWhenTheLastHasClosed) {
  ASSERT_TRUE(open(Scene::Main));
  ASSERT_TRUE(open(Scene::Settings));
  const double withBoth = anonymousMemory();
  ASSERT_TRUE(close(Scene::Main));
  ASSERT_TRUE(close(Scene::Settings));
  RecordProperty("withBoth", std::to_string(withBoth));
  RecordProperty("afterBoth", std::to_string(anonymousMemory()));
  if (!keepsFreedMemory) EXPECT_LT(anonymousMemory(), withBoth - 2 * mebibyte);
}

TEST_F(WindowWeightTest, OpeningThemAgainAndAgainTakesNoMoreEachTime) {
  constexpr int rounds = 8;
  for (int round = 0; round < 3; ++round) ASSERT_TRUE(openAndCloseBoth());
  const double before = anonymousMemory();
  for (int round = 0; round < rounds; ++round) ASSERT_TRUE(openAndCloseBoth());
  const double perRound = (anonymousMemory() - before) / rounds;
  RecordProperty("perRound", std::to_string(perRound));
  if (!keepsFreedMemory) EXPECT_LT(perRound, limit / 50);
}

}  // namespace
}  // namespace vemo
