#include "ui/models/MenuRows.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;
using testing::IsEmpty;

using Kind = MenuItem::Kind;

QStringList described(const std::vector<MenuItem>& items) {
  QStringList rows;
  for (const auto& row : menuRows(items)) {
    const auto fields = row.toMap();
    rows.append((fields[u"kind"_s].toString() + u' ' + fields[u"text"_s].toString()).trimmed());
  }
  return rows;
}

MenuItem item(Kind kind, const QString& text = {}) {
  return {.kind = kind, .identifier = text, .text = text};
}

TEST(MenuRowsTest, LinesButtonsAndTogglesAreRowsAndSubmenusAreNot) {
  EXPECT_THAT(described({item(Kind::Line, u"Ready"_s), item(Kind::Button, u"Settings"_s),
                         item(Kind::Submenu, u"Language"_s), item(Kind::Toggle, u"Enable"_s)}),
              ElementsAre(u"line Ready"_s, u"button Settings"_s, u"toggle Enable"_s));
}

TEST(MenuRowsTest, ADividerStandsOnlyBetweenRowsAndOnce) {
  EXPECT_THAT(described({item(Kind::Divider), item(Kind::Button, u"a"_s), item(Kind::Divider),
                         item(Kind::Submenu, u"s"_s), item(Kind::Divider),
                         item(Kind::Button, u"b"_s), item(Kind::Divider)}),
              ElementsAre(u"button a"_s, u"divider"_s, u"button b"_s));
  EXPECT_THAT(described({}), IsEmpty());
}

TEST(MenuRowsTest, PressingARowDoesWhatItsItemDoesUnlessItIsDisabled) {
  int presses = 0;
  MenuItem quit = item(Kind::Button, u"quit"_s);
  quit.action = [&presses] { ++presses; };
  pressMenuRow({quit}, u"quit"_s);
  EXPECT_EQ(presses, 1);
  pressMenuRow({quit}, u"other"_s);
  quit.isEnabled = false;
  pressMenuRow({quit}, u"quit"_s);
  EXPECT_EQ(presses, 1);
  pressMenuRow({item(Kind::Line, u"line"_s)}, u"line"_s);
}

}  // namespace
}  // namespace vemo
