// Which project is found from the application in front.
#include "WorkspaceIndexerFixture.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString script = u"tell application \"Xcode\" to get path of active workspace document"_s;

class WorkspaceIndexerFrontTest : public WorkspaceIndexerFixture {
 protected:
  QString detected() {
    startUp();
    return indexer->activeWorkspacePath();
  }
};

TEST_F(WorkspaceIndexerFrontTest, WithNoApplicationInFrontTheMostRecentOverAllFoldersWins) {
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  addStoredProject("Antigravity", "b", addProject("beta"), 3000);
  addStoredProject("Cursor", "c", addProject("gamma"), 2000);
  EXPECT_EQ(detected(), tree.path(u"projects/beta"_s));
}

TEST_F(WorkspaceIndexerFrontTest, AnApplicationWithoutIdentifierAndNameCountsAsNone) {
  applications.setFrontmost(RunningApplication{});
  addStoredProject("Cursor", "c", addProject("gamma"), 2000);
  EXPECT_EQ(detected(), tree.path(u"projects/gamma"_s));
}

TEST_F(WorkspaceIndexerFrontTest, WindsurfIsServedByTheThreeFolderSearchToo) {
  setFrontmost(u"com.exafunction.windsurf"_s, u"Windsurf"_s);
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  addStoredProject("Cursor", "c", addProject("gamma"), 2000);
  EXPECT_EQ(detected(), tree.path(u"projects/gamma"_s));
}

TEST_F(WorkspaceIndexerFrontTest, AnEditorInFrontIsServedByItsOwnFolderOnly) {
  setFrontmost(u"code"_s, u"Visual Studio Code"_s);
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  addStoredProject("Cursor", "c", addProject("gamma"), 2000);
  EXPECT_EQ(detected(), tree.path(u"projects/alpha"_s));
  setFrontmost(u"cursor"_s, u"Cursor"_s);
  refresh();
  EXPECT_EQ(indexer->activeWorkspacePath(), tree.path(u"projects/gamma"_s));
}

TEST_F(WorkspaceIndexerFrontTest, TheApplicationIsTheOneInFrontWhenTheRefreshWasAskedFor) {
  startUp();
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  addStoredProject("Cursor", "c", addProject("gamma"), 2000);
  setFrontmost(u"code"_s, {});
  indexer->refreshActiveWorkspace();
  setFrontmost(u"cursor"_s, {});
  settle();
  EXPECT_EQ(indexer->activeWorkspacePath(), tree.path(u"projects/alpha"_s));
}

TEST_F(WorkspaceIndexerFrontTest, XcodesDocumentGivesTheFolderThatHoldsTheProjectUntested) {
  setFrontmost(u"com.apple.dt.Xcode"_s, u"Xcode"_s);
  scripts.answer(script, u"/nowhere/Project/Vemo.xcodeproj"_s);
  EXPECT_EQ(detected(), u"/nowhere/Project"_s);
  EXPECT_THAT(scripts.sources(), ElementsAre(script));
  scripts.answer(script, u"/nowhere/Vemo.xcodeproj/"_s);
  refresh();
  EXPECT_EQ(indexer->activeWorkspacePath(), u"/nowhere"_s);
}

TEST_F(WorkspaceIndexerFrontTest, XcodeWithoutADocumentIsServedByTheCodeFolderAndThenTheFallback) {
  setFrontmost({}, u"XCODE"_s);
  const QString fallback = addProject("fallback");
  fallbackRoots = {tree.path(u"missing"_s), fallback};
  addStoredProject("Cursor", "c", addProject("gamma"), 9000);
  for (const auto& answer : {std::optional<QString>(), std::optional(u""_s)}) {
    scripts.answer(script, answer);
    EXPECT_EQ(detected(), fallback);
  }
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  refresh();
  EXPECT_EQ(indexer->activeWorkspacePath(), tree.path(u"projects/alpha"_s));
}

TEST_F(WorkspaceIndexerFrontTest, NobodyButXcodeIsAskedByScript) {
  setFrontmost(u"code"_s, u"Code"_s);
  startUp();
  EXPECT_THAT(scripts.sources(), IsEmpty());
}

TEST_F(WorkspaceIndexerFrontTest, TheNewestNamingADeletedFolderMissesAndOlderOnesAreNotRetried) {
  addStoredProject("Code", "old", addProject("alpha"), 1000);
  addStoredProject("Code", "new", tree.path(u"projects/deleted"_s), 2000);
  EXPECT_EQ(detected(), u""_s);
  const QString fallback = addProject("fallback");
  fallbackRoots = {fallback, addProject("second")};
  EXPECT_EQ(detected(), fallback);
}

TEST_F(WorkspaceIndexerFrontTest, ARemoteWorkspaceIsPassedOverAndOlderLocalOnesRemainEligible) {
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  const QByteArray remote = "config/Code/User/workspaceStorage/r/workspace.json";
  tree.write(remote, R"({"folder":"vscode-remote://ssh-remote%2Bhost/home/u"})");
  tree.setDate(remote, 5000);
  EXPECT_EQ(detected(), tree.path(u"projects/alpha"_s));
}

TEST_F(WorkspaceIndexerFrontTest, WhenNothingIsFoundTheOldFilesStay) {
  addStoredProject("Code", "a", addProject("alpha"), 1000);
  startUp();
  ASSERT_TRUE(QDir(tree.path(u"config"_s)).removeRecursively());
  refresh();
  EXPECT_EQ(indexer->activeWorkspacePath(), tree.path(u"projects/alpha"_s));
  EXPECT_EQ(indexer->resolveFileTag(u"alpha"_s, u"ts"_s), u"@alpha.ts"_s);
}

TEST_F(WorkspaceIndexerFrontTest, TheBuiltInFallbackRootsAreFiveAbsolutePaths) {
  EXPECT_EQ(WorkspaceIndexer::builtInFallbackRoots.size(), 5);
  for (const QString& root : WorkspaceIndexer::builtInFallbackRoots)
    EXPECT_TRUE(root.startsWith(u'/')) << root.toStdString();
}

}  // namespace
}  // namespace vemo
