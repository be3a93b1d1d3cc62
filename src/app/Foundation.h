// Time, the main queue, and the program's files: what everything else is made on.
//
// Made first and destroyed last, on the main thread.
#pragma once

#include <functional>
#include <utility>

#include "app/TerminationSignals.h"
#include "platform/posix/SignalCrashRecorder.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"
#include "platform/qt/QtSystemInformation.h"
#include "storage/DebugLog.h"
#include "storage/Settings.h"
#include "storage/StandardPlaces.h"

namespace vemo {

/// The file that crash notes are kept in, with its folder made.
QString crashFileInItsFolder();

struct Foundation {
  explicit Foundation(std::function<void()> quit) : terminationSignals(std::move(quit)) {}

  TerminationSignals terminationSignals;
  SystemInformation information = readSystemInformation();
  SignalCrashRecorder crashes{crashFileInItsFolder(), information.applicationBuild.toUtf8()};
  QtMainThread mainThread;
  QtClock clock{mainThread};
  DebugLog debugLog{clock, places::logFolder()};
  Settings settings{places::settingsFile(), debugLog};
};

}  // namespace vemo
