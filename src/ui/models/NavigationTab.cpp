#include "ui/models/NavigationTab.h"

#include <QCoreApplication>

namespace vemo {

namespace {

struct Row {
  const char16_t* name;
  const char* label;
  const char16_t* symbol;
};

constexpr Row rows[] = {
    {u"home", QT_TRANSLATE_NOOP("NavigationTab", "Home"), u"house"},
    {u"stats", QT_TRANSLATE_NOOP("NavigationTab", "Stats"), u"chart.bar.xaxis"},
    {u"dictionary", QT_TRANSLATE_NOOP("NavigationTab", "Dictionary"),
     u"character.book.closed.fill"},
    {u"shortcuts", QT_TRANSLATE_NOOP("NavigationTab", "Shortcuts"), u"command"},
};

const Row& row(NavigationTab tab) {
  return rows[static_cast<std::size_t>(tab)];
}

}  // namespace

QString name(NavigationTab tab) {
  return QString::fromUtf16(row(tab).name);
}

QString label(NavigationTab tab) {
  return QCoreApplication::translate("NavigationTab", row(tab).label);
}

QString symbol(NavigationTab tab) {
  return QString::fromUtf16(row(tab).symbol);
}

}  // namespace vemo
