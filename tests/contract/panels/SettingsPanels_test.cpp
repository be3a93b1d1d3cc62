#include "platform/xdg/SettingsPanels.h"

#include <gtest/gtest.h>

#include <signal.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QFile>
#include <QTemporaryDir>
#include <QUrl>

#include "fakes/FakeClock.h"
#include "fakes/QtTestLoop.h"
#include "platform/xdg/LinuxPermissions.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

/// A folder of desktop entries, known from the start of the program on, as GIO asks but once.
class InstalledEntries : public testing::Environment {
 public:
  InstalledEntries() {
    qputenv("XDG_DATA_HOME", m_folder.path().toUtf8());
    qputenv("XDG_DATA_DIRS", m_folder.filePath(u"none"_s).toUtf8());
    qputenv("XDG_CURRENT_DESKTOP", "Plain");
    QDir(m_folder.path()).mkdir(u"applications"_s);
  }

  QString path(const QString& name) const { return m_folder.filePath(name); }

 private:
  QTemporaryDir m_folder;
};

InstalledEntries* const installed = [] {
  auto* const entries = new InstalledEntries;
  testing::AddGlobalTestEnvironment(entries);
  return entries;
}();

class SettingsPanelsTest : public testing::Test, protected QtTestLoop {
 protected:
  ~SettingsPanelsTest() override {
    QDir folder(installed->path(u"applications"_s));
    for (const QString& entry : folder.entryList(QDir::Files)) folder.remove(entry);
    QFile::remove(record());
  }

  static QString record() { return installed->path(u"opened"_s); }

  /// A panel that leaves a record of how it was started.
  static void install(const QString& identifier, const QByteArray& more = {},
                      const QByteArray& program = "/bin/sh") {
    const QByteArray script = record().toUtf8() + ".sh";
    QFile starter(QString::fromUtf8(script));
    ASSERT_TRUE(starter.open(QIODevice::WriteOnly));
    starter.write("name=$1; shift; { echo \"$name $*\"; grep SigBlk /proc/self/status; } > '" +
                  record().toUtf8() + ".part'\nmv '" + record().toUtf8() + ".part' '" +
                  record().toUtf8() + "'\n");
    QFile entry(installed->path(u"applications/"_s + identifier + u".desktop"_s));
    ASSERT_TRUE(entry.open(QIODevice::WriteOnly));
    entry.write("[Desktop Entry]\nType=Application\nName=Panel\nExec=" + program + " " + script +
                " " + identifier.toUtf8() + "\n" + more);
  }

  static QStringList opened() {
    if (!runUntil([] { return QFile::exists(record()); })) return {};
    QFile file(record());
    return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()).split(u'\n')
                                          : QStringList();
  }

  /// GIO learns of a new entry by a notice of the folder, on a thread of its own.
  static bool opens(SettingsPanel panel) {
    bool hasOpened = false;
    return runUntil([&] {
      hasOpened = hasOpened || openSettingsPanel(panel);
      return hasOpened;
    });
  }

  /// Tries until it is that panel that opens, each time to the end.
  static bool comesToOpen(const QString& panel, const std::function<void()>& open) {
    const QDeadlineTimer deadline(std::chrono::seconds(20));
    while (!deadline.hasExpired()) {
      QFile::remove(record());
      open();
      if (runUntil([] { return QFile::exists(record()); }, std::chrono::seconds(1)) &&
          opened().value(0).startsWith(panel))
        return true;
    }
    return false;
  }
};

TEST_F(SettingsPanelsTest, WithoutAPanelNothingOpens) {
  EXPECT_FALSE(openSettingsPanel(SettingsPanel::Sound));
  EXPECT_FALSE(openSettingsPanel(SettingsPanel::Accessibility));
}

TEST_F(SettingsPanelsTest, ThePanelThatIsInstalledOpensAtItsPageForMicrophones) {
  install(u"pavucontrol"_s);
  ASSERT_TRUE(opens(SettingsPanel::Sound));
  EXPECT_EQ(opened().value(0), u"pavucontrol --tab=4"_s);
}

TEST_F(SettingsPanelsTest, EachPermissionHasAPanelOfItsOwn) {
  install(u"xfce4-accessibility-settings"_s);
  ASSERT_TRUE(opens(SettingsPanel::Accessibility));
  EXPECT_EQ(opened().value(0), u"xfce4-accessibility-settings "_s);
  EXPECT_FALSE(openSettingsPanel(SettingsPanel::Sound));
}

TEST_F(SettingsPanelsTest, ThePanelOfTheDesktopThatRunsComesBeforeAnothersAndThatBeforeNone) {
  install(u"gnome-sound-panel"_s, "OnlyShowIn=GNOME;\n");
  ASSERT_TRUE(opens(SettingsPanel::Sound));
  EXPECT_EQ(opened().value(0), u"gnome-sound-panel "_s);
  QFile::remove(record());
  install(u"pavucontrol"_s);
  // The new one is known as soon as it is the one that opens.
  EXPECT_TRUE(comesToOpen(u"pavucontrol"_s, [] { openSettingsPanel(SettingsPanel::Sound); }));
}

TEST_F(SettingsPanelsTest, APanelWhoseProgramIsGoneIsPassedOver) {
  install(u"gnome-sound-panel"_s, {}, "/nonexistent/program");
  install(u"pavucontrol-qt"_s);
  ASSERT_TRUE(opens(SettingsPanel::Sound));
  EXPECT_EQ(opened().value(0), u"pavucontrol-qt --tab=4"_s);
}

TEST_F(SettingsPanelsTest, WhatIsStartedInheritsNoBlockedSignals) {
  install(u"kcm_access"_s);
  sigset_t all;
  sigset_t before;
  sigfillset(&all);
  pthread_sigmask(SIG_SETMASK, &all, &before);
  const bool hasOpened = opens(SettingsPanel::Accessibility);
  pthread_sigmask(SIG_SETMASK, &before, nullptr);
  ASSERT_TRUE(hasOpened);
  EXPECT_EQ(opened().value(1), u"SigBlk:\t0000000000000000"_s);
}

TEST_F(SettingsPanelsTest, TheAddressesOfThePermissionsLeadToTheirPanels) {
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  LinuxPermissions permissions([] { return MicrophoneAuthorization::Denied; }, [] { return false; },
                               clock, mainThread);
  install(u"pavucontrol"_s);
  install(u"kcm_access"_s);
  const auto leadsTo = [&](const QString& pane, const QString& panel) {
    return comesToOpen(panel, [&] {
      permissions.openSettings(
          QUrl(u"x-apple.systempreferences:com.apple.preference.security?"_s + pane));
    });
  };
  EXPECT_TRUE(leadsTo(u"Privacy_Microphone"_s, u"pavucontrol"_s));
  EXPECT_TRUE(leadsTo(u"Privacy_Accessibility"_s, u"kcm_access"_s));
}

}  // namespace
}  // namespace vemo
