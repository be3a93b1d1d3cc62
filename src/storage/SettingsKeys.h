// Every key of the settings store, with its type and with what an absent key means.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>

#include "storage/Settings.h"

namespace vemo::keys {

using Bool = SettingKey<bool>;
using String = SettingKey<QString>;
using Data = SettingKey<QByteArray>;
using Date = SettingKey<QDateTime>;

// Dictation.
inline constexpr Bool isEnabled{u"isEnabled"};                    // written as true at first start
inline constexpr Data recentDictations{u"recentDictations"};      // JSON array; absent: empty list
inline constexpr String dictationLanguage{u"dictationLanguage"};  // absent: "en"
// Absent: requests send "transcribe", while the windows show "translit".
inline constexpr String dictateOutputMode{u"dictateOutputMode"};
inline constexpr Bool dictationSounds{u"dictationSounds"};              // absent: true
inline constexpr String dictationPillColor{u"dictationPillColor"};      // absent: "dark"
inline constexpr Bool showLiveDictationText{u"showLiveDictationText"};  // absent: true

// Hotkeys.
inline constexpr String pushToTalkHotkeyChoice{
    u"pushToTalkHotkeyChoice"};                                     // absent: "eitherOption"
inline constexpr String toggleHotkeyChoice{u"toggleHotkeyChoice"};  // absent: "fnGlobe"
inline constexpr Data customPushToTalkShortcutData{u"customPushToTalkShortcutData"};  // JSON
inline constexpr Data customToggleShortcutData{u"customToggleShortcutData"};          // JSON
inline constexpr Bool toggleHotkeyLegacyMigrationDone{u"toggleHotkeyLegacyMigrationDone"};

// The program on the desktop.
inline constexpr Bool showInDock{u"showInDock"};                  // absent: true
inline constexpr Bool launchAtLogin{u"launchAtLogin"};            // absent: true
inline constexpr Bool receiveBetaUpdates{u"receiveBetaUpdates"};  // absent: false

// Text shaping. A switch that is absent or of another type is on.
inline constexpr Bool integrationVSCode{u"integrationVSCode"};
inline constexpr Bool integrationSlack{u"integrationSlack"};
inline constexpr Data customDictionaryEntries{u"customDictionaryEntries"};  // JSON array
inline constexpr Data customShortcutEntries{u"customShortcutEntries"};      // JSON array
inline constexpr String customWorkspacePath{u"customWorkspacePath"};  // absent: found by itself

// Account. The two tokens are the homes of older versions; secrets live in the keyring.
inline constexpr String authEmail{u"authEmail"};
inline constexpr String authDisplayName{u"authDisplayName"};
inline constexpr String authPhotoURL{u"authPhotoURL"};
inline constexpr String authToken{u"authToken"};
inline constexpr String slackApiToken{u"slackApiToken"};
inline constexpr Data slackCachedUsers{u"slackCachedUsers"};
inline constexpr Data slackCachedChannels{u"slackCachedChannels"};
inline constexpr String slackCachedWorkspace{u"slackCachedWorkspace"};

// Telemetry.
inline constexpr Bool shareUsageStatistics{u"shareUsageStatistics"};  // absent: true
inline constexpr String telemetryInstallId{u"telemetryInstallId"};
inline constexpr Date telemetryFirstLaunchAt{u"telemetryFirstLaunchAt"};
inline constexpr String telemetryLastLaunchedBuild{u"telemetryLastLaunchedBuild"};
inline constexpr Bool telemetryFirstDictationSent{u"telemetryFirstDictationSent"};
inline constexpr String telemetryDeviceReport{u"telemetryDeviceReport"};

// Housekeeping.
inline constexpr Bool debugLogTranscriptPurgeDone{u"debugLogTranscriptPurgeDone"};
// A remote switch of streaming that nothing reads; cleared at sign-out.
inline constexpr Bool streamingDictationEnabled{u"streamingDictation.enabled"};
inline constexpr String streamingDictationMaxSessionSec{u"streamingDictation.maxSessionSec"};
inline constexpr Date streamingDictationFetchedAt{u"streamingDictation.fetchedAt"};

}  // namespace vemo::keys
