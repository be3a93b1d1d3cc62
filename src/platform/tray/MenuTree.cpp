#include "platform/tray/MenuTree.h"

#include <algorithm>
#include <utility>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// An underscore marks the key of an entry, unless it is doubled.
QString label(const QString& text) {
  return QString(text).replace(u'_', u"__"_s);
}

/// "Ctrl+Shift+C" as the protocol has it: a list of combinations, each a list of names.
QVariant shortcutOf(const QString& shortcut) {
  QStringList names = shortcut.split(u'+');
  for (QString& name : names) {
    if (name == u"Ctrl") name = u"Control"_s;
  }
  return QVariant::fromValue(QList<QStringList>{names});
}

}  // namespace

void MenuTree::set(std::vector<MenuItem> items) {
  m_nodes.clear();
  Node root;
  for (MenuItem& item : items) root.children.push_back(add(std::move(item)));
  m_nodes.insert(0, std::move(root));
}

int MenuTree::add(MenuItem item) {
  auto number = m_numbers.find(item.identifier);
  if (number == m_numbers.end())
    number = m_numbers.insert(item.identifier, int(m_numbers.size()) + 1);
  const int id = *number;
  Node node;
  for (MenuItem& child : item.children) node.children.push_back(add(std::move(child)));
  item.children.clear();
  node.item = std::move(item);
  m_nodes.insert(id, std::move(node));
  return id;
}

const MenuTree::Node* MenuTree::find(int id) const {
  const auto node = m_nodes.constFind(id);
  return node == m_nodes.constEnd() ? nullptr : &*node;
}

std::vector<int> MenuTree::ids() const {
  std::vector<int> ids(m_nodes.keyBegin(), m_nodes.keyEnd());
  std::ranges::sort(ids);
  return ids;
}

QVariantMap MenuTree::properties(int id, const QStringList& wanted) const {
  const Node* node = find(id);
  if (!node) return {};
  QVariantMap all;
  if (!node->children.empty()) all[u"children-display"_s] = u"submenu"_s;
  if (id != 0) {
    const MenuItem& item = node->item;
    if (item.kind == MenuItem::Kind::Divider) {
      all[u"type"_s] = u"separator"_s;
    } else {
      all[u"label"_s] = label(item.text);
      if (!item.isEnabled) all[u"enabled"_s] = false;
    }
    if (item.kind == MenuItem::Kind::Toggle) {
      all[u"toggle-type"_s] = u"checkmark"_s;
      all[u"toggle-state"_s] = item.isChecked ? 1 : 0;
    }
    if (!item.shortcut.isEmpty()) all[u"shortcut"_s] = shortcutOf(item.shortcut);
  }
  if (!wanted.isEmpty()) all.removeIf([&](auto entry) { return !wanted.contains(entry.key()); });
  return all;
}

}  // namespace vemo
