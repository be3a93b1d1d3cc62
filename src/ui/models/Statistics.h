// The figures that are worked out from an account's usage, and how they read. Any thread.
#pragma once

#include <QLocale>
#include <QString>
#include <cstdint>
#include <optional>

#include "account/AccountRecords.h"

namespace vemo {

/// What the figures are made of; what the account doesn't tell counts as 0.
struct UsageTotals {
  std::int64_t words = 0;
  double minutes = 0;
  std::int64_t utterances = 0;

  static UsageTotals of(const std::optional<UserConsumption>& consumption);
};

/// Words per minute; 0 as long as there is too little to tell, or more than anybody speaks.
int dictationSpeed(const UsageTotals& totals);

/// What typing the words would have taken longer than saying them.
double minutesSaved(const UsageTotals& totals);

/// A number and its unit, which a card sets apart.
struct Measure {
  QString number;
  QString unit;

  friend bool operator==(const Measure&, const Measure&) = default;
};

/// "12 secs", "1.5 mins".
Measure voiceAudio(double minutes, const QLocale& locale);

/// "3x Faster" than typing; empty while there is no speed.
QString speedComparison(int wordsPerMinute);

/// What the speed means, or how to come by one.
QString speedLine(int wordsPerMinute);

}  // namespace vemo
