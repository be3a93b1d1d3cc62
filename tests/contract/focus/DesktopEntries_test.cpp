#include "platform/x11/DesktopEntries.h"

#include <gmock/gmock.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class DesktopEntriesTest : public testing::Test {
 protected:
  void write(const QString& path, const QByteArray& lines) {
    const QString full = folder.filePath(path);
    QDir().mkpath(QFileInfo(full).path());
    QFile file(full);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write("[Desktop Entry]\nType=Application\n" + lines);
  }
  QString identifierFor(const QString& className, const QString& instanceName = {}) {
    const auto entry = entries.findForWindow(className, instanceName);
    return entry ? entry->identifier : u"(none)"_s;
  }

  QTemporaryDir folder;
  DesktopEntries entries{{folder.filePath(u"own"_s), folder.filePath(u"system"_s)}};
};

TEST_F(DesktopEntriesTest, AWindowBelongsToTheEntryThatNamesItsClass) {
  write(u"system/org.example.Editor.desktop"_s, "Name=Editor\nStartupWMClass=Ed-Main\n");
  write(u"system/ed-main.desktop"_s, "Name=Other\n");
  EXPECT_EQ(identifierFor(u"Ed-Main"_s), u"org.example.Editor"_s);
  EXPECT_EQ(identifierFor(u"ed-main"_s), u"org.example.Editor"_s);
}

TEST_F(DesktopEntriesTest, AWindowBelongsToTheEntryWhoseFileIsNamedLikeIt) {
  write(u"system/featherpad.desktop"_s, "Name=FeatherPad\n");
  EXPECT_EQ(identifierFor(u"FeatherPad"_s), u"featherpad"_s);
  EXPECT_EQ(identifierFor(u"unknown"_s, u"featherpad"_s), u"featherpad"_s);
}

TEST_F(DesktopEntriesTest, TheLastPartOfTheFilesNameWillDo) {
  write(u"system/org.xfce.mousepad.desktop"_s, "Name=Mousepad\n");
  EXPECT_EQ(identifierFor(u"Mousepad"_s), u"org.xfce.mousepad"_s);
}

TEST_F(DesktopEntriesTest, TheNameForPeopleIsTheLastResort) {
  write(u"system/some-package.desktop"_s, "Name=Paint It\n");
  EXPECT_EQ(identifierFor(u"paint it"_s), u"some-package"_s);
}

TEST_F(DesktopEntriesTest, AWindowWithoutNamesBelongsToNoEntry) {
  write(u"system/editor.desktop"_s, "Name=\nStartupWMClass=\n");
  EXPECT_EQ(identifierFor(QString(), QString()), u"(none)"_s);
}

TEST_F(DesktopEntriesTest, TheUsersOwnEntryHidesTheSystemsOfTheSameName) {
  write(u"system/editor.desktop"_s, "Name=System\n");
  write(u"own/editor.desktop"_s, "Name=Own\n");
  EXPECT_EQ(entries.find(u"editor"_s)->name, u"Own"_s);
}

TEST_F(DesktopEntriesTest, FoldersBelongToTheIdentifier) {
  write(u"system/vendor/editor.desktop"_s, "Name=Editor\n");
  EXPECT_TRUE(entries.find(u"vendor-editor"_s));
}

TEST_F(DesktopEntriesTest, WhatIsInstalledLaterIsFound) {
  QDir().mkpath(folder.filePath(u"system"_s));
  EXPECT_FALSE(entries.find(u"late"_s));
  write(u"system/late.desktop"_s, "Name=Late\n");
  EXPECT_TRUE(entries.find(u"late"_s));
}

TEST_F(DesktopEntriesTest, FilesThatMakeNoSenseArePassedOver) {
  write(u"system/link.desktop"_s, "Type=Link\nName=Link\n");
  write(u"system/hidden.desktop"_s, "Hidden=true\nName=Hidden\n");
  write(u"system/nameless.desktop"_s, "");
  QFile broken(folder.filePath(u"system/broken.desktop"_s));
  ASSERT_TRUE(broken.open(QIODevice::WriteOnly));
  broken.write(QByteArray("\xFF\xFE\0[[[", 7));
  broken.close();
  QFile::link(folder.filePath(u"nowhere"_s), folder.filePath(u"system/dangling.desktop"_s));
  EXPECT_FALSE(entries.find(u"link"_s));
  EXPECT_FALSE(entries.find(u"hidden"_s));
  EXPECT_FALSE(entries.find(u"broken"_s));
  EXPECT_FALSE(entries.find(u"dangling"_s));
  ASSERT_TRUE(entries.find(u"nameless"_s));
  EXPECT_EQ(entries.find(u"nameless"_s)->name, QString());
}

TEST_F(DesktopEntriesTest, TheNameIsInTheUsersLanguage) {
  qputenv("LANGUAGE", "de");
  write(u"system/editor.desktop"_s, "Name=Text Editor\nName[de]=Textbearbeitung\n");
  EXPECT_EQ(entries.find(u"editor"_s)->name, u"Textbearbeitung"_s);
  qunsetenv("LANGUAGE");
}

}  // namespace
}  // namespace vemo
