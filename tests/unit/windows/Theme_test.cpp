// What is written in the windows can be read.

#include <gtest/gtest.h>

#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>
#include <memory>

#include "windows/AccentColors.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;

class ThemeTest : public testing::TestWithParam<bool> {
 protected:
  ThemeTest() {
    QQmlComponent finder(&engine);
    finder.setData(
        "import QtQml; import \"common\"; QtObject { readonly property QtObject theme: Theme }",
        QUrl::fromLocalFile(QStringLiteral(VEMO_QML_IN_SOURCE) + u"/look"_s));
    found.reset(finder.create());
    theme = found->property("theme").value<QObject*>();
    theme->setProperty("isDark", GetParam());
  }

  void expectReadable(const char* text, std::initializer_list<const char*> grounds) {
    for (const char* ground : grounds) {
      EXPECT_GE(
          contrast(theme->property(text).value<QColor>(), theme->property(ground).value<QColor>()),
          4.5)
          << text << " on " << ground;
    }
  }

  QQmlEngine engine;
  std::unique_ptr<QObject> found;
  QObject* theme = nullptr;
};

TEST_P(ThemeTest, TextStandsOutFromWhateverItStandsOn) {
  expectReadable("text",
                 {"window", "sidebar", "card", "hoveredCard", "field", "hover", "selection"});
  expectReadable("secondaryText", {"window", "sidebar", "card", "hoveredCard", "field"});
  expectReadable("accentText", {"window", "card", "selection"});
  expectReadable("danger", {"window", "card"});
  expectReadable("textOnAccent", {"accent"});
  expectReadable("window", {"text"});
}

TEST_P(ThemeTest, TheRingAroundWhatHasTheKeyboardCanBeSeen) {
  for (const char* ground : {"window", "sidebar", "card", "field"}) {
    EXPECT_GE(contrast(theme->property("accent").value<QColor>(),
                       theme->property(ground).value<QColor>()),
              3)
        << ground;
  }
}

TEST_P(ThemeTest, WhateverTheDesktopsAccentIsTextStandsOut) {
  for (int hue = 0; hue < 360; hue += 15) {
    for (const int saturation : {0, 90, 255}) {
      for (int lightness = 0; lightness <= 255; lightness += 51) {
        const QColor wish = QColor::fromHsl(hue, saturation, lightness);
        SCOPED_TRACE(wish.name().toStdString());
        theme->setProperty("desktopAccent", desktopAccent(*theme, wish));
        expectReadable("text", {"selection"});
        expectReadable("accentText", {"window", "sidebar", "card", "hoveredCard", "selection"});
        expectReadable("textOnAccent", {"accent"});
        expectReadable("accent", {"window", "sidebar", "card", "field"});
      }
    }
  }
}

TEST_P(ThemeTest, TheHueIsTheUsersAndVemosOwnComesBackWithoutOne) {
  const auto own = theme->property("accent").value<QColor>();
  theme->setProperty("desktopAccent", desktopAccent(*theme, QColor(0xe6, 0x61, 0x00)));
  EXPECT_NEAR(theme->property("accent").value<QColor>().hslHue(), QColor(0xe6, 0x61, 0x00).hslHue(),
              3);
  theme->setProperty("desktopAccent", QVariantMap());
  EXPECT_EQ(theme->property("accent").value<QColor>(), own);
}

TEST_P(ThemeTest, AnAccentThatCanBeReadAlreadyStaysAsItIs) {
  const QColor wish = GetParam() ? QColor(0x62, 0xa0, 0xea) : QColor(0x1a, 0x5f, 0xb4);
  EXPECT_EQ(desktopAccent(*theme, wish).value(u"accent"_s).value<QColor>().name(), wish.name());
}

TEST_P(ThemeTest, TheMarkStaysTheProductsOwn) {
  const auto before = theme->property("mark").value<QColor>();
  theme->setProperty("desktopAccent", desktopAccent(*theme, QColor(Qt::red)));
  EXPECT_EQ(theme->property("mark").value<QColor>(), before);
  expectReadable("markInk", {"mark"});
}

INSTANTIATE_TEST_SUITE_P(LightAndDark, ThemeTest, testing::Bool());

}  // namespace
}  // namespace vemo
