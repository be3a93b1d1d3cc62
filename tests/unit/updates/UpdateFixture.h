// An UpdateManager on fakes, in a time that the test moves.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/Json.h"
#include "fakes/FakeApplicationSheets.h"
#include "fakes/FakeApplicationWindows.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeUpdater.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"
#include "updates/UpdateManager.h"

namespace vemo {

using namespace std::chrono_literals;

class UpdateFixture : public testing::Test {
 protected:
  UpdateFixture() {
    with.configuration.apiBaseURL = QUrl(u"https://example.com/v1/"_s);
    with.configuration.updateFeedPublicKey = QString(43, u'A') + u'=';
  }

  /// Makes the manager and its updater, and lets the first values arrive.
  UpdateManager& start() {
    manager.emplace(neighbours());
    manager->start();
    mainThread.drain();
    return *manager;
  }

  void beReady() {
    manager->willInstallUpdateOnQuit(item, [this] {
      ++installations;
      if (whenInstalled) whenInstalled();
    });
    mainThread.drain();
    takeEvents();
  }

  /// The events since the last time that this was asked, as "name {props}".
  std::vector<std::string> takeEvents() {
    std::vector<std::string> events;
    for (; m_seenEvents < with.telemetry.queue().size(); ++m_seenEvents) {
      const auto& event = with.telemetry.queue()[m_seenEvents].event;
      events.push_back(event.name().toStdString() + ' ' + compactJson(event.props()).toStdString());
    }
    return events;
  }

  UpdateManager::Neighbours neighbours() {
    return {.mainThread = mainThread,
            .clock = clock,
            .settings = storage.settings,
            .debugLog = storage.debugLog,
            .telemetry = with.telemetry,
            .windows = windows,
            .sheets = sheets,
            .configuration = with.configuration,
            .makeUpdater =
                [this](UpdaterDelegate&, UpdateUserDriverDelegate&) {
                  auto made = std::make_unique<FakeUpdater>();
                  made->canCheck = canCheckAtFirst;
                  made->automaticallyChecks = checksAtFirst;
                  updater = made.get();
                  ++updatersMade;
                  return made;
                },
            .isDictationIdle = [this] { return isIdle; },
            .terminate = [this] { ++terminations; }};
  }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  TelemetryOnFakes with{mainThread, clock, storage};
  FakeApplicationWindows windows;
  FakeApplicationSheets sheets;
  bool canCheckAtFirst = true;
  bool checksAtFirst = true;
  bool isIdle = true;
  int terminations = 0;
  int installations = 0;
  std::function<void()> whenInstalled;
  int updatersMade = 0;
  FakeUpdater* updater = nullptr;
  std::optional<UpdateManager> manager;
  const UpdateItem item{.displayVersion = u"1.4.0"_s,
                        .buildVersion = u"57"_s,
                        .isCritical = false,
                        .notes = u"# New"_s};

 private:
  std::size_t m_seenEvents = 0;
};

}  // namespace vemo
