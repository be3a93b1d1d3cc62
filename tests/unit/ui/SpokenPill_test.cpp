#include "ui/SpokenPill.h"

#include <gtest/gtest.h>

#include <memory>

#include "UiFixture.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class SpokenPillTest : public UiFixture {
 protected:
  SpokenPill pill;
};

TEST_F(SpokenPillTest, LiveTextIsLabelledDictatedSoFar) {
  pill.setLiveText(u"the newest words"_s);
  QAccessibleInterface* root = pill.accessibleRoot();
  ASSERT_NE(root, nullptr);
  ASSERT_EQ(root->childCount(), 1);
  QAccessibleInterface* text = root->child(0);
  EXPECT_EQ(text->text(QAccessible::Name), u"Dictated so far"_s);
  EXPECT_EQ(text->text(QAccessible::Value), u"the newest words"_s);
  EXPECT_EQ(text->role(), QAccessible::StaticText);
  EXPECT_EQ(text->parent(), root);
  EXPECT_EQ(root->indexOfChild(text), 0);
}

TEST_F(SpokenPillTest, WithoutLiveTextThereIsNothingToRead) {
  EXPECT_EQ(pill.accessibleRoot()->childCount(), 0);
  pill.setLiveText(u"words"_s);
  pill.setLiveText({});
  EXPECT_EQ(pill.accessibleRoot()->childCount(), 0);
  EXPECT_EQ(pill.accessibleRoot()->child(0), nullptr);
}

TEST_F(SpokenPillTest, ItIsNeverOnTheScreen) {
  pill.setLiveText(u"words"_s);
  EXPECT_FALSE(pill.isVisible());
  EXPECT_EQ(pill.handle(), nullptr);
}

}  // namespace
}  // namespace vemo
