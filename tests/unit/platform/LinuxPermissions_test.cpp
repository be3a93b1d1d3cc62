#include "platform/xdg/LinuxPermissions.h"

#include <gtest/gtest.h>

#include <QDeadlineTimer>
#include <QFile>
#include <QTemporaryDir>
#include <QThread>
#include <optional>

#include "fakes/FakeClock.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class LinuxPermissionsTest : public testing::Test {
 protected:
  std::optional<bool> ask() {
    std::optional<bool> answer;
    permissions.requestMicrophone([&answer](bool isGranted) { answer = isGranted; });
    mainThread.drain();
    return answer;
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  MicrophoneAuthorization authorization = MicrophoneAuthorization::Granted;
  bool isTrusted = true;
  LinuxPermissions permissions{[this] { return authorization; }, [this] { return isTrusted; },
                               clock, mainThread};
};

TEST_F(LinuxPermissionsTest, WhatTheProbesSayIsWhatHolds) {
  EXPECT_EQ(permissions.microphone(), MicrophoneAuthorization::Granted);
  EXPECT_TRUE(permissions.isAccessibilityTrusted());
  authorization = MicrophoneAuthorization::Denied;
  isTrusted = false;
  EXPECT_EQ(permissions.microphone(), MicrophoneAuthorization::Denied);
  EXPECT_FALSE(permissions.promptAccessibility());
}

TEST_F(LinuxPermissionsTest, ADecidedMicrophoneAnswersOnTheNextTurn) {
  EXPECT_EQ(ask(), true);
  authorization = MicrophoneAuthorization::Denied;
  EXPECT_EQ(ask(), false);
}

TEST_F(LinuxPermissionsTest, AnUndecidedMicrophoneAnswersAsSoonAsTheServerHasSpoken) {
  authorization = MicrophoneAuthorization::NotDetermined;
  std::optional<bool> answer;
  permissions.requestMicrophone([&answer](bool isGranted) { answer = isGranted; });
  clock.advance(100ms);
  EXPECT_FALSE(answer);
  authorization = MicrophoneAuthorization::Granted;
  clock.advance(10ms);
  EXPECT_EQ(answer, true);
}

TEST_F(LinuxPermissionsTest, AServerThatNeverSpeaksIsARefusalAfterTwoSecondsAndNoTimerStays) {
  authorization = MicrophoneAuthorization::NotDetermined;
  std::optional<bool> answer;
  permissions.requestMicrophone([&answer](bool isGranted) { answer = isGranted; });
  clock.advance(2s - 1ns);
  EXPECT_FALSE(answer);
  clock.advance(1ns);
  EXPECT_EQ(answer, false);
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

TEST_F(LinuxPermissionsTest, TheFirstInstalledPanelIsOpened) {
  const QTemporaryDir folder;
  const QString record = folder.filePath(u"opened"_s);
  QFile panel(folder.filePath(u"pavucontrol"_s));
  ASSERT_TRUE(panel.open(QIODevice::WriteOnly));
  panel.write("#!/bin/sh\nprintf %s \"$*\" > '" + record.toUtf8() + ".part'\n" + "mv '" +
              record.toUtf8() + ".part' '" + record.toUtf8() + "'\n");
  panel.setPermissions(QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner);
  panel.close();
  const QByteArray path = qgetenv("PATH");
  qputenv("PATH", folder.path().toUtf8() + ":/bin");
  permissions.openSettings(
      QUrl(u"x-apple.systempreferences:com.apple.preference.security?Privacy_Microphone"_s));
  QFile opened(record);
  const QDeadlineTimer limit(std::chrono::seconds(20));
  while (!opened.exists() && !limit.hasExpired()) QThread::yieldCurrentThread();
  qputenv("PATH", path);
  ASSERT_TRUE(opened.open(QIODevice::ReadOnly));
  EXPECT_EQ(opened.readAll(), "--tab=4");
}

}  // namespace
}  // namespace vemo
