#include "platform/tray/BusMenu.h"

#include <QDBusMetaType>
#include <QGuiApplication>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

QDBusArgument& operator<<(QDBusArgument& argument, const MenuLayout& layout) {
  argument.beginStructure();
  argument << layout.id << layout.properties;
  argument.beginArray(QMetaType::fromType<QDBusVariant>());
  for (const MenuLayout& child : layout.children)
    argument << QDBusVariant(QVariant::fromValue(child));
  argument.endArray();
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuLayout& layout) {
  argument.beginStructure();
  argument >> layout.id >> layout.properties;
  argument.beginArray();
  while (!argument.atEnd()) {
    QDBusVariant child;
    argument >> child;
    layout.children.push_back(qdbus_cast<MenuLayout>(child.variant()));
  }
  argument.endArray();
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuItemProperties& properties) {
  argument.beginStructure();
  argument << properties.id << properties.properties;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuItemProperties& properties) {
  argument.beginStructure();
  argument >> properties.id >> properties.properties;
  argument.endStructure();
  return argument;
}

QDBusArgument& operator<<(QDBusArgument& argument, const MenuEvent& event) {
  argument.beginStructure();
  argument << event.id << event.name << event.data << event.timestamp;
  argument.endStructure();
  return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, MenuEvent& event) {
  argument.beginStructure();
  argument >> event.id >> event.name >> event.data >> event.timestamp;
  argument.endStructure();
  return argument;
}

BusMenu::BusMenu() {
  qDBusRegisterMetaType<MenuLayout>();
  qDBusRegisterMetaType<MenuItemProperties>();
  qDBusRegisterMetaType<QList<MenuItemProperties>>();
  qDBusRegisterMetaType<MenuEvent>();
  qDBusRegisterMetaType<QList<MenuEvent>>();
  qDBusRegisterMetaType<QList<QStringList>>();
  qDBusRegisterMetaType<QList<int>>();
  m_tree.set({});
}

void BusMenu::set(std::vector<MenuItem> items) {
  m_tree.set(std::move(items));
  ++m_revision;
  Q_EMIT LayoutUpdated(m_revision, 0);
}

QString BusMenu::textDirection() const {
  return QGuiApplication::isRightToLeft() ? u"rtl"_s : u"ltr"_s;
}

QString BusMenu::status() const {
  return u"normal"_s;
}

MenuLayout BusMenu::layoutOf(int id, int depth, const QStringList& propertyNames) const {
  MenuLayout layout{.id = id, .properties = m_tree.properties(id, propertyNames), .children = {}};
  const MenuTree::Node* node = m_tree.find(id);
  if (!node || depth == 0) return layout;
  for (const int child : node->children)
    layout.children.push_back(layoutOf(child, depth - 1, propertyNames));
  return layout;
}

uint BusMenu::GetLayout(int parentId, int recursionDepth, const QStringList& propertyNames,
                        MenuLayout& layout) {
  layout = layoutOf(parentId, recursionDepth, propertyNames);
  return m_revision;
}

QList<MenuItemProperties> BusMenu::GetGroupProperties(const QList<int>& ids,
                                                      const QStringList& propertyNames) {
  QList<MenuItemProperties> all;
  const std::vector<int> everyId = m_tree.ids();
  for (const int id : ids.isEmpty() ? QList<int>(everyId.begin(), everyId.end()) : ids) {
    if (m_tree.find(id)) all.append({id, m_tree.properties(id, propertyNames)});
  }
  return all;
}

QDBusVariant BusMenu::GetProperty(int id, const QString& name) {
  const QVariant value = m_tree.properties(id, {name}).value(name);
  return QDBusVariant(value.isValid() ? value : QVariant(QString()));
}

void BusMenu::Event(int id, const QString& eventId, const QDBusVariant&, uint) {
  const MenuTree::Node* node = m_tree.find(id);
  if (!node || eventId != u"clicked" || !node->item.isEnabled || !node->item.action) return;
  // Whoever pressed gets the answer first: an action may take the menu, or the program, away.
  QMetaObject::invokeMethod(this, node->item.action, Qt::QueuedConnection);
}

QList<int> BusMenu::EventGroup(const QList<MenuEvent>& events) {
  QList<int> unknown;
  for (const MenuEvent& event : events) {
    if (!m_tree.find(event.id)) unknown.append(event.id);
    Event(event.id, event.name, event.data, event.timestamp);
  }
  return unknown;
}

/// The tree is always up to date.
bool BusMenu::AboutToShow(int) {
  return false;
}

QList<int> BusMenu::AboutToShowGroup(const QList<int>& ids, QList<int>& idErrors) {
  for (const int id : ids) {
    if (!m_tree.find(id)) idErrors.append(id);
  }
  return {};
}

}  // namespace vemo
