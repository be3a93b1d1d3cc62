#include "platform/xdg/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr uint prefersDark = 1;

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;

// The one key that all desktops share, and the one that most of them pass on.
const QString appearanceSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
const QString interfaceSpace = u"org.gnome.desktop.interface"_s;
const QString enableAnimations = u"enable-animations"_s;

/// Read() wraps its value twice.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value;
}

}  // namespace

DesktopAppearance::DesktopAppearance() {
  QDBusConnection::sessionBus().connect(service, path, interface, u"SettingChanged"_s, this,
                                        SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask(appearanceSpace, colorScheme);
  ask(interfaceSpace, enableAnimations);
}

std::optional<QString> DesktopAppearance::read() {
  ask(appearanceSpace, colorScheme);
  return m_name;
}

void DesktopAppearance::ask(const QString& space, const QString& key) {
  auto question = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
  question << space << key;
  auto* watcher =
      new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(question), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher, space, key] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (!reply.isError()) take(space, key, unwrapped(reply.value().variant()));
  });
}

void DesktopAppearance::settingChanged(const QString& space, const QString& key,
                                       const QDBusVariant& value) {
  take(space, key, unwrapped(value.variant()));
}

void DesktopAppearance::take(const QString& space, const QString& key, const QVariant& value) {
  const auto nameBefore = m_name;
  const bool motionBefore = m_hasReducedMotion;
  if (space == appearanceSpace && key == colorScheme && value.typeId() == QMetaType::UInt)
    m_name = value.toUInt() == prefersDark ? u"dark"_s : u"light"_s;
  if (space == interfaceSpace && key == enableAnimations && value.typeId() == QMetaType::Bool)
    m_hasReducedMotion = !value.toBool();
  if ((m_name != nameBefore || m_hasReducedMotion != motionBefore) && onChanged) onChanged();
}

}  // namespace vemo
