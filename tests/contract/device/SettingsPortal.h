// A settings portal of a test's own, on the real session bus, for as long as it lives.
#pragma once

#include <gtest/gtest.h>

#include <QDBusConnection>
#include <QDBusContext>
#include <QDBusMessage>
#include <QDBusVariant>
#include <QObject>
#include <map>

namespace vemo {

class SettingsPortal : public QObject, protected QDBusContext {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "org.freedesktop.portal.Settings")

 public:
  /// Knows the color scheme and nothing else.
  explicit SettingsPortal(const QVariant& colorScheme) : SettingsPortal() { change(colorScheme); }

  SettingsPortal() {
    EXPECT_TRUE(m_bus.registerObject(m_path, this, QDBusConnection::ExportScriptableContents));
    EXPECT_TRUE(m_bus.registerService(QStringLiteral("org.freedesktop.portal.Desktop")));
  }
  ~SettingsPortal() override { QDBusConnection::disconnectFromBus(QStringLiteral("portal")); }

  Q_SCRIPTABLE QDBusVariant Read(const QString& group, const QString& key) {
    const auto found = m_values.find({group, key});
    if (found == m_values.end()) {
      sendErrorReply(QStringLiteral("org.freedesktop.portal.Error.NotFound"),
                     QStringLiteral("Requested setting not found"));
      return {};
    }
    if (key == m_colorScheme) ++m_readCount;
    return QDBusVariant(QVariant::fromValue(QDBusVariant(found->second)));
  }

  /// Of the color scheme.
  int readCount() const { return m_readCount; }

  void change(const QVariant& colorScheme) { set(m_appearance, m_colorScheme, colorScheme); }

  void set(const QString& group, const QString& key, const QVariant& value) {
    m_values[{group, key}] = value;
  }

  /// Sets it and tells whoever listens.
  void tell(const QString& group, const QString& key, const QVariant& value) {
    set(group, key, value);
    auto signal =
        QDBusMessage::createSignal(m_path, QStringLiteral("org.freedesktop.portal.Settings"),
                                   QStringLiteral("SettingChanged"));
    signal << group << key << QVariant::fromValue(QDBusVariant(value));
    EXPECT_TRUE(m_bus.send(signal));
  }

 private:
  const QString m_path = QStringLiteral("/org/freedesktop/portal/desktop");
  const QString m_appearance = QStringLiteral("org.freedesktop.appearance");
  const QString m_colorScheme = QStringLiteral("color-scheme");
  QDBusConnection m_bus =
      QDBusConnection::connectToBus(QDBusConnection::SessionBus, QStringLiteral("portal"));
  std::map<std::pair<QString, QString>, QVariant> m_values;
  int m_readCount = 0;
};

}  // namespace vemo
