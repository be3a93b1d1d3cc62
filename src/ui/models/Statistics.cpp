#include "ui/models/Statistics.h"

#include <QCoreApplication>
#include <algorithm>
#include <cmath>

namespace vemo {

namespace {

constexpr int typingWordsPerMinute = 40;
constexpr double leastMinutesForASpeed = 0.2;
constexpr double fastestRealSpeed = 300;

/// The context of what is translated here.
struct Statistics {
  Q_DECLARE_TR_FUNCTIONS(Statistics)
};

}  // namespace

UsageTotals UsageTotals::of(const std::optional<UserConsumption>& consumption) {
  if (!consumption) return {};
  return {.words = consumption->totalWordsTranscribed.value_or(0),
          .minutes = consumption->totalMinutesTranscribed.value_or(0),
          .utterances = consumption->totalUtterances.value_or(0)};
}

int dictationSpeed(const UsageTotals& totals) {
  if (!(totals.minutes >= leastMinutesForASpeed)) return 0;
  const double speed = std::round(static_cast<double>(totals.words) / totals.minutes);
  return speed > 0 && speed <= fastestRealSpeed ? static_cast<int>(speed) : 0;
}

double minutesSaved(const UsageTotals& totals) {
  return std::max(0.0, static_cast<double>(totals.words) / typingWordsPerMinute - totals.minutes);
}

Measure voiceAudio(double minutes, const QLocale& locale) {
  const double heard = std::max(0.0, minutes);
  if (heard < 1) return {locale.toString(static_cast<int>(heard * 60)), Statistics::tr("secs")};
  return {locale.toString(heard, 'f', 1), Statistics::tr("mins")};
}

QString speedComparison(int wordsPerMinute) {
  if (wordsPerMinute < 1) return {};
  return Statistics::tr("%1x Faster").arg(std::max(1, wordsPerMinute / typingWordsPerMinute));
}

QString speedLine(int wordsPerMinute) {
  if (wordsPerMinute == 0)
    return Statistics::tr(
        "Dictate for at least 15 seconds to calculate your live Words Per Minute");
  return Statistics::tr(
             "You dictate at %1 words per minute, significantly faster than the 40 WPM average "
             "typing speed.")
      .arg(wordsPerMinute);
}

}  // namespace vemo
