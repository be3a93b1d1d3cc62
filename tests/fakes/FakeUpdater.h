// An updater whose states a test sets; it notes what it was asked for.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "ports/Updater.h"

namespace vemo {

class FakeUpdater : public Updater {
 public:
  bool canCheckForUpdates() const override { return canCheck; }
  std::optional<QDateTime> lastUpdateCheckDate() const override { return lastCheck; }
  bool automaticallyChecksForUpdates() const override { return automaticallyChecks; }
  bool automaticallyDownloadsUpdates() const override { return automaticallyDownloads; }
  void setAutomaticallyChecksForUpdates(bool isOn) override {
    automaticallyChecks = isOn;
    changed.notify();
  }
  void setAutomaticallyDownloadsUpdates(bool isOn) override {
    automaticallyDownloads = isOn;
    changed.notify();
  }
  void checkForUpdates() override { note("check"); }
  void checkForUpdatesInBackground() override { note("check in background"); }

  /// What it was asked for since the last time that this was asked.
  std::vector<std::string> takeCalls() { return std::exchange(m_calls, {}); }

  bool canCheck = true;
  std::optional<QDateTime> lastCheck;
  bool automaticallyChecks = true;
  bool automaticallyDownloads = true;
  std::function<void()> whenAsked;  ///< called at each check

 private:
  void note(const char* call) {
    m_calls.emplace_back(call);
    if (whenAsked) whenAsked();
  }

  std::vector<std::string> m_calls;
};

}  // namespace vemo
