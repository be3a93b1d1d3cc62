// The settings whose changes are events, as they stood at one moment.
//
// Main thread, like the settings. Nothing here fails.
#pragma once

#include <QString>
#include <map>
#include <vector>

#include "storage/Settings.h"
#include "telemetry/TelemetryEvent.h"

namespace vemo {

/// The plain text of each watched setting that has a value, by its name, and "dictionaryCount".
using SettingsSnapshot = std::map<QString, QString>;

SettingsSnapshot takeSettingsSnapshot(const Settings& settings);

/// Whether a change of this setting can change a snapshot.
bool isInSettingsSnapshot(const QString& settingName);

enum class SessionToken { Absent, Present };

/// One event for each setting that has a value in both snapshots and another one in each. Words of
/// the dictionary come and go as one event each, ten at most, and only with a token.
std::vector<TelemetryEvent> changesBetween(const SettingsSnapshot& before,
                                           const SettingsSnapshot& after, SessionToken token);

}  // namespace vemo
