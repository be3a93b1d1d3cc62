#include "desktop/PermissionsManager.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeClock.h"
#include "fakes/FakeSystemPermissions.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::IsEmpty;

class PermissionsManagerTest : public testing::Test {
 protected:
  std::vector<std::string> takeEvents() {
    std::vector<std::string> events;
    for (; m_seenEvents < telemetry.queue().size(); ++m_seenEvents) {
      const auto& event = telemetry.queue()[m_seenEvents].event;
      events.push_back(
          (event.name() + u' ' + event.props().value(u"permission").toString()).toStdString());
    }
    return events;
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  TelemetryOnFakes telemetryOnFakes{mainThread, clock, storage};
  Telemetry& telemetry = telemetryOnFakes.telemetry;
  FakeSystemPermissions system;
  std::size_t m_seenEvents = 0;
};

TEST_F(PermissionsManagerTest, BothPermissionsAreReadAtConstruction) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  const PermissionsManager permissions(system, clock, mainThread, telemetry);
  EXPECT_EQ(permissions.micStatus(), MicStatus::Denied);
  EXPECT_TRUE(permissions.axTrusted());
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(PermissionsManagerTest, AnUnknownAuthorizationIsUndeterminedInARefreshAndKeptInAPoll) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.startPolling();
  system.microphoneAuthorization = MicrophoneAuthorization::Unknown;
  clock.advance(2s);
  EXPECT_EQ(permissions.micStatus(), MicStatus::Granted);
  permissions.refresh();
  EXPECT_EQ(permissions.micStatus(), MicStatus::NotDetermined);
}

TEST_F(PermissionsManagerTest, TrustGainedIsSeenWithinTwoSecondsReportedOnceAndCalledBackOnce) {
  system.isTrusted = false;
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  int gained = 0;
  permissions.onAXTrustGained = [&] { ++gained; };
  permissions.startPolling();
  system.isTrusted = true;
  clock.advance(2s - 1ms);
  EXPECT_FALSE(permissions.axTrusted());
  clock.advance(1ms);
  EXPECT_TRUE(permissions.axTrusted());
  clock.advance(20s);
  EXPECT_EQ(gained, 1);
  EXPECT_THAT(takeEvents(), ElementsAre("permission_granted accessibility"));
}

TEST_F(PermissionsManagerTest, TrustLostIsCalledBackOnceAndNotReported) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  int lost = 0;
  permissions.onAXTrustLost = [&] { ++lost; };
  permissions.startPolling();
  system.isTrusted = false;
  clock.advance(20s);
  EXPECT_EQ(lost, 1);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(PermissionsManagerTest, ARevokedMicrophoneIsSeenWithinTwoSecondsInSilence) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.startPolling();
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  clock.advance(2s);
  EXPECT_EQ(permissions.micStatus(), MicStatus::Denied);
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(PermissionsManagerTest, ObserversHearOfChangesAlone) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  int changes = 0;
  const auto observation = permissions.changed.observe([&] { ++changes; });
  permissions.startPolling();
  clock.advance(1min);
  EXPECT_EQ(changes, 0);
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  clock.advance(1min);
  EXPECT_EQ(changes, 1);
}

TEST_F(PermissionsManagerTest, AskingForAnUndeterminedMicrophoneReportsThePromptAndItsAnswer) {
  system.microphoneAuthorization = MicrophoneAuthorization::NotDetermined;
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.requestMicrophone();
  EXPECT_THAT(takeEvents(), ElementsAre("permission_prompted microphone"));
  system.microphoneAuthorization = MicrophoneAuthorization::Granted;
  system.microphoneRequests.at(0)(true);
  EXPECT_THAT(takeEvents(), ElementsAre("permission_granted microphone"));
  EXPECT_EQ(permissions.micStatus(), MicStatus::Granted);
}

TEST_F(PermissionsManagerTest, ARefusedMicrophoneIsReportedAsDenied) {
  system.microphoneAuthorization = MicrophoneAuthorization::NotDetermined;
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.requestMicrophone();
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  system.microphoneRequests.at(0)(false);
  EXPECT_THAT(takeEvents(),
              ElementsAre("permission_prompted microphone", "permission_denied microphone"));
}

TEST_F(PermissionsManagerTest, AskingForADeniedMicrophoneReportsNothingAndRefreshes) {
  system.microphoneAuthorization = MicrophoneAuthorization::Denied;
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.requestMicrophone();
  ASSERT_EQ(system.microphoneRequests.size(), 1u) << "the system is asked in every case";
  system.microphoneAuthorization = MicrophoneAuthorization::Granted;
  system.microphoneRequests[0](true);
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(permissions.micStatus(), MicStatus::Granted);
}

TEST_F(PermissionsManagerTest, ThePromptForTrustIsReportedOnlyWhileUntrusted) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.promptAccessibility();
  EXPECT_THAT(takeEvents(), IsEmpty());
  system.isTrusted = false;
  permissions.promptAccessibility();
  EXPECT_EQ(system.accessibilityPrompts, 2);
  EXPECT_THAT(takeEvents(), ElementsAre("permission_prompted accessibility"));
}

TEST_F(PermissionsManagerTest, AStringThatIsNoUrlOpensNothing) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.openSettings(u"no url"_s);
  permissions.openSettings(u""_s);
  EXPECT_THAT(system.openedPanes, IsEmpty());
  permissions.openSettings(u"x-settings:sound?Privacy"_s);
  EXPECT_THAT(system.openedPanes, ElementsAre(QUrl(u"x-settings:sound?Privacy"_s)));
}

TEST_F(PermissionsManagerTest, ASecondStartAddsNoSecondTimer) {
  PermissionsManager permissions(system, clock, mainThread, telemetry);
  permissions.startPolling();
  permissions.startPolling();
  mainThread.drain();
  EXPECT_EQ(clock.sleeperCount(), 1u);
}

}  // namespace
}  // namespace vemo
