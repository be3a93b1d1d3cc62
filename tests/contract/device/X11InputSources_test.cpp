#include "platform/x11/X11InputSources.h"

#include <gtest/gtest.h>

#include <QProcess>

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class X11InputSourcesTest : public testing::Test {
 protected:
  static void setLayouts(const QString& layouts, const QString& variants) {
    ASSERT_EQ(QProcess::execute(u"setxkbmap"_s, {u"-layout"_s, layouts, u"-variant"_s, variants}),
              0);
  }
  void TearDown() override { setLayouts(u"us"_s, u""_s); }
};

TEST_F(X11InputSourcesTest, LayoutsComeInTheirOrderWithTheirVariants) {
  setLayouts(u"de,us"_s, u",dvorak"_s);
  EXPECT_EQ(readX11InputSources(), (QStringList{u"de"_s, u"us(dvorak)"_s}));
}

TEST_F(X11InputSourcesTest, ASingleLayoutIsAListOfOne) {
  setLayouts(u"ru"_s, u""_s);
  EXPECT_EQ(readX11InputSources(), QStringList{u"ru"_s});
}

TEST_F(X11InputSourcesTest, WithoutAServerThereAreNone) {
  EXPECT_EQ(readX11InputSources(":12345"), QStringList());
}

}  // namespace
}  // namespace vemo
