#include "platform/tray/MenuTree.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using testing::ElementsAre;

MenuItem button(const QString& text) {
  return {.kind = MenuItem::Kind::Button, .identifier = text, .text = text};
}

int idOf(const MenuTree& tree, const QString& identifier) {
  for (const int id : tree.ids()) {
    if (id != 0 && tree.find(id)->item.identifier == identifier) return id;
  }
  return -1;
}

TEST(MenuTreeTest, AnItemKeepsItsNumberWhateverComesBeforeIt) {
  MenuTree tree;
  tree.set({button(u"quit"_s)});
  const int quit = idOf(tree, u"quit"_s);
  tree.set({button(u"copy"_s), button(u"quit"_s)});
  EXPECT_EQ(idOf(tree, u"quit"_s), quit);
  EXPECT_THAT(tree.find(0)->children, ElementsAre(idOf(tree, u"copy"_s), quit));
}

TEST(MenuTreeTest, TheNumberOfAnItemThatWentIsNobodys) {
  MenuTree tree;
  tree.set({button(u"copy"_s)});
  const int copy = idOf(tree, u"copy"_s);
  tree.set({button(u"quit"_s)});
  EXPECT_EQ(tree.find(copy), nullptr);
  EXPECT_NE(idOf(tree, u"quit"_s), copy);
}

TEST(MenuTreeTest, AnUnderscoreOfATextIsNoKey) {
  MenuTree tree;
  tree.set({button(u"a_b"_s)});
  EXPECT_EQ(tree.properties(1, {}).value(u"label"_s), u"a__b"_s);
}

TEST(MenuTreeTest, EachKindHasItsProperties) {
  MenuTree tree;
  tree.set(
      {{.kind = MenuItem::Kind::Line, .identifier = u"l"_s, .text = u"L"_s, .isEnabled = false},
       {.kind = MenuItem::Kind::Toggle, .identifier = u"t"_s, .text = u"T"_s, .isChecked = true},
       {.kind = MenuItem::Kind::Divider, .identifier = u"d"_s},
       {.kind = MenuItem::Kind::Submenu,
        .identifier = u"s"_s,
        .text = u"S"_s,
        .children = {button(u"x"_s)}}});
  EXPECT_EQ(tree.properties(idOf(tree, u"l"_s), {}),
            (QVariantMap{{u"label"_s, u"L"_s}, {u"enabled"_s, false}}));
  EXPECT_EQ(tree.properties(idOf(tree, u"t"_s), {}),
            (QVariantMap{
                {u"label"_s, u"T"_s}, {u"toggle-type"_s, u"checkmark"_s}, {u"toggle-state"_s, 1}}));
  EXPECT_EQ(tree.properties(idOf(tree, u"d"_s), {}), (QVariantMap{{u"type"_s, u"separator"_s}}));
  EXPECT_EQ(tree.properties(idOf(tree, u"s"_s), {u"children-display"_s}),
            (QVariantMap{{u"children-display"_s, u"submenu"_s}}));
}

}  // namespace
}  // namespace vemo
