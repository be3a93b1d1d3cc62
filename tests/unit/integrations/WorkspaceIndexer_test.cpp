#include "integrations/WorkspaceIndexer.h"

#include <future>

#include "WorkspaceIndexerFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class WorkspaceIndexerTest : public WorkspaceIndexerFixture {
 protected:
  void useCustomWorkspace(const QString& path) {
    storage.settings.set(keys::customWorkspacePath, path);
  }
};

TEST_F(WorkspaceIndexerTest, StartsWithoutAProject) {
  startUp();
  EXPECT_EQ(indexer->activeWorkspacePath(), u""_s);
  EXPECT_EQ(indexer->activeWorkspaceName(), u""_s);
  EXPECT_TRUE(indexer->indexedFiles().isEmpty());
  EXPECT_FALSE(indexer->isScanning());
  EXPECT_FALSE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->resolveFileTag(u"a"_s, u"ts"_s), std::nullopt);
}

TEST_F(WorkspaceIndexerTest, TheCustomWorkspaceIsReadAtTheStart) {
  const QString project = addProject("alpha");
  useCustomWorkspace(project);
  testing::internal::CaptureStdout();
  begin();
  EXPECT_TRUE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->activeWorkspacePath(), u""_s) << "the work runs later";
  settle();
  EXPECT_THAT(testing::internal::GetCapturedStdout(),
              HasSubstr("[Vemo Workspace] 📂 Indexed 1 files in workspace 'alpha'\n"));
  EXPECT_EQ(indexer->activeWorkspacePath(), project);
  EXPECT_EQ(indexer->activeWorkspaceName(), u"alpha"_s);
  EXPECT_EQ(indexer->resolveFileTag(u"Alpha"_s, u"ts"_s), u"@alpha.ts"_s);
}

TEST_F(WorkspaceIndexerTest, ARefreshReturnsAtOnceAndLookupsSeeTheOldProjectUntilTheNewOneIsRead) {
  useCustomWorkspace(addProject("alpha"));
  startUp();
  useCustomWorkspace(addProject("beta"));
  std::promise<void> diskMayAnswer;
  diskReader.post([answer = diskMayAnswer.get_future()] { answer.wait(); });
  indexer->refreshActiveWorkspace();
  EXPECT_EQ(indexer->resolveFileTag(u"alpha"_s, u"ts"_s), u"@alpha.ts"_s);
  mainThread.drain();
  EXPECT_TRUE(indexer->isScanning());
  EXPECT_EQ(indexer->resolveFileTag(u"alpha"_s, u"ts"_s), u"@alpha.ts"_s);
  diskMayAnswer.set_value();
  settle();
  EXPECT_FALSE(indexer->isScanning());
  EXPECT_EQ(indexer->resolveFileTag(u"alpha"_s, u"ts"_s), std::nullopt);
  EXPECT_EQ(indexer->resolveFileTag(u"beta"_s, u"ts"_s), u"@beta.ts"_s);
}

TEST_F(WorkspaceIndexerTest, ARefreshOfTheSameProjectReadsItNoSecondTime) {
  useCustomWorkspace(addProject("alpha"));
  startUp();
  tree.write("projects/alpha/new.ts");
  refresh();
  EXPECT_EQ(indexer->indexedFiles().size(), 1U);
}

TEST_F(WorkspaceIndexerTest, AProjectWithoutFilesIsReadAgainAtEveryRefresh) {
  tree.makeFolder("projects/empty");
  useCustomWorkspace(tree.path(u"projects/empty"_s));
  startUp();
  EXPECT_EQ(indexer->activeWorkspaceName(), u"empty"_s);
  tree.write("projects/empty/new.ts");
  refresh();
  EXPECT_EQ(indexer->indexedFiles().size(), 1U);
}

TEST_F(WorkspaceIndexerTest, ChoosingTheSameFolderAgainReadsItAnew) {
  const QString project = addProject("alpha");
  useCustomWorkspace(project);
  startUp();
  tree.write("projects/alpha/new.ts");
  indexer->setCustomWorkspace(project);
  settle();
  EXPECT_EQ(indexer->indexedFiles().size(), 2U);
}

TEST_F(WorkspaceIndexerTest, SettingACustomWorkspaceKeepsItForTheNextStart) {
  startUp();
  const QString project = addProject("alpha");
  indexer->setCustomWorkspace(project);
  EXPECT_TRUE(indexer->isManualWorkspace());
  settle();
  EXPECT_EQ(storage.settings.get(keys::customWorkspacePath), project);
  startUp();
  EXPECT_EQ(indexer->activeWorkspacePath(), project);
}

TEST_F(WorkspaceIndexerTest, SettingAFolderThatDoesNotExistChangesNothing) {
  startUp();
  indexer->setCustomWorkspace(tree.path(u"missing"_s));
  settle();
  EXPECT_FALSE(storage.settings.contains(keys::customWorkspacePath));
  EXPECT_FALSE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->activeWorkspacePath(), u""_s);
}

TEST_F(WorkspaceIndexerTest, ClearingGoesBackToDetectionAndReadsEvenTheSameFolderAnew) {
  const QString project = addProject("alpha");
  useCustomWorkspace(project);
  startUp();
  addStoredProject("Code", "a", project, 1000);
  tree.write("projects/alpha/new.ts");
  indexer->clearCustomWorkspace();
  EXPECT_FALSE(indexer->isManualWorkspace());
  EXPECT_FALSE(storage.settings.contains(keys::customWorkspacePath));
  settle();
  EXPECT_EQ(indexer->activeWorkspacePath(), project);
  EXPECT_EQ(indexer->indexedFiles().size(), 2U);
}

TEST_F(WorkspaceIndexerTest, ACustomFolderThatHasGoneFallsBackToDetectionAndComesIntoForceAgain) {
  const QString alpha = addProject("alpha");
  const QString beta = addProject("beta");
  addStoredProject("Code", "b", beta, 1000);
  useCustomWorkspace(alpha);
  startUp();
  ASSERT_TRUE(QDir().rename(alpha, tree.path(u"away"_s)));
  refresh();
  EXPECT_FALSE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->activeWorkspacePath(), beta);
  EXPECT_EQ(storage.settings.get(keys::customWorkspacePath), alpha);
  ASSERT_TRUE(QDir().rename(tree.path(u"away"_s), alpha));
  refresh();
  EXPECT_TRUE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->activeWorkspacePath(), alpha);
}

TEST_F(WorkspaceIndexerTest, AnEmptyCustomPathMeansNone) {
  useCustomWorkspace(u""_s);
  startUp();
  EXPECT_FALSE(indexer->isManualWorkspace());
}

TEST_F(WorkspaceIndexerTest, ACustomPathThatIsAFileHasNoFiles) {
  tree.write("file.ts");
  useCustomWorkspace(tree.path(u"file.ts"_s));
  startUp();
  EXPECT_TRUE(indexer->isManualWorkspace());
  EXPECT_EQ(indexer->activeWorkspaceName(), u"file.ts"_s);
  EXPECT_TRUE(indexer->indexedFiles().isEmpty());
}

TEST_F(WorkspaceIndexerTest, TheFolderChooserIsAskedInTheseWordsAndItsAnswerTaken) {
  startUp();
  const QString project = addProject("alpha");
  folderChooser.answer(project);
  indexer->chooseCustomWorkspace();
  settle();
  ASSERT_EQ(folderChooser.questions().size(), 1U);
  EXPECT_EQ(folderChooser.questions()[0].prompt, u"Select Codebase"_s);
  EXPECT_EQ(folderChooser.questions()[0].message,
            u"Choose the root folder of your project for @file tagging"_s);
  EXPECT_EQ(indexer->activeWorkspacePath(), project);
  EXPECT_TRUE(indexer->isManualWorkspace());
}

TEST_F(WorkspaceIndexerTest, DecidingAgainstAFolderChangesNothing) {
  startUp();
  folderChooser.answer(std::nullopt);
  indexer->chooseCustomWorkspace();
  settle();
  EXPECT_FALSE(storage.settings.contains(keys::customWorkspacePath));
  EXPECT_FALSE(indexer->isManualWorkspace());
}

TEST_F(WorkspaceIndexerTest, ScansDoNotInterleaveAndEachIsAssignedOnce) {
  useCustomWorkspace(addProject("alpha"));
  startUp();
  QStringList seen;
  const auto observation = indexer->changed.observe([&] {
    seen.append(indexer->activeWorkspaceName() +
                (indexer->isScanning() ? u" scanning "_s : u" "_s) +
                QString::number(indexer->indexedFiles().size()));
  });
  tree.write("projects/beta/one.ts");
  tree.write("projects/beta/two.ts");
  tree.write("projects/gamma/one.ts");
  tree.write("projects/gamma/two.ts");
  tree.write("projects/gamma/three.ts");
  indexer->setCustomWorkspace(tree.path(u"projects/beta"_s));
  indexer->setCustomWorkspace(tree.path(u"projects/gamma"_s));
  settle();
  EXPECT_THAT(seen,
              ElementsAre(u"beta scanning 1"_s, u"beta 2"_s, u"gamma scanning 2"_s, u"gamma 3"_s));
}

TEST_F(WorkspaceIndexerTest, AWaitingRefreshIsJudgedAfterTheScanBeforeIt) {
  const QString alpha = addProject("alpha");
  startUp();
  int scans = 0;
  const auto observation =
      indexer->changed.observe([&] { scans += indexer->isScanning() ? 1 : 0; });
  indexer->setCustomWorkspace(alpha);
  indexer->refreshActiveWorkspace();
  indexer->refreshActiveWorkspace();
  settle();
  EXPECT_EQ(scans, 1);
}

TEST_F(WorkspaceIndexerTest, AnIndexerThatGoesAwayDuringAScanIsNotMissed) {
  for (int i = 0; i < 2000; ++i) tree.write("projects/many/f" + QByteArray::number(i) + "/a.ts");
  useCustomWorkspace(tree.path(u"projects/many"_s));
  begin();
  mainThread.drain();
  indexer.reset();
  settle();
}

TEST_F(WorkspaceIndexerTest, TheNameOfTheWorkspaceIsThePathsLastComponent) {
  addProject("alpha");
  useCustomWorkspace(tree.path(u"projects/alpha/"_s));
  startUp();
  EXPECT_EQ(indexer->activeWorkspacePath(), tree.path(u"projects/alpha/"_s));
  EXPECT_EQ(indexer->activeWorkspaceName(), u"alpha"_s);
}

}  // namespace
}  // namespace vemo
