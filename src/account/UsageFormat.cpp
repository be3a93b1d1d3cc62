#include "account/UsageFormat.h"

#include <QCoreApplication>
#include <algorithm>

namespace vemo {

namespace {

/// The context of what is translated here.
struct UsageFormat {
  Q_DECLARE_TR_FUNCTIONS(UsageFormat)
};

}  // namespace

QString formatCount(std::int64_t count, const QLocale& locale) {
  const QString text = locale.toString(qlonglong{count});
  return text.isEmpty() ? QString::number(count) : text;
}

QString formatMinutes(double minutes) {
  constexpr double mostThatCount = 1e15;
  if (!(minutes >= 1)) return UsageFormat::tr("under a min");
  const auto whole = static_cast<std::int64_t>(std::min(minutes, mostThatCount));
  if (whole < 60) return UsageFormat::tr("%1 mins").arg(whole);
  const std::int64_t hours = whole / 60;
  const std::int64_t rest = whole % 60;
  return rest < 1 ? UsageFormat::tr("%1 hrs").arg(hours)
                  : UsageFormat::tr("%1h %2m").arg(hours).arg(rest);
}

}  // namespace vemo
