#include "platform/xdg/DesktopAppearance.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusVariant>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr uint prefersDark = 1;

/// org.freedesktop.portal.Settings, and the key of it that all desktops share.
QDBusMessage questionForColorScheme() {
  auto question = QDBusMessage::createMethodCall(u"org.freedesktop.portal.Desktop"_s,
                                                 u"/org/freedesktop/portal/desktop"_s,
                                                 u"org.freedesktop.portal.Settings"_s, u"Read"_s);
  question << u"org.freedesktop.appearance"_s << u"color-scheme"_s;
  return question;
}

}  // namespace

DesktopAppearance::DesktopAppearance() {
  ask();
}

std::optional<QString> DesktopAppearance::read() {
  ask();
  return m_name;
}

void DesktopAppearance::ask() {
  const auto call = QDBusConnection::sessionBus().asyncCall(questionForColorScheme());
  auto* watcher = new QDBusPendingCallWatcher(call, this);
  connect(watcher, &QDBusPendingCallWatcher::finished, this, [this, watcher] {
    watcher->deleteLater();
    const QDBusPendingReply<QDBusVariant> reply = *watcher;
    if (reply.isError()) return;
    // Read() wraps its value twice.
    const QVariant value = reply.value().variant();
    take(value.canConvert<QDBusVariant>() ? value.value<QDBusVariant>().variant() : value);
  });
}

void DesktopAppearance::take(const QVariant& colorScheme) {
  if (colorScheme.typeId() != QMetaType::UInt) return;
  m_name = colorScheme.toUInt() == prefersDark ? u"dark"_s : u"light"_s;
}

}  // namespace vemo
