// An indexer on a real disk, with the desktop and time in the test's hand.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>

#include "TestTree.h"
#include "base/SerialQueue.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeFocusedApplication.h"
#include "fakes/FakeFolderChooser.h"
#include "fakes/FakeMainThread.h"
#include "fakes/FakeScriptRunner.h"
#include "fakes/TestStorage.h"
#include "integrations/WorkspaceIndexer.h"
#include "storage/SettingsKeys.h"

namespace vemo {

class WorkspaceIndexerFixture : public testing::Test {
 protected:
  /// Makes the indexer and lets its first refresh come to its end.
  void startUp() {
    begin();
    settle();
  }

  void begin() {
    indexer.reset();
    indexer = std::make_unique<WorkspaceIndexer>(
        WorkspaceIndexer::Neighbours{.mainThread = mainThread,
                                     .diskReader = diskReader,
                                     .settings = storage.settings,
                                     .focusedApplication = applications,
                                     .folderChooser = &folderChooser,
                                     .scriptRunner = &scripts,
                                     .configFolder = tree.path(u"config"_s),
                                     .fallbackRoots = fallbackRoots});
  }

  /// Lets everything that is under way come to its end.
  void settle() {
    do {
      mainThread.drain();
      diskReader.waitUntilIdle();
    } while (!mainThread.isEmpty());
  }

  void refresh() {
    indexer->refreshActiveWorkspace();
    settle();
  }

  void setFrontmost(const QString& identifier, const QString& name) {
    applications.setFrontmost(RunningApplication{.identifier = identifier, .name = name});
  }

  /// A project with one file that is called like it.
  QString addProject(const QByteArray& name) {
    tree.write("projects/" + name + "/" + name + ".ts");
    return tree.path(u"projects/"_s + QString::fromUtf8(name));
  }

  void addStoredProject(const QByteArray& editor, const QByteArray& entry, const QString& project,
                        time_t date) {
    const QByteArray file =
        "config/" + editor + "/User/workspaceStorage/" + entry + "/workspace.json";
    tree.write(file, "{\"folder\":\"file://" + project.toUtf8() + "\"}");
    tree.setDate(file, date);
  }

  TestTree tree;
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeFocusedApplication applications;
  FakeFolderChooser folderChooser{mainThread};
  FakeScriptRunner scripts;
  QStringList fallbackRoots;
  SerialQueue diskReader{"disk reader"};
  std::unique_ptr<WorkspaceIndexer> indexer;
};

}  // namespace vemo
