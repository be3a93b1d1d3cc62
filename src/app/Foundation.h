// Time, the main queue, and the program's files: what everything else is made on.
//
// Made first and destroyed last, on the main thread.
#pragma once

#include <functional>
#include <optional>
#include <utility>

#include "app/TerminationSignals.h"
#include "platform/posix/SignalCrashRecorder.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "platform/qt/QtSystemInformation.h"
#include "platform/updater/SelfContainedCopy.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/StandardPlaces.h"

namespace vemo {

/// The file that crash notes are kept in, with its folder made.
QString crashFileInItsFolder();

struct Foundation {
  Foundation(std::optional<SelfContainedCopy> ownCopy, std::function<void()> quit)
      : copy(std::move(ownCopy)), terminationSignals(std::move(quit)) {}

  /// That the program runs from, where its files are the user's own.
  const std::optional<SelfContainedCopy> copy;
  TerminationSignals terminationSignals;
  SystemInformation information = readSystemInformation();
  SignalCrashRecorder crashes{crashFileInItsFolder(), information.applicationBuild.toUtf8()};
  QtMainThread mainThread;
  QtClock clock{mainThread};
  DebugLog debugLog{clock, places::logFolder()};
  Settings settings{places::settingsFile(), debugLog};
};

}  // namespace vemo
