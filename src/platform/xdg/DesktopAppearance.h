// Whether the desktop is light or dark, as its settings portal tells.
//
// Nobody waits for a portal: reading gives what it answered last, and asks it again for the next
// time. Main thread only.
#pragma once

#include <QObject>
#include <QString>
#include <QVariant>
#include <optional>

namespace vemo {

class DesktopAppearance : public QObject {
 public:
  DesktopAppearance();

  /// "light" or "dark"; nothing while it isn't known. A desktop without a preference is light.
  std::optional<QString> read();

 private:
  void ask();
  void take(const QVariant& colorScheme);

  std::optional<QString> m_name;
};

}  // namespace vemo
