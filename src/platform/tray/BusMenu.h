// Serves a menu on the session bus, as com.canonical.dbusmenu (version 3).
//
// Whoever shows it reads the tree, is told when it differs, and says which item was pressed. A
// press of an item that isn't there any more, can't be pressed, or isn't one to press, does
// nothing. Main thread only.
#pragma once

#include <QDBusArgument>
#include <QDBusVariant>
#include <QObject>
#include <QVariantMap>

#include "platform/tray/MenuTree.h"

namespace vemo {

struct MenuLayout {
  int id = 0;
  QVariantMap properties;
  std::vector<MenuLayout> children;
};

struct MenuItemProperties {
  int id = 0;
  QVariantMap properties;
};

struct MenuEvent {
  int id = 0;
  QString name;
  QDBusVariant data;
  uint timestamp = 0;
};

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& properties);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& properties);
QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event);
const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event);

class BusMenu : public QObject {
  Q_OBJECT
  Q_CLASSINFO("D-Bus Interface", "com.canonical.dbusmenu")
  Q_PROPERTY(uint Version READ version CONSTANT)
  Q_PROPERTY(QString TextDirection READ textDirection CONSTANT)
  Q_PROPERTY(QString Status READ status CONSTANT)
  Q_PROPERTY(QStringList IconThemePath READ iconThemePath CONSTANT)

 public:
  BusMenu();

  void set(std::vector<MenuItem> items);

  uint version() const { return 3; }
  QString textDirection() const;
  QString status() const;
  QStringList iconThemePath() const { return {}; }

 public Q_SLOTS:
  uint GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                 vemo::MenuLayout& layout);
  QList<vemo::MenuItemProperties> GetGroupProperties(const QList<int>& ids,
                                                     const QStringList& propertyNames);
  QDBusVariant GetProperty(int id, const QString& name);
  void Event(int id, const QString& eventId, const QDBusVariant& data, uint timestamp);
  QList<int> EventGroup(const QList<vemo::MenuEvent>& events);
  bool AboutToShow(int id);
  QList<int> AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors);

 Q_SIGNALS:
  void LayoutUpdated(uint revision, int parent);
  void ItemsPropertiesUpdated(const QList<vemo::MenuItemProperties>& updatedProps,
                              const QList<vemo::MenuItemProperties>& removedProps);
  void ItemActivationRequested(int id, uint timestamp);

 private:
  MenuLayout layoutOf(int id, int depth, const QStringList& propertyNames) const;

  MenuTree m_tree;
  uint m_revision = 1;
};

}  // namespace vemo

Q_DECLARE_METATYPE(vemo::MenuLayout)
Q_DECLARE_METATYPE(vemo::MenuItemProperties)
Q_DECLARE_METATYPE(vemo::MenuEvent)
