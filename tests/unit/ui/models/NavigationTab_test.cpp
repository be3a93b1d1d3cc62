#include "ui/models/NavigationTab.h"

#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

TEST(NavigationTabTest, TheSidebarListsFourTabsInThisOrder) {
  struct Expected {
    QString name;
    QString label;
    QString symbol;
  };
  const Expected expected[] = {
      {u"home"_s, u"Home"_s, u"house"_s},
      {u"stats"_s, u"Stats"_s, u"chart.bar.xaxis"_s},
      {u"dictionary"_s, u"Dictionary"_s, u"character.book.closed.fill"_s},
      {u"shortcuts"_s, u"Shortcuts"_s, u"command"_s},
  };
  ASSERT_EQ(navigationTabs.size(), std::size(expected));
  for (std::size_t i = 0; i < navigationTabs.size(); ++i) {
    EXPECT_EQ(name(navigationTabs[i]), expected[i].name);
    EXPECT_EQ(label(navigationTabs[i]), expected[i].label);
    EXPECT_EQ(symbol(navigationTabs[i]), expected[i].symbol);
  }
}

}  // namespace
}  // namespace vemo
