// Every event that the program can report, with its properties and its class: what isn't made here
// can't be tracked.
//
// No event carries text that the user said or typed. Reasons, modes and labels are literals of the
// code that reports them, hence their type. Any thread; nothing here fails.
#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <optional>

#include "ports/CrashDiagnostics.h"

namespace vemo {

enum class EventClass {
  Optional,   ///< usage: only while the user shares usage statistics
  Essential,  ///< failures, crashes, updates: always
};

enum class Permission { Microphone, Accessibility };

/// What dictation_completed tells.
struct CompletedDictation {
  double seconds = 0;  ///< length of the recording
  std::int64_t words = 0;
  QString language;    ///< setting dictationLanguage
  QString model;       ///< of that language's record
  QString outputMode;  ///< setting dictateOutputMode
  bool isChunked = false;
  bool isStreamed = false;
  std::int64_t latencyMs = 0;  ///< from the stop of the recording
};

class TelemetryEvent {
 public:
  using Literal = const char16_t*;

  // The program.
  static TelemetryEvent appLaunched(bool launchedAtLogin);
  static TelemetryEvent sessionEnded(std::int64_t seconds);
  static TelemetryEvent appCrashed(const CrashDiagnostic& diagnostic);

  // Dictation.
  static TelemetryEvent dictationStarted(const QString& mode, const QString& shortcut);
  static TelemetryEvent dictationCompleted(const CompletedDictation& dictation);
  static TelemetryEvent firstDictation(std::int64_t secondsSinceFirstLaunch);
  static TelemetryEvent dictationTooShort(double seconds, bool isChunked);
  static TelemetryEvent dictationDisabled(std::optional<double> seconds);
  static TelemetryEvent dictationFailed(Literal reason, std::optional<bool> isChunked);
  static TelemetryEvent dictationStreamFallback(Literal reason);
  static TelemetryEvent textInsertionFailed(Literal reason);
  static TelemetryEvent transcriptCopied();

  // Requests. `error` is the number of a UrlError, absent for a failure of another kind.
  static TelemetryEvent requestFailed(const QString& endpoint, std::int64_t ms, int status);
  static TelemetryEvent requestBroken(const QString& endpoint, std::int64_t ms,
                                      std::optional<int> error);
  static TelemetryEvent requestSlow(const QString& endpoint, std::int64_t ms);

  // Account.
  static TelemetryEvent signInStarted();
  static TelemetryEvent signInCompleted();
  static TelemetryEvent signInFailed(Literal reason);
  static TelemetryEvent signInRefused(int status);

  // Permissions.
  static TelemetryEvent permissionPrompted(Permission permission);
  static TelemetryEvent permissionGranted(Permission permission);
  static TelemetryEvent microphoneDenied();

  // Windows and settings. A tab of the settings window is named with "settings_" before it.
  static TelemetryEvent tabOpened(const QString& tab);
  static TelemetryEvent languageChanged(const QString& from, const QString& to);
  static TelemetryEvent outputModeChanged(const QString& from, const QString& to);
  static TelemetryEvent shortcutChanged(Literal action, const QString& shortcut);
  static TelemetryEvent settingChanged(const QString& setting);
  static TelemetryEvent dictionaryWordAdded();
  static TelemetryEvent dictionaryWordRemoved();

  // Updates. Versions and error domains come from outside and are sanitised.
  static TelemetryEvent updateInstalled(const QString& version, std::int64_t build);
  static TelemetryEvent updateCheckManual();
  static TelemetryEvent updateOffered(const QString& version, std::int64_t build, bool isCritical);
  static TelemetryEvent updateDownloaded(const QString& version);
  static TelemetryEvent updateSkipped(const QString& version);
  static TelemetryEvent updatePostponed(const QString& version);
  static TelemetryEvent updateRestartClicked(const QString& version);
  static TelemetryEvent updateFailed(const QString& errorDomain, std::int64_t code);

  const QString& name() const { return m_name; }
  const QJsonObject& props() const { return m_props; }
  EventClass eventClass() const { return m_eventClass; }

 private:
  TelemetryEvent(Literal name, QJsonObject props, EventClass eventClass);
  static TelemetryEvent optional(Literal name, QJsonObject props = {});
  static TelemetryEvent essential(Literal name, QJsonObject props = {});

  QString m_name;
  QJsonObject m_props;
  EventClass m_eventClass;
};

/// Fit for a property: every Unicode scalar that is neither a letter, mark or number nor one of
/// "._:+,-/" is "_", and no more than the first 64 characters stay.
QString sanitisedText(const QString& text);

}  // namespace vemo
