// Collects what happens in the program as events, and delivers them in batches; sends the ping of
// the installation and the report on the device; tells of crashes.
//
// Essential events are always collected, the others only while the user shares usage statistics.
// Events wait in memory, the newest 200 of them, until somebody is signed in. track() does no input
// or output: it runs on the dictation path. Nothing wakes the program for an empty queue.
//
// There is one, made in the composition root. Main thread only; callers on other threads post to
// it. Nothing here fails towards its caller, and no failure is shown or logged.
#pragma once

#include <QString>
#include <deque>
#include <optional>
#include <stop_token>
#include <vector>

#include "base/Clock.h"
#include "base/Notifier.h"
#include "base/TaskScope.h"
#include "ports/HttpSession.h"
#include "telemetry/SettingsSnapshot.h"
#include "telemetry/TelemetryEvent.h"
#include "telemetry/TelemetryRequests.h"

namespace vemo {

class LastRequest;
class SecureTokenStore;

enum class Urgency {
  IfDue,   ///< at most once a day, unless something has changed
  Forced,  ///< now
};

class Telemetry {
 public:
  /// What it works with; all of it outlives it.
  struct Neighbours {
    Clock& clock;
    MainThread& mainThread;
    Settings& settings;
    SecureTokenStore& tokens;
    HttpSession& session;
    LastRequest& lastRequest;
    const DeploymentConfiguration& configuration;
    const SystemInformation& system;
    const DeviceInformation& device;
    CrashDiagnostics& crashes;
  };

  explicit Telemetry(const Neighbours& neighbours);

  void track(TelemetryEvent event);

  /// Once, at launch: tells of crashes, an update and the launch, sends both reports, and begins to
  /// watch the settings and to deliver every 60 seconds.
  void start(bool launchedAtLogin);

  /// Once, when the program ends: waits at most 2.0 s for one last batch.
  void endSession();

  /// Sends one batch, when somebody is signed in and none is under way.
  void flush();

  /// Before the account changes: sends one batch and drops the rest, so that no event of one
  /// account goes out under another's token.
  void drainForAccountChange();

  /// Once in the life of an installation, after a dictation has been delivered.
  void recordFirstDictation();

  /// After each attempt of a request. `status` is absent when no HTTP status came.
  void reportRequestResult(const QString& endpoint, std::optional<int> status,
                           Clock::MonotonicTime startedAt, const std::optional<HttpError>& error);

  /// After an answer that can't be understood.
  void reportUnreadableAnswer(const QString& endpoint, Clock::MonotonicTime startedAt);

  /// The user's switch. Off also drops what already waits and isn't essential.
  void setShareUsageStatistics(bool enabled);

  void sendInstallReport();
  void sendDeviceReport(Urgency urgency);

  /// The events that wait, oldest first.
  const std::deque<EventRecord>& queue() const { return m_queue; }

  /// Identifies this installation; made at first start.
  QString installId() const;

 private:
  QString sessionToken() const;
  bool sharesUsage() const;

  bool isWelcome(const TelemetryEvent& event) const;
  void enqueue(TelemetryEvent event);
  std::int64_t millisecondsSince(Clock::MonotonicTime startedAt) const;
  std::vector<EventRecord> takeBatch();
  void restore(std::vector<EventRecord> batch);
  void dropOldest();
  void armFlushTimer();
  Task<> flushAtNextTick(std::stop_token stop);
  Task<> deliver(std::vector<EventRecord> batch, QString token, std::stop_token stop);
  Task<> send(HttpRequest request, std::stop_token stop);
  Task<> deliverDeviceReport(HttpRequest request, QString marker, std::stop_token stop);

  void trackUpdate();
  void trackCrashes(const CrashDiagnostics::Payload& payload);
  void watchSettings();
  Task<> compareSettings(std::stop_token stop);

  Neighbours m_with;
  TelemetryRequests m_requests;
  const Clock::MonotonicTime m_sessionStart;
  std::deque<EventRecord> m_queue;
  bool m_isFlushing = false;
  int m_accountChanges = 0;  ///< a batch of an earlier account doesn't come back
  std::optional<Clock::MonotonicTime> m_startedAt;  ///< the flush timer ticks each minute from here
  QString m_markerUnderWay;  ///< of the device report that waits for its answer
  SettingsSnapshot m_settingsSnapshot;
  Observation m_settingsObservation;
  StartedTask m_flushTimer;
  StartedTask m_settingsComparison;
  TaskScope m_tasks;  ///< ends first: its tasks use all of the above
};

}  // namespace vemo
