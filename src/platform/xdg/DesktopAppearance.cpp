#include "platform/xdg/DesktopAppearance.h"

#include <QDBusArgument>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <cmath>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr uint prefersDark = 1;

const QString service = u"org.freedesktop.portal.Desktop"_s;
const QString path = u"/org/freedesktop/portal/desktop"_s;
const QString interface = u"org.freedesktop.portal.Settings"_s;

// The keys that all desktops share, and the one that most of them pass on.
const QString appearanceSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
const QString accentColor = u"accent-color"_s;
const QString interfaceSpace = u"org.gnome.desktop.interface"_s;
const QString enableAnimations = u"enable-animations"_s;

/// Read() wraps its value twice.
QVariant unwrapped(QVariant value) {
  while (value.canConvert<QDBusVariant>()) value = value.value<QDBusVariant>().variant();
  return value;
}

/// Red, green and blue, each from 0 to 1. Anything else, such as minus one, stands for none.
std::optional<std::uint32_t> colorOf(const QVariant& value) {
  if (value.userType() != qMetaTypeId<QDBusArgument>()) return std::nullopt;
  const auto argument = value.value<QDBusArgument>();
  if (argument.currentSignature() != u"(ddd)") return std::nullopt;
  double parts[3] = {};
  argument.beginStructure();
  for (double& part : parts) argument >> part;
  argument.endStructure();
  std::uint32_t color = 0;
  for (const double part : parts) {
    if (!(part >= 0 && part <= 1)) return std::nullopt;
    color = color << 8 | static_cast<std::uint32_t>(std::lround(part * 255));
  }
  return color;
}

}  // namespace

DesktopAppearance::DesktopAppearance() {
  QDBusConnection::sessionBus().connect(service, path, interface, u"SettingChanged"_s, this,
                                        SLOT(settingChanged(QString, QString, QDBusVariant)));
  ask(appearanceSpace, colorScheme);
  ask(appearanceSpace, accentColor);
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
  const auto accentBefore = m_accent;
  if (space == appearanceSpace && key == colorScheme && value.typeId() == QMetaType::UInt)
    m_name = value.toUInt() == prefersDark ? u"dark"_s : u"light"_s;
  if (space == appearanceSpace && key == accentColor) m_accent = colorOf(value);
  if (space == interfaceSpace && key == enableAnimations && value.typeId() == QMetaType::Bool)
    m_hasReducedMotion = !value.toBool();
  const bool hasChanged =
      m_name != nameBefore || m_hasReducedMotion != motionBefore || m_accent != accentBefore;
  if (hasChanged && onChanged) onChanged();
}

}  // namespace vemo
