#include "ui/models/RelativeTime.h"

#include <QCoreApplication>
#include <chrono>

namespace vemo {

using namespace std::chrono_literals;

namespace {

QString words(const char* text, std::int64_t number) {
  return QCoreApplication::translate("RelativeTime", text).arg(number);
}

}  // namespace

QString relativeTime(Clock::Duration age) {
  if (age < 1min) return QCoreApplication::translate("RelativeTime", "Just now");
  if (age < 1h) return words(QT_TRANSLATE_NOOP("RelativeTime", "%1m ago"), age / 1min);
  if (age < 24h) return words(QT_TRANSLATE_NOOP("RelativeTime", "%1h ago"), age / 1h);
  return words(QT_TRANSLATE_NOOP("RelativeTime", "%1d ago"), age / 24h);
}

Clock::Duration untilRelativeTimeChanges(Clock::Duration age) {
  if (age < 1min) return 1min - age;
  const Clock::Duration unit = age < 1h ? Clock::Duration(1min) : age < 24h ? 1h : 24h;
  return unit - age % unit;
}

}  // namespace vemo
