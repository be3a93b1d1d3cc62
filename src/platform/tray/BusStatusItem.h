// The item in the desktop's panel, as org.kde.StatusNotifierItem on the session bus.
//
// Panels come and go: the item registers with each watcher that appears, and says whether a panel
// shows items at all. On a connection of its own to the bus, so that ending it takes the item away
// at once. Main thread only.
#pragma once

#include <QDBusConnection>
#include <QObject>
#include <QString>
#include <memory>

#include "platform/tray/BusMenu.h"
#include "ports/StatusItem.h"

class QDBusServiceWatcher;

namespace vemo {

class BusStatusItem : public QObject, public StatusItem {
  Q_OBJECT

 public:
  /// `imagesFolder` holds vemo-IMAGE-symbolic.svg.
  explicit BusStatusItem(QString imagesFolder);
  ~BusStatusItem() override;

  void setMenu(std::vector<MenuItem> items) override;
  void setImage(const QString& name) override;
  bool hasHost() const override { return m_hasHost; }

 private:
  class Item;
  void registerWithWatcher();
  void askForHost();
  void setHasHost(bool hasHost);

 private Q_SLOTS:
  void hostRegistered();
  void hostUnregistered();

 private:
  const QString m_connectionName;
  QDBusConnection m_bus;
  std::unique_ptr<QDBusServiceWatcher> m_watcherWatch;
  BusMenu m_menu;
  std::unique_ptr<Item> m_item;
  bool m_hasHost = false;
  bool m_isHostKnown = false;
};

}  // namespace vemo
