#include "platform/xdg/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

// org.freedesktop.portal.Settings, and the key that it has for all desktops.
const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;
const QString appearanceGroup = u"org.freedesktop.appearance"_s;
const QString colorSchemeKey = u"color-scheme"_s;
constexpr uint prefersDark = 1;

}  // namespace

DesktopAppearance::DesktopAppearance() {
  QDBusConnection::sessionBus().connect(service, path, interface, u"SettingChanged"_s, this,
                                        SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask();
}

void DesktopAppearance::ask() {
  auto call = QDBusMessage::createMethodCall(service, path, interface, u"Read"_s);
  call << appearanceGroup << colorSchemeKey;
  auto* watcher = new QDBusPendingCallWatcher(QDBusConnection::sessionBus().asyncCall(call), this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isError()) return;
    // Read() wraps its value twice.
    const QVariant value = reply.value().variant();
    take(value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value);
  });
}

void DesktopAppearance::settingChanged(const QString& group, const QString& key,
                                       const QDBusVariant& value) {
  if (group == appearanceGroup && key == colorSchemeKey) take(value.variant());
}

void DesktopAppearance::take(const QVariant& colorScheme) {
  if (colorScheme.typeId() != QMetaType::UInt) return;
  m_name = colorScheme.toUInt() == prefersDark ? u"dark"_s : u"light"_s;
}

}  // namespace vemo
