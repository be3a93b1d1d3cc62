#include "integrations/EditorProjects.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "TestTree.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

const QString code = u"/c/Code/User/workspaceStorage"_s;
const QString cursor = u"/c/Cursor/User/workspaceStorage"_s;
const QString antigravity = u"/c/Antigravity/User/workspaceStorage"_s;

TEST(EditorStorageFoldersTest, TheEditorInFrontDecidesByItsIdentifierOrItsName) {
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"Cursor"_s, {}), ElementsAre(cursor));
  EXPECT_THAT(editorStorageFolders(u"/c"_s, {}, u"CURSOR"_s), ElementsAre(cursor));
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"com.google.antigravity"_s, {}),
              ElementsAre(antigravity));
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"com.microsoft.VSCode"_s, {}), ElementsAre(code));
}

TEST(EditorStorageFoldersTest, EachWordIsLookedForInBothBeforeTheNext) {
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"code"_s, u"Cursor"_s), ElementsAre(cursor));
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"code"_s, u"Antigravity"_s), ElementsAre(antigravity));
}

TEST(EditorStorageFoldersTest, AnyApplicationWithTheLettersOfCodeSelectsTheCodeFolderOnly) {
  EXPECT_THAT(editorStorageFolders(u"/c"_s, {}, u"Barcode Scanner"_s), ElementsAre(code));
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"com.apple.dt.Xcode"_s, u"Xcode"_s),
              ElementsAre(code));
}

TEST(EditorStorageFoldersTest, WindsurfMatchesNoWordAndIsServedByAllThreeFolders) {
  EXPECT_THAT(editorStorageFolders(u"/c"_s, u"com.exafunction.windsurf"_s, u"Windsurf"_s),
              ElementsAre(code, cursor, antigravity));
}

TEST(EditorStorageFoldersTest, WithoutAConfigurationFolderThereIsNowhereToLook) {
  EXPECT_THAT(editorStorageFolders({}, u"code"_s, {}), IsEmpty());
}

TEST(ProjectFolderTest, AFileUrlIsDecoded) {
  const auto folderOf = [](const QByteArray& url) {
    return projectFolderIn("{\"folder\":\"" + url + "\"}");
  };
  EXPECT_EQ(folderOf("file:///home/u/project"), u"/home/u/project"_s);
  EXPECT_EQ(folderOf("file:///home/u/my%20project"), u"/home/u/my project"_s);
  EXPECT_EQ(folderOf("file:///home/u/my project"), u"/home/u/my project"_s);
  EXPECT_EQ(folderOf("file:///home/u/%C3%A4%23%25%3F"), u"/home/u/ä#%?"_s);
  EXPECT_EQ(folderOf("file:///home/u/ä"), u"/home/u/ä"_s);
  EXPECT_EQ(folderOf("FILE:///home/u/"), u"/home/u"_s);
  EXPECT_EQ(folderOf("file://host/home/u"), u"/home/u"_s);
  EXPECT_EQ(folderOf("file:///"), u"/"_s);
  EXPECT_EQ(folderOf("file:///a%2520b"), u"/a%20b"_s) << "escapes are decoded once";
}

TEST(ProjectFolderTest, WhatNamesNoFolderOnThisMachineIsNothing) {
  for (const QByteArray& url :
       {"vscode-remote://ssh-remote%2Bhost/home/u"_ba, "vscode-vfs://github/a/b"_ba,
        "https://example.com/a"_ba, "/home/u/plain"_ba, "home"_ba, ""_ba, "file:///a%00b"_ba,
        "file:///a%FFb"_ba})
    EXPECT_EQ(projectFolderIn("{\"folder\":\"" + url + "\"}"), std::nullopt) << url.toStdString();
}

TEST(ProjectFolderTest, OnlyAnObjectWithAFolderStringCounts) {
  for (const QByteArray& json :
       {""_ba, "[]"_ba, "{\"folder\":"_ba, R"({"workspace":"file:///a.code-workspace"})"_ba,
        R"({"folder":["file:///a"]})"_ba, R"({"folder":null})"_ba, "\xff\xfe"_ba})
    EXPECT_EQ(projectFolderIn(json), std::nullopt) << json.toStdString();
}

class LastOpenedProjectTest : public testing::Test {
 protected:
  void addProject(const QByteArray& entry, const QByteArray& content, time_t date,
                  long nanoseconds = 0) const {
    tree.write(entry + "/workspace.json", content);
    tree.setDate(entry + "/workspace.json", date, nanoseconds);
  }

  static QByteArray naming(const QByteArray& folder) {
    return "{\"folder\":\"file://" + folder + "\"}";
  }

  std::optional<QString> last() const {
    return lastOpenedProject({tree.path(u"one"_s), tree.path(u"missing"_s), tree.path(u"two"_s)});
  }

  TestTree tree;
};

TEST_F(LastOpenedProjectTest, TheMostRecentOneOverAllFoldersWins) {
  addProject("one/a", naming("/a"), 1000);
  addProject("two/b", naming("/b"), 3000);
  addProject("one/c", naming("/c"), 2000);
  EXPECT_EQ(last(), u"/b"_s);
  addProject("one/.d", naming("/d"), 3000, 1);
  EXPECT_EQ(last(), u"/d"_s) << "a hidden entry is one too, and nanoseconds count";
}

TEST_F(LastOpenedProjectTest, OfEquallyOldOnesTheFirstListedStays) {
  addProject("one/a", naming("/a"), 1000);
  addProject("two/b", naming("/b"), 1000);
  EXPECT_EQ(last(), u"/a"_s);
}

TEST_F(LastOpenedProjectTest, NewerOnesThatNameNoLocalFolderAreSkippedAndOlderOnesRemainEligible) {
  addProject("one/old", naming("/old"), 500);
  addProject("one/local", naming("/local"), 1000);
  addProject("one/remote", R"({"folder":"vscode-remote://wsl/home/u"})", 2000);
  addProject("one/multi", R"({"workspace":"file:///x.code-workspace"})", 3000);
  addProject("two/broken", "{", 4000);
  addProject("two/huge", naming("/huge") + QByteArray(1'000'000, ' '), 5000);
  tree.makeFolder("two/folder/workspace.json");
  tree.write("two/loose");
  tree.makeFolder("two/empty");
  EXPECT_EQ(last(), u"/local"_s);
}

TEST_F(LastOpenedProjectTest, APipeInTheFilesPlaceHoldsNobodyUp) {
  addProject("one/a", naming("/a"), 1000);
  tree.makeFolder("one/pipe");
  ASSERT_EQ(::mkfifo(tree.nativePath("one/pipe/workspace.json").constData(), 0600), 0);
  EXPECT_EQ(last(), u"/a"_s);
}

TEST_F(LastOpenedProjectTest, ALinkCountsWithItsOwnDateAndOnlyWhenItPointsSomewhere) {
  addProject("one/a", naming("/a"), 1000);
  tree.write("elsewhere.json", naming("/linked"));
  tree.makeFolder("one/link");
  tree.link(tree.nativePath("elsewhere.json"), "one/link/workspace.json");
  tree.setDate("one/link/workspace.json", 2000);
  tree.makeFolder("one/broken");
  tree.link("nowhere", "one/broken/workspace.json");
  EXPECT_EQ(last(), u"/linked"_s);
  tree.setDate("one/link/workspace.json", 500);
  EXPECT_EQ(last(), u"/a"_s);
}

TEST_F(LastOpenedProjectTest, WithoutStorageFoldersThereIsNone) {
  EXPECT_EQ(last(), std::nullopt);
  EXPECT_EQ(lastOpenedProject({}), std::nullopt);
}

}  // namespace
}  // namespace vemo
