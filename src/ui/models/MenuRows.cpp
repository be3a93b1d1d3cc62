#include "ui/models/MenuRows.h"

#include <QVariantMap>
#include <algorithm>

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QString kindName(MenuItem::Kind kind) {
  switch (kind) {
    case MenuItem::Kind::Line:
      return u"line"_s;
    case MenuItem::Kind::Button:
      return u"button"_s;
    case MenuItem::Kind::Toggle:
      return u"toggle"_s;
    case MenuItem::Kind::Divider:
    case MenuItem::Kind::Submenu:
      break;
  }
  return u"divider"_s;
}

}  // namespace

QVariantList menuRows(const std::vector<MenuItem>& items) {
  QVariantList rows;
  bool isDividerDue = false;
  for (const auto& item : items) {
    if (item.kind == MenuItem::Kind::Submenu) continue;
    if (item.kind == MenuItem::Kind::Divider) {
      isDividerDue = !rows.isEmpty();
      continue;
    }
    if (isDividerDue) rows.append(QVariantMap{{u"kind"_s, kindName(MenuItem::Kind::Divider)}});
    isDividerDue = false;
    rows.append(QVariantMap{{u"kind"_s, kindName(item.kind)},
                            {u"identifier"_s, item.identifier},
                            {u"text"_s, item.text},
                            {u"isEnabled"_s, item.isEnabled},
                            {u"isChecked"_s, item.isChecked}});
  }
  return rows;
}

void pressMenuRow(const std::vector<MenuItem>& items, const QString& identifier) {
  const auto item = std::ranges::find(items, identifier, &MenuItem::identifier);
  if (item != items.end() && item->isEnabled && item->action) item->action();
}

}  // namespace vemo
