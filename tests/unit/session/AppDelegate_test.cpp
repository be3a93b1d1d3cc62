#include "session/AppDelegate.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "fakes/FakeApplicationWindows.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeCriticalAlert.h"
#include "fakes/FakeScenes.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {
namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

/// One list of everything that happens, so that its order can be read.
class AppDelegateTest : public testing::Test {
 protected:
  void startUp() {
    delegate.emplace(AppDelegate::Neighbours{
        .mainThread = mainThread,
        .debugLog = storage.debugLog,
        .settings = storage.settings,
        .windows = windows,
        .scenes = scenes,
        .alert = alert,
        .location = location,
        .services = {
            .bootstrapDictation = [this] { note("bootstrap"); },
            .startUpdates = [this] { note("updates"); },
            .startTelemetry =
                [this](bool atLogin) { note(atLogin ? "telemetry at login" : "telemetry"); },
            .endTelemetry = [this] { note("end telemetry"); },
            .refreshProfile = [this](std::stop_token) { return refresh(); },
            .terminate = [this] { note("terminate"); }}});
  }

  void launch(const QStringList& arguments = {}) {
    delegate->applicationWillFinishLaunching(arguments);
    delegate->applicationDidFinishLaunching();
  }

  Task<> refresh() {
    note("refresh");
    co_return;
  }

  void note(const std::string& event) {
    takeWindowCalls();
    events.push_back(event);
  }

  void takeWindowCalls() {
    for (const auto& call : windows.takeCalls()) events.push_back(call);
    for (const auto& call : scenes.takeCalls()) events.push_back(call);
  }

  std::vector<std::string> takeEvents() {
    takeWindowCalls();
    return std::exchange(events, {});
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  FakeApplicationWindows windows;
  FakeScenes scenes;
  FakeCriticalAlert alert;
  InstallLocation location{.path = u"/usr/bin/vemo"_s};
  std::vector<std::string> events;
  std::optional<AppDelegate> delegate;
};

TEST_F(AppDelegateTest, TheLaunchRunsInItsOrderAndShowsTheWindowOnTheNextTurn) {
  startUp();
  launch();
  EXPECT_TRUE(storage.settings.contains(keys::debugLogTranscriptPurgeDone));
  EXPECT_TRUE(storage.settings.contains(keys::toggleHotkeyLegacyMigrationDone));
  EXPECT_THAT(takeEvents(),
              ElementsAre("regular", "activate", "bootstrap", "updates", "telemetry"));
  mainThread.drain();
  const auto later = takeEvents();
  EXPECT_THAT(later, testing::UnorderedElementsAre("open main", "activate"));
}

TEST_F(AppDelegateTest, PurgeAndMigrationHaveRunBeforeDictationStarts) {
  startUp();
  bool werePrepared = false;
  const auto observation = storage.settings.changed.observe([&](const QString&) {
    werePrepared = storage.settings.contains(keys::toggleHotkeyLegacyMigrationDone) &&
                   storage.settings.contains(keys::debugLogTranscriptPurgeDone);
    EXPECT_THAT(events, IsEmpty());
  });
  launch();
  EXPECT_TRUE(werePrepared);
}

TEST_F(AppDelegateTest, AMissingShowInDockIsWrittenAsTrue) {
  startUp();
  launch();
  EXPECT_EQ(storage.settings.get(keys::showInDock), true);
}

TEST_F(AppDelegateTest, WithoutADockPlaceTheProgramStillComesForwardAtLaunch) {
  storage.settings.set(keys::showInDock, false);
  startUp();
  launch();
  EXPECT_EQ(storage.settings.get(keys::showInDock), false);
  EXPECT_EQ(windows.activationPolicy(), ActivationPolicy::Accessory);
  EXPECT_THAT(takeEvents(), Contains("activate"));
  mainThread.drain();
  EXPECT_TRUE(scenes.isOpen(Scene::Main));
}

TEST_F(AppDelegateTest, ALaunchAtLoginIsToldToTelemetryAndComesForwardToo) {
  startUp();
  launch({u"--launched-at-login"_s});
  EXPECT_TRUE(delegate->launchedAtLogin());
  EXPECT_THAT(takeEvents(), Contains("telemetry at login"));
  mainThread.drain();
  EXPECT_TRUE(scenes.isOpen(Scene::Main));
}

TEST_F(AppDelegateTest, AnotherArgumentIsNoLaunchAtLogin) {
  startUp();
  launch({u"--launched-at-logins"_s});
  EXPECT_FALSE(delegate->launchedAtLogin());
}

TEST_F(AppDelegateTest, FromAMountedImageNothingStartsAndTheProgramEndsAfterTheAlert) {
  location.path = u"/Volumes/Vemo/vemo"_s;
  storage.settings.set(keys::showInDock, false);
  startUp();
  launch();
  mainThread.drain();
  EXPECT_THAT(takeEvents(), ElementsAre("regular", "activate"));
  ASSERT_TRUE(alert.text());
  EXPECT_EQ(alert.text()->message, u"Move Vemo to your Applications folder"_s);
  EXPECT_EQ(
      alert.text()->informative,
      u"Vemo is running from the disk image it was downloaded in.\n\n"
      u"macOS ties the Accessibility permission Vemo needs to the app's location. Granting it "
      u"here would stop working as soon as you eject this disk image, and the hotkey would "
      u"fail with no visible reason.\n\n"
      u"Drag Vemo to the Applications folder shown beside it, then open it from there."_s);
  EXPECT_EQ(alert.text()->button, u"Quit"_s);
  EXPECT_FALSE(storage.settings.contains(keys::debugLogTranscriptPurgeDone));
  alert.close();
  EXPECT_THAT(takeEvents(), ElementsAre("terminate"));
  delegate->applicationWillTerminate();
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(AppDelegateTest, AnyMountedVolumeCountsAndAFolderOfASimilarNameDoesNot) {
  location.path = u"/Volumes/x"_s;
  startUp();
  launch();
  EXPECT_TRUE(alert.text());
  alert.close();
  takeEvents();
  location.path = u"/Volumes2/x"_s;
  startUp();
  launch();
  EXPECT_FALSE(alert.text());
}

TEST_F(AppDelegateTest, FromARemovableMediumNothingStarts) {
  location = {.path = u"/media/me/stick/vemo"_s, .isOnRemovableMedium = true};
  startUp();
  launch();
  EXPECT_TRUE(alert.text());
  EXPECT_THAT(takeEvents(), ElementsAre("regular", "activate"));
}

TEST_F(AppDelegateTest, WhileLaunchIsRefusedNeitherASecondStartNorAnAddressOpensAnything) {
  location.path = u"/Volumes/Vemo/vemo"_s;
  startUp();
  launch();
  takeEvents();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
  delegate->applicationOpenURLs({QUrl(u"vemo://x"_s)});
  mainThread.drain();
  EXPECT_THAT(takeEvents(), IsEmpty());
}

TEST_F(AppDelegateTest, ASecondLaunchWithTheWindowClosedBringsItBack) {
  startUp();
  launch();
  mainThread.drain();
  scenes.close(Scene::Main);
  takeEvents();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(false));
  EXPECT_THAT(takeEvents(), testing::UnorderedElementsAre("open main", "activate"));
}

TEST_F(AppDelegateTest, ASecondLaunchWithAWindowOpenOnlyActivates) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  EXPECT_TRUE(delegate->applicationShouldHandleReopen(true));
  EXPECT_THAT(takeEvents(), ElementsAre("activate"));
}

TEST_F(AppDelegateTest, AnAddressOfAnotherSchemeIsOnlyLogged) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  delegate->applicationOpenURLs({QUrl(u"https://example.org/x"_s)});
  mainThread.drain();
  EXPECT_TRUE(storage.hasLogged(u"appDelegate: opened URL https://example.org/x"_s));
  EXPECT_TRUE(storage.hasLogged(u"app: onOpenURL https://example.org/x"_s));
  EXPECT_THAT(takeEvents(), IsEmpty());
  EXPECT_EQ(windows.bringForwardCount(), 0);
}

TEST_F(AppDelegateTest, AnAddressOfOursBringsTheWindowsForwardAndReadsTheProfile) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  delegate->applicationOpenURLs({QUrl(u"vemo://done?code=secret"_s)});
  mainThread.drain();
  EXPECT_THAT(takeEvents(), ElementsAre("activate", "refresh"));
  EXPECT_EQ(windows.bringForwardCount(), 1);
  EXPECT_TRUE(storage.hasLogged(u"appDelegate: opened URL vemo://done"_s));
  EXPECT_TRUE(storage.hasLogged(u"app: onOpenURL vemo://done"_s));
  EXPECT_FALSE(storage.hasLogged(u"secret"_s));
}

TEST_F(AppDelegateTest, AnAddressOfOursWithEveryWindowClosedOpensTheMainOne) {
  startUp();
  launch();
  mainThread.drain();
  scenes.close(Scene::Main);
  delegate->applicationOpenURLs({QUrl(u"vemo://done"_s)});
  mainThread.drain();
  EXPECT_TRUE(scenes.isOpen(Scene::Main));
}

TEST_F(AppDelegateTest, AnAddressOfOursWithOnlyTheSettingsOpenOpensNoOtherWindow) {
  startUp();
  launch();
  mainThread.drain();
  scenes.close(Scene::Main);
  scenes.open(Scene::Settings);
  delegate->applicationOpenURLs({QUrl(u"vemo://done"_s)});
  mainThread.drain();
  EXPECT_FALSE(scenes.isOpen(Scene::Main));
  EXPECT_EQ(windows.bringForwardCount(), 1);
}

TEST_F(AppDelegateTest, TheSchemeOfAnAddressCountsInWhateverCaseAndAnAddressWithoutOneDoesNot) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  delegate->applicationOpenURLs({QUrl(u"VEMO://a"_s), QUrl(u"vemo/b"_s)});
  mainThread.drain();
  EXPECT_EQ(std::ranges::count(takeEvents(), "refresh"), 1);
}

TEST_F(AppDelegateTest, OfSeveralAddressesEachIsHandled) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  delegate->applicationOpenURLs({QUrl(u"vemo://a"_s), QUrl(u"vemo://b"_s), QUrl(u"mailto:c"_s)});
  mainThread.drain();
  EXPECT_EQ(std::ranges::count(takeEvents(), "refresh"), 2);
  EXPECT_EQ(windows.bringForwardCount(), 2);
}

TEST_F(AppDelegateTest, TheEndOfTheProgramEndsTelemetrysSession) {
  startUp();
  launch();
  mainThread.drain();
  takeEvents();
  delegate->applicationWillTerminate();
  EXPECT_THAT(takeEvents(), ElementsAre("end telemetry"));
}

}  // namespace
}  // namespace vemo
