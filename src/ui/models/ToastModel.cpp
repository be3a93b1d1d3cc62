#include "ui/models/ToastModel.h"

namespace vemo {

void ToastModel::show(const QString& message) {
  m_hiding.cancel();
  m_isShown = true;
  m_message = message;
  m_hiding = m_tasks.start([this](std::stop_token stop) { return hideInTime(std::move(stop)); });
  Q_EMIT changed();
}

Task<> ToastModel::hideInTime(std::stop_token stop) {
  co_await m_clock.sleep(timeShown, stop);
  if (stop.stop_requested()) co_return;
  m_isShown = false;
  Q_EMIT changed();
}

}  // namespace vemo
