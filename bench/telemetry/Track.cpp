// What telling of a dictation costs the dictation: track() for 100,000 events, each by the wall
// clock, and all of them by the processor's, from which other programs take nothing.
//
// Signed out, each event finds the queue full and nobody to send it for; signed in, every twentieth
// starts a batch, which leaves between two calls, as it does in the program. The making of an
// event, with all its properties, is timed apart. Limit: 5 microseconds in the middle and on
// average, for event and track() together. Exit status 1 when it is missed, or when the queue has
// outgrown its bounds.
#include <QCoreApplication>
#include <cstdio>
#include <optional>

#include "Stopwatch.h"
#include "fakes/TelemetryOnFakes.h"
#include "platform/qt/QtClock.h"
#include "platform/qt/QtMainThread.h"

using namespace vemo;

namespace {

constexpr int eventCount = 100'000;
constexpr double limitMicroseconds = 5;
constexpr std::size_t fullQueue = 200;
constexpr int batchSize = 20;

/// The event with the most properties.
TelemetryEvent completedDictation() {
  return TelemetryEvent::dictationCompleted({.seconds = 12.5,
                                             .words = 31,
                                             .language = u"en"_s,
                                             .model = u"saaras:v4"_s,
                                             .outputMode = u"transcribe"_s,
                                             .isChunked = false,
                                             .isStreamed = false,
                                             .latencyMs = 480});
}

struct Times {
  Rounds making;
  Rounds tracking;
  double processor = 0;  ///< milliseconds, for all events
  std::size_t longestQueue = 0;

  double averageMicroseconds() const { return processor * 1e3 / eventCount; }
  double medianMicroseconds() const { return (making.median() + tracking.median()) * 1e3; }
};

enum class Account { SignedOut, SignedIn };

Times trackEvents(Account account) {
  QtMainThread mainThread;
  QtClock clock(mainThread);
  TestStorage storage(clock);
  TelemetryOnFakes with(mainThread, clock, storage);
  if (account == Account::SignedIn)
    with.tokens.write(u"token"_s, QString::fromUtf16(authTokenAccount));

  Times times;
  for (int number = 1; number <= eventCount; ++number) {
    std::optional<TelemetryEvent> event;
    times.processor += processorMillisecondsFor([&] {
      times.making.add(millisecondsFor([&] { event = completedDictation(); }));
      times.tracking.add(millisecondsFor([&] { with.telemetry.track(*std::move(event)); }));
    });
    times.longestQueue = std::max(times.longestQueue, with.telemetry.queue().size());
    if (account == Account::SignedOut || number % batchSize != 0) continue;
    with.http.answer(u"/desktop/events"_s, 202);
    while (!with.telemetry.queue().empty() || with.http.unusedCount() > 0)
      QCoreApplication::processEvents();
    QCoreApplication::processEvents();
  }
  return times;
}

bool report(const char* what, const Times& times, std::size_t longestAllowed) {
  const bool isWithin = times.medianMicroseconds() <= limitMicroseconds &&
                        times.averageMicroseconds() <= limitMicroseconds &&
                        times.longestQueue == longestAllowed;
  std::fprintf(
      stderr,
      "%s: event %.2f us, track %.2f us (medians); both %.2f us of processor time on average "
      "(limit %.0f), the slowest track %.0f us; the queue held %zu at most%s\n",
      what, times.making.median() * 1e3, times.tracking.median() * 1e3, times.averageMicroseconds(),
      limitMicroseconds, times.tracking.worst() * 1e3, times.longestQueue,
      isWithin ? "" : "  MISSED");
  return isWithin;
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const QCoreApplication application(argumentCount, arguments);
  const bool signedOut = report("signed out", trackEvents(Account::SignedOut), fullQueue);
  const bool signedIn = report("signed in", trackEvents(Account::SignedIn), batchSize - 1);
  return signedOut && signedIn ? 0 : 1;
}
