#include "platform/qt/QtCriticalAlert.h"

#include <utility>

#include "platform/qt/QtAlertWindow.h"

namespace vemo {

QtCriticalAlert::QtCriticalAlert() = default;

QtCriticalAlert::~QtCriticalAlert() = default;

void QtCriticalAlert::show(const AlertText& text, std::function<void()> onClosed) {
  m_window = std::make_unique<QtAlertWindow>(text, std::move(onClosed));
  m_window->show();
  m_window->raise();
  m_window->requestActivate();
}

}  // namespace vemo
