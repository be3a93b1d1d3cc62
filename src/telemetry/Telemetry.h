// Turns things that happen in the program into named events.
//
// Essential events (failures, crashes, updates) are always collected, the others only while the
// user shares usage statistics. Events wait in memory, the newest 200 of them; they carry no text
// that the user said or typed. track() does no input or output: it runs on the dictation path.
//
// Main thread only. Nothing here fails.
#pragma once

#include <QJsonObject>
#include <QString>
#include <chrono>
#include <deque>
#include <optional>

#include "base/Clock.h"
#include "ports/HttpSession.h"

namespace vemo {

class Settings;

enum class EventClass { Optional, Essential };

struct TelemetryEvent {
  QString name;
  QJsonObject props;
  QString at;  ///< ISO 8601, UTC, whole seconds
  EventClass eventClass = EventClass::Optional;
};

class Telemetry {
 public:
  Telemetry(const Clock& clock, Settings& settings);

  void track(const QString& name, const QJsonObject& props = {},
             EventClass eventClass = EventClass::Optional);

  /// Once in the life of an installation, after a dictation has been delivered.
  void recordFirstDictation();

  /// After each attempt of a request. `status` is absent when no HTTP status came.
  void reportRequestResult(const QString& endpoint, std::optional<int> status,
                           Clock::MonotonicTime startedAt, const std::optional<HttpError>& error);

  /// The events that wait, oldest first.
  const std::deque<TelemetryEvent>& queue() const { return m_queue; }

  /// Identifies this installation; made at first start.
  QString installId() const;

 private:
  bool sharesUsage() const;

  const Clock& m_clock;
  Settings& m_settings;
  std::deque<TelemetryEvent> m_queue;
};

}  // namespace vemo
