// Whether the desktop is light or dark, as its settings portal tells.
//
// Asks once and then listens, so that reading costs nothing and nobody waits for a portal that
// doesn't answer. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <optional>

class QDBusMessage;
class QDBusVariant;

namespace vemo {

class DesktopAppearance : public QObject {
  Q_OBJECT

 public:
  DesktopAppearance();

  /// "light" or "dark"; nothing while it isn't known. A desktop without a preference is light.
  const std::optional<QString>& name() const { return m_name; }

 private Q_SLOTS:
  void settingChanged(const QString& group, const QString& key, const QDBusVariant& value);

 private:
  void ask();
  void take(const QVariant& colorScheme);

  std::optional<QString> m_name;
};

}  // namespace vemo
