#include "ui/models/SettingsNavigation.h"

#include <utility>

#include "telemetry/Telemetry.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

void SettingsNavigation::setTab(SettingsTab tab) {
  if (std::exchange(m_tab, tab) == tab) return;
  windowOpened();
  Q_EMIT changed();
}

QString SettingsNavigation::tabName() const {
  return m_tab == SettingsTab::Account ? u"account"_s : u"system"_s;
}

void SettingsNavigation::setTabName(const QString& name) {
  if (name == u"account") setTab(SettingsTab::Account);
  if (name == u"system") setTab(SettingsTab::System);
}

void SettingsNavigation::windowOpened() {
  m_telemetry.track(TelemetryEvent::tabOpened(u"settings_"_s + tabName()));
}

}  // namespace vemo
