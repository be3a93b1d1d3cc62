#include "account/UsageFormat.h"

#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QString formatCount(std::int64_t count, const QLocale& locale) {
  const QString text = locale.toString(qlonglong{count});
  return text.isEmpty() ? QString::number(count) : text;
}

QString formatMinutes(double minutes) {
  constexpr double mostThatCount = 1e15;
  if (!(minutes >= 1)) return u"under a min"_s;
  const auto whole = static_cast<std::int64_t>(std::min(minutes, mostThatCount));
  if (whole < 60) return u"%1 mins"_s.arg(whole);
  const std::int64_t hours = whole / 60;
  const std::int64_t rest = whole % 60;
  return rest < 1 ? u"%1 hrs"_s.arg(hours) : u"%1h %2m"_s.arg(hours).arg(rest);
}

}  // namespace vemo
