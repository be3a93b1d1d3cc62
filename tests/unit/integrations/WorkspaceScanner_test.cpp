#include "integrations/WorkspaceScanner.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/fsuid.h>

#include <algorithm>

#include "TestTree.h"

namespace vemo {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

class WorkspaceScannerTest : public testing::Test {
 protected:
  static QStringList relativePathsIn(const WorkspaceFiles& files) {
    QStringList paths;
    for (std::size_t place = 0; place < files.size(); ++place)
      paths.append(files[place].relativePath);
    return paths;
  }

  QStringList scan(const QString& below = {}) const {
    return relativePathsIn(
        scanWorkspace(below.isEmpty() ? tree.root() : tree.path(below), std::stop_token()));
  }

  TestTree tree;
};

TEST_F(WorkspaceScannerTest, FindsTheFilesOfAllFolders) {
  tree.write("a.c");
  tree.write("one/b.c");
  tree.write("one/two/c.c");
  tree.write("three/d.c");
  tree.makeFolder("empty");
  EXPECT_THAT(scan(),
              UnorderedElementsAre(u"a.c"_s, u"one/b.c"_s, u"one/two/c.c"_s, u"three/d.c"_s));
}

TEST_F(WorkspaceScannerTest, AFoldersOwnFilesComeBeforeThoseOfItsFolders) {
  tree.write("one/two/deep.c");
  tree.write("one/own.c");
  EXPECT_THAT(scan(), ElementsAre(u"one/own.c"_s, u"one/two/deep.c"_s));
}

TEST_F(WorkspaceScannerTest, TwoScansOfOneTreeHaveOneOrder) {
  for (int i = 0; i < 50; ++i)
    tree.write("f" + QByteArray::number(i % 7) + '/' + QByteArray::number(i));
  EXPECT_EQ(scan(), scan());
}

TEST_F(WorkspaceScannerTest, HiddenFilesAndFoldersAreLeftOut) {
  tree.write(".env");
  tree.write(".config/a.c");
  tree.write("kept.c");
  EXPECT_THAT(scan(), ElementsAre(u"kept.c"_s));
}

TEST_F(WorkspaceScannerTest, AHiddenRootIsRead) {
  tree.write(".dotfiles/a.c");
  EXPECT_THAT(scan(u".dotfiles"_s), ElementsAre(u"a.c"_s));
}

TEST_F(WorkspaceScannerTest, WhatLiesWithinAPackageIsLeftOut) {
  tree.write("Some.app/Contents/a.c");
  tree.write("Vemo.XCODEPROJ/project.pbxproj");
  tree.write("app/kept.c");
  tree.write("real.app");
  EXPECT_THAT(scan(), UnorderedElementsAre(u"app/kept.c"_s, u"real.app"_s));
}

TEST_F(WorkspaceScannerTest, EachIgnoredDirectoryIsLeftOutAtAnyDepthAndInAnyCase) {
  for (const QByteArray name :
       {"node_modules", "DerivedData", "build", "dist", "venv", "TARGET", "Pods", "tmp"}) {
    tree.write(name + "/a.c");
    tree.write("deep/er/" + name + "/in/a.c");
    tree.write("x" + name + "/kept.c");
  }
  EXPECT_THAT(scan(), testing::SizeIs(8));
}

TEST_F(WorkspaceScannerTest, AFileCalledLikeAnIgnoredDirectoryIsLeftOutToo) {
  tree.write("build");
  tree.write("Target");
  tree.write("build.sh");
  EXPECT_THAT(scan(), ElementsAre(u"build.sh"_s));
}

TEST_F(WorkspaceScannerTest, ARootBelowAFolderCalledBuildHasNoFiles) {
  for (const auto& above : {u"build"_s, u"Build/x"_s, u".git"_s, u".IDEA/x"_s, u"x/tmp/y"_s}) {
    tree.write(above.toUtf8() + "/project/a.c");
    EXPECT_THAT(scan(above + u"/project"_s), IsEmpty()) << above.toStdString();
    EXPECT_THAT(scan(above), IsEmpty()) << above.toStdString();
  }
  tree.write("builds/project/a.c");
  EXPECT_THAT(scan(u"builds/project"_s), ElementsAre(u"a.c"_s));
}

TEST_F(WorkspaceScannerTest, SymbolicLinksAreNeitherListedNorFollowed) {
  tree.write("real/a.c");
  tree.link("real/a.c", "link.c");
  tree.link("real", "linked");
  tree.link("nowhere", "broken.c");
  EXPECT_THAT(scan(), ElementsAre(u"real/a.c"_s));
}

TEST_F(WorkspaceScannerTest, LoopsOfLinksEnd) {
  tree.write("one/a.c");
  tree.link(".", "one/self");
  tree.link("../..", "one/up");
  tree.link("b", "one/c");
  tree.link("c", "one/b");
  EXPECT_THAT(scan(), ElementsAre(u"one/a.c"_s));
}

TEST_F(WorkspaceScannerTest, ARootThatIsALinkIsFollowed) {
  tree.write("real/a.c");
  tree.link("real", "link");
  const auto files = scanWorkspace(tree.path(u"link"_s), {});
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].fullPath, tree.path(u"link/a.c"_s));
}

TEST_F(WorkspaceScannerTest, NamesThatAreNotUtf8AreLeftOut) {
  tree.write("caf\xE9.c");
  tree.write("caf\xE9s/a.c");
  tree.write("café.c");
  EXPECT_THAT(scan(), ElementsAre(u"café.c"_s));
}

TEST_F(WorkspaceScannerTest, NamesMayHoldLineEndsAndControlCharacters) {
  tree.write("two\nlines.c");
  tree.write("bell\a\\ \"'.c");
  EXPECT_THAT(scan(), UnorderedElementsAre(u"two\nlines.c"_s, u"bell\a\\ \"'.c"_s));
}

TEST_F(WorkspaceScannerTest, PipesAndSocketsAreNoFilesAndNobodyWaitsForThem) {
  ASSERT_EQ(::mkfifo(tree.nativePath("pipe.c").constData(), 0600), 0);
  tree.write("a.c");
  EXPECT_THAT(scan(), ElementsAre(u"a.c"_s));
  EXPECT_THAT(scan(u"pipe.c"_s), IsEmpty());
}

/// While it lives, this thread reads files as nobody in particular: root itself may read anything.
struct ReadingAsNobody {
  ReadingAsNobody() : previous(::setfsuid(65534)) {}
  ~ReadingAsNobody() { ::setfsuid(static_cast<uid_t>(previous)); }
  ReadingAsNobody(const ReadingAsNobody&) = delete;
  ReadingAsNobody& operator=(const ReadingAsNobody&) = delete;
  const int previous;
};

TEST_F(WorkspaceScannerTest, AFolderThatCannotBeReadIsPassedOver) {
  tree.write("closed/a.c");
  tree.write("open/b.c");
  ::chmod(tree.nativePath({}).constData(), 0755);
  ::chmod(tree.nativePath("open").constData(), 0755);
  ::chmod(tree.nativePath("closed").constData(), 0);
  {
    const ReadingAsNobody asNobody;
    EXPECT_THAT(scan(), ElementsAre(u"open/b.c"_s));
  }
  ::chmod(tree.nativePath("closed").constData(), 0700);
}

TEST_F(WorkspaceScannerTest, ARootThatIsMissingOrAFileHasNoFiles) {
  tree.write("a.c");
  EXPECT_THAT(scan(u"a.c"_s), IsEmpty());
  EXPECT_THAT(scan(u"missing"_s), IsEmpty());
  EXPECT_EQ(scanWorkspace({}, {}).size(), 0U);
}

TEST_F(WorkspaceScannerTest, SlashesAtTheEndOfTheRootAreNoFolders) {
  tree.write("a.c");
  const auto files = scanWorkspace(tree.root() + u"//"_s, {});
  ASSERT_EQ(files.size(), 1U);
  EXPECT_EQ(files[0].fullPath, tree.path(u"a.c"_s));
}

TEST_F(WorkspaceScannerTest, FoldersTooDeepForThePathsOfTheSystemAreLeftOut) {
  const QByteArray name(200, 'd');
  QByteArray deep = tree.nativePath({});
  int folder = ::open(deep.constData(), O_RDONLY | O_DIRECTORY);
  for (int depth = 0; depth < 40; ++depth) {
    ASSERT_EQ(::mkdirat(folder, name.constData(), 0700), 0);
    const int next = ::openat(folder, name.constData(), O_RDONLY | O_DIRECTORY);
    ::close(folder);
    folder = next;
    ::close(::openat(folder, "a.c", O_WRONLY | O_CREAT, 0600));
  }
  ::close(folder);
  const auto count = scan().size();
  EXPECT_GE(count, 19);
  EXPECT_LT(count, 40);
}

TEST_F(WorkspaceScannerTest, AHundredThousandFilesAreAllFound) {
  for (int i = 0; i < 1000; ++i) {
    const QByteArray folder =
        "d" + QByteArray::number(i / 100) + "/e" + QByteArray::number(i % 100);
    tree.makeFolder(folder);
    const int descriptor = ::open(tree.nativePath(folder).constData(), O_RDONLY | O_DIRECTORY);
    for (int j = 0; j < 100; ++j) {
      const QByteArray name = "file" + QByteArray::number(100 * i + j) + ".ts";
      ::close(::openat(descriptor, name.constData(), O_WRONLY | O_CREAT, 0600));
    }
    ::close(descriptor);
  }
  const auto files = scanWorkspace(tree.root(), {});
  ASSERT_EQ(files.size(), 100'000U);
  const auto place = files.find(u"file99999"_s, u"ts"_s);
  ASSERT_TRUE(place.has_value());
  EXPECT_EQ(files[*place].relativePath, u"d9/e99/file99999.ts"_s);
  EXPECT_LT(files.memoryUsed(), 100'000U * 120U);
}

TEST_F(WorkspaceScannerTest, AStopEndsAScanEarly) {
  tree.write("one/a.c");
  std::stop_source stop;
  stop.request_stop();
  EXPECT_EQ(scanWorkspace(tree.root(), stop.get_token()).size(), 0U);
}

}  // namespace
}  // namespace vemo
