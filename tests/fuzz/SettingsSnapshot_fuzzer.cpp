// Whatever language and dictionary the settings hold, a snapshot can be taken of them. Between two
// of the same nothing has changed, and a dictionary of any size tells of ten words at most.
#include <QTemporaryDir>

#include "Fuzzing.h"
#include "base/Clock.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"
#include "telemetry/SettingsSnapshot.h"

using namespace vemo;
using namespace Qt::Literals::StringLiterals;

namespace {

class StoppedClock : public Clock {
 public:
  WallTime wallTime() const override { return {}; }
  MonotonicTime monotonicTime() const override { return {}; }
  Task<SleepEnd> sleep(Duration, std::stop_token) override { co_return SleepEnd::Elapsed; }
};

SettingsSnapshot snapshotWith(const QByteArray& bytes) {
  static const QTemporaryDir folder;
  static const StoppedClock clock;
  static DebugLog debugLog(clock, folder.path());
  static Settings settings(folder.filePath(u"settings.json"_s), debugLog);
  settings.set(keys::dictationLanguage, QString::fromUtf8(bytes));
  settings.set(keys::customDictionaryEntries, bytes);
  return takeSettingsSnapshot(settings);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  constexpr std::size_t mostDictionaryEvents = 10;
  const QByteArray bytes = bytesOf(data, size);
  const auto before = snapshotWith(bytes.first(bytes.size() / 2));
  const auto after = snapshotWith(bytes.sliced(bytes.size() / 2));
  require(changesBetween(before, before, SessionToken::Present).empty());
  const auto signedOut = changesBetween(before, after, SessionToken::Absent);
  require(signedOut.size() <= 1);
  const auto signedIn = changesBetween(before, after, SessionToken::Present);
  require(signedIn.size() <= signedOut.size() + mostDictionaryEvents);
  return 0;
}
