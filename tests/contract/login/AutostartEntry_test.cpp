// The autostart entry as a desktop reads it.
#include "platform/xdg/AutostartEntry.h"

#undef signals  // gio names a field so
#include <gio/gdesktopappinfo.h>
#include <gtest/gtest.h>

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class AutostartEntryTest : public testing::Test {
 protected:
  QString entry() const { return ofUser() + u"/brelmox.Vemo.desktop"_s; }
  QString ofUser() const { return home.filePath(u"user"_s); }
  QString ofSystem() const { return home.filePath(u"system"_s); }

  AutostartEntry item(const QString& program = u"/opt/vemo"_s) const {
    return {program, ofUser(), {ofSystem()}};
  }

  static void write(const QString& path, const QByteArray& content) {
    QDir().mkpath(QFileInfo(path).path());
    QFile file(path);
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
  }

  static QByteArray read(const QString& path) {
    QFile file(path);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
  }

  QTemporaryDir home;
};

/// What a desktop runs at login, as it would split the line itself.
QStringList commandOf(const QString& entry) {
  GDesktopAppInfo* const info = g_desktop_app_info_new_from_filename(entry.toUtf8().constData());
  if (!info) return {};
  const QString line = QString::fromUtf8(g_app_info_get_commandline(G_APP_INFO(info)));
  g_object_unref(info);
  gchar** words = nullptr;
  QStringList command;
  if (g_shell_parse_argv(line.toUtf8().constData(), nullptr, &words, nullptr)) {
    for (gchar** word = words; *word; ++word) command.append(QString::fromUtf8(*word));
    g_strfreev(words);
  }
  return command;
}

TEST_F(AutostartEntryTest, StartsTheProgramAndTellsItThatALoginDid) {
  for (const QString& name :
       {u"vemo"_s, u"a folder/vemo"_s, u"$HOME`\"\\/vemo"_s, u"größe/vemo"_s}) {
    const QString program = home.filePath(name);
    write(program, "#!/bin/sh\n");
    QFile(program).setPermissions(QFile::ReadOwner | QFile::ExeOwner);
    ASSERT_TRUE(item(program).registerItem());
    EXPECT_EQ(commandOf(entry()), (QStringList{program, u"--launched-at-login"_s}));
  }
}

TEST_F(AutostartEntryTest, WritesAPercentSignSoThatItIsNoFieldCode) {
  ASSERT_TRUE(item(u"/opt/100%free/vemo"_s).registerItem());
  EXPECT_TRUE(read(entry()).contains("Exec=\"/opt/100%%free/vemo\" "));
}

TEST_F(AutostartEntryTest, ReplacesWhatSomebodyHasChanged) {
  write(entry(), "[Desktop Entry]\nType=Application\nName=Vemo\nExec=/gone\nHidden=true\n");
  ASSERT_TRUE(item().registerItem());
  EXPECT_TRUE(read(entry()).contains("Exec=/opt/vemo --launched-at-login\n"));
  EXPECT_FALSE(read(entry()).contains("Hidden"));
}

TEST_F(AutostartEntryTest, HidesAnEntryThatComesWithTheSystem) {
  write(ofSystem() + u"/brelmox.Vemo.desktop"_s, "[Desktop Entry]\n");
  ASSERT_TRUE(item().unregisterItem());
  EXPECT_TRUE(read(entry()).contains("\nHidden=true\n"));
  ASSERT_TRUE(item().registerItem());
  EXPECT_FALSE(read(entry()).contains("Hidden"));
}

TEST_F(AutostartEntryTest, RemovesALinkThatLeadsNowhere) {
  QDir().mkpath(ofUser());
  ASSERT_TRUE(QFile::link(u"/nowhere/at/all"_s, entry()));
  ASSERT_TRUE(item().unregisterItem());
  EXPECT_FALSE(QFileInfo(entry()).isSymLink());
}

TEST_F(AutostartEntryTest, AnEntryThatTheDesktopHasSwitchedOffIsNotRegistered) {
  const QByteArray on = "[Desktop Entry]\nType=Application\nName=Vemo\nExec=/opt/vemo\n";
  write(entry(), on);
  EXPECT_TRUE(item().isRegistered());
  for (const QByteArray& off :
       {QByteArray("Hidden=true\n"), QByteArray("X-GNOME-Autostart-enabled=false\n")}) {
    write(entry(), on + off);
    EXPECT_FALSE(item().isRegistered()) << off.constData();
  }
}

TEST_F(AutostartEntryTest, TheUsersEntryCountsBeforeTheOneThatComesWithTheSystem) {
  write(ofSystem() + u"/brelmox.Vemo.desktop"_s, "[Desktop Entry]\nName=Vemo\nExec=/opt/vemo\n");
  EXPECT_TRUE(item().isRegistered());
  ASSERT_TRUE(item().unregisterItem());
  EXPECT_FALSE(item().isRegistered());
}

TEST_F(AutostartEntryTest, WhatIsNoEntryStartsNothing) {
  for (const QByteArray& content :
       {QByteArray(), QByteArray("Exec=/opt/vemo\n"), QByteArray("[Desktop Entry]\nName=Vemo\n"),
        QByteArray(100'000, '[')}) {
    write(entry(), content);
    EXPECT_FALSE(item().isRegistered());
  }
}

TEST_F(AutostartEntryTest, AFolderThatCantBeMadeIsAnError) {
  write(ofUser(), "a file where the folder belongs");
  const auto outcome = item().registerItem();
  ASSERT_FALSE(outcome);
  EXPECT_TRUE(outcome.error().contains(ofUser()));
}

TEST_F(AutostartEntryTest, StandsInTheUsersConfigurationFolder) {
  const QByteArray before = qgetenv("XDG_CONFIG_HOME");
  qputenv("XDG_CONFIG_HOME", home.path().toUtf8());
  ASSERT_TRUE(AutostartEntry::standard(u"/opt/vemo"_s).registerItem());
  EXPECT_TRUE(QFile::exists(home.filePath(u"autostart/brelmox.Vemo.desktop"_s)));
  qputenv("XDG_CONFIG_HOME", before);
}

}  // namespace
}  // namespace vemo
