// What the desktop's user prefers to look at, as its settings portal tells: light or dark, the
// accent colour, and whether things move.
//
// Nobody waits for a portal: reading gives what it told last. It is asked at the start and when it
// is read, and tells of changes by itself. Main thread only.
#pragma once

#include <QDBusVariant>
#include <QObject>
#include <QString>
#include <QVariant>
#include <cstdint>
#include <functional>
#include <optional>

namespace vemo {

class DesktopAppearance : public QObject {
  Q_OBJECT

 public:
  DesktopAppearance();

  /// "light" or "dark"; nothing while it isn't known. A desktop without a preference is light.
  std::optional<QString> read();

  std::optional<QString> name() const { return m_name; }
  bool hasReducedMotion() const { return m_hasReducedMotion; }

  /// 0xRRGGBB; nothing where the user has chosen none.
  std::optional<std::uint32_t> accent() const { return m_accent; }

  /// Called when the portal tells something else than before.
  std::function<void()> onChanged;

 private Q_SLOTS:
  void settingChanged(const QString& space, const QString& key, const QDBusVariant& value);

 private:
  void ask(const QString& space, const QString& key);
  void take(const QString& space, const QString& key, const QVariant& value);

  std::optional<QString> m_name;
  bool m_hasReducedMotion = false;
  std::optional<std::uint32_t> m_accent;
};

}  // namespace vemo
