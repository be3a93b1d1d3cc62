// Telemetry on fakes, with shorthands for what tests of it ask.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QJsonArray>
#include <vector>

#include "base/Json.h"
#include "fakes/FakeClock.h"
#include "fakes/TelemetryOnFakes.h"
#include "fakes/TestStorage.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace std::chrono_literals;

inline const QString eventsPath = u"/desktop/events"_s;
inline const QString installPath = u"/telemetry/install"_s;
inline const QString devicePath = u"/desktop/device"_s;

class TelemetryFixture : public testing::Test {
 protected:
  void signIn() { with.tokens.write(u"token"_s, QString::fromUtf16(authTokenAccount)); }
  void signOut() { with.tokens.remove(QString::fromUtf16(authTokenAccount)); }

  /// Events that can be told apart by their number, which is an endpoint. Essential.
  void trackNumbered(int first, int last) {
    for (int number = first; number <= last; ++number) telemetry.track(numbered(number));
  }
  static TelemetryEvent numbered(int number) {
    return TelemetryEvent::requestSlow(QString::number(number), 5000);
  }

  QStringList queuedNames() const {
    QStringList names;
    for (const auto& record : telemetry.queue()) names.append(record.event.name());
    return names;
  }

  /// The numbers of the first and the last event in the queue.
  int firstNumber() const { return numberOf(telemetry.queue().front()); }
  int lastNumber() const { return numberOf(telemetry.queue().back()); }

  const TelemetryEvent& queued(std::size_t index) const { return telemetry.queue()[index].event; }

  std::vector<HttpRequest> requestsTo(const QString& path) const {
    std::vector<HttpRequest> requests;
    for (const auto& request : with.http.requests())
      if (request.url.path() == path) requests.push_back(request);
    return requests;
  }

  static QJsonArray eventsIn(const HttpRequest& request) {
    return parseJsonObject(request.body)->value(u"events").toArray();
  }

  /// A batch may go out, and its answer may come.
  void settle() { clock.advance(0s); }

  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  TestStorage storage{clock};
  Settings& settings = storage.settings;
  TelemetryOnFakes with{mainThread, clock, storage};
  Telemetry& telemetry = with.telemetry;

 private:
  static int numberOf(const EventRecord& record) {
    return record.event.props().value(u"endpoint").toString().toInt();
  }
};

}  // namespace vemo
