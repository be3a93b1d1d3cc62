#include "platform/xdg/LinuxPermissions.h"

#include <gtest/gtest.h>

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

TEST_F(LinuxPermissionsTest, AnAddressOfAnotherPaneOpensNothing) {
  permissions.openSettings(QUrl(u"x-apple.systempreferences:com.apple.preference.general"_s));
  permissions.openSettings(QUrl());
}

}  // namespace
}  // namespace vemo
