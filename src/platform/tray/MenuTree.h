// A menu as the bus names it: a number for every item, the same as long as the item means the same,
// and the properties that com.canonical.dbusmenu has for it.
//
// A value without a bus. Number 0 is the menu itself.
#pragma once

#include <QHash>
#include <QString>
#include <QStringList>
#include <QVariantMap>
#include <vector>

#include "ports/StatusItem.h"

namespace vemo {

class MenuTree {
 public:
  struct Node {
    MenuItem item;
    std::vector<int> children;
  };

  /// Replaces the items; identifiers that were there before keep their numbers.
  void set(std::vector<MenuItem> items);

  /// Null for a number that no item of now has.
  const Node* find(int id) const;
  std::vector<int> ids() const;

  /// Those that differ from what an item without properties is taken for; only `wanted`, or all
  /// when it is empty.
  QVariantMap properties(int id, const QStringList& wanted) const;

 private:
  int add(MenuItem item);

  QHash<QString, int> m_numbers;
  QHash<int, Node> m_nodes;
};

}  // namespace vemo
