// How counters of use are shown. Any thread.
#pragma once

#include <QLocale>
#include <QString>
#include <cstdint>

namespace vemo {

/// The number with the locale's digits and separators: "1,234,567" or "1.234.567".
QString formatCount(std::int64_t count, const QLocale& locale = QLocale::system());

/// "under a min", "12 mins", "3 hrs", "3h 20m". What isn't a whole minute is cut off.
QString formatMinutes(double minutes);

}  // namespace vemo
