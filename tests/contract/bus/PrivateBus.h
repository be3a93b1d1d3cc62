// A message bus of the test's own, at an address that stays the same: to be started, frozen, killed
// and started again. Nothing is started on it by asking for it.
#pragma once

#include <QDBusConnection>
#include <QProcess>
#include <QTemporaryDir>

namespace vemo {

class PrivateBus {
 public:
  PrivateBus();
  ~PrivateBus();

  QString address() const;

  void start();
  void kill();

  /// A frozen bus keeps its connections and passes nothing on.
  void freeze();
  void thaw();

  /// A connection of its own; valid while the bus runs.
  QDBusConnection connect(const QString& name) const;

 private:
  void signal(int number) const;

  QTemporaryDir m_folder;
  QProcess m_process;
};

}  // namespace vemo
