// Any bytes read as crash notes without harm: no more notes than fit into them, and each becomes an
// event whose properties are bounded and sanitised.
#include "Fuzzing.h"
#include "platform/posix/SignalCrashRecorder.h"
#include "telemetry/TelemetryEvent.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t noteSize = 56;
  const auto notes = vemo::crashNotesIn(vemo::bytesOf(data, size));
  vemo::require(notes.size() <= size / noteSize);
  for (const auto& note : notes) {
    const auto props = vemo::TelemetryEvent::appCrashed(note).props();
    const QString version = props.value(u"appVersion").toString();
    vemo::require(version.size() <= 32 && vemo::sanitisedText(version) == version);
    vemo::require(props.contains(u"signal"));
  }
  return 0;
}
