#include "ui/models/StatsModel.h"

#include "account/AuthManager.h"
#include "account/UsageFormat.h"

namespace vemo {

StatsModel::StatsModel(With with)
    : m_with(std::move(with)),
      m_observation(m_with.auth.changed.observe([this] { Q_EMIT changed(); })),
      m_tasks(m_with.mainThread) {}

UsageTotals StatsModel::totals() const {
  return UsageTotals::of(m_with.auth.consumption());
}

QString StatsModel::speed() const {
  return tr("%1 WPM").arg(dictationSpeed(totals()));
}

QString StatsModel::speedComparison() const {
  return vemo::speedComparison(dictationSpeed(totals()));
}

QString StatsModel::speedLine() const {
  return vemo::speedLine(dictationSpeed(totals()));
}

QString StatsModel::timeSaved() const {
  return formatMinutes(minutesSaved(totals()));
}

QString StatsModel::timeSavedDetail() const {
  return tr("Estimated keyboard typing time eliminated across %1 words transcribed.")
      .arg(formatCount(totals().words, m_with.locale));
}

QString StatsModel::audio() const {
  return voiceAudio(totals().minutes, m_with.locale).number;
}

QString StatsModel::audioUnit() const {
  return voiceAudio(totals().minutes, m_with.locale).unit;
}

QString StatsModel::dictations() const {
  return formatCount(totals().utterances, m_with.locale);
}

void StatsModel::refresh() {
  if (m_isRefreshing) return;
  m_isRefreshing = true;
  Q_EMIT changed();
  m_tasks.start([this](std::stop_token stop) { return readUsage(std::move(stop)); });
}

Task<> StatsModel::readUsage(std::stop_token stop) {
  const auto progress =
      m_tasks.start([this](std::stop_token end) { return showProgressInTime(std::move(end)); });
  co_await m_with.auth.refreshProfile(stop);
  progress.cancel();
  m_isRefreshing = false;
  m_showsProgress = false;
  Q_EMIT changed();
}

Task<> StatsModel::showProgressInTime(std::stop_token stop) {
  co_await m_with.clock.sleep(timeWithoutProgress, stop);
  if (stop.stop_requested()) co_return;
  m_showsProgress = true;
  Q_EMIT changed();
}

}  // namespace vemo
