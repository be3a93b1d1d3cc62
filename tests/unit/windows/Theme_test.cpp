// What is written in the windows can be read.

#include <gtest/gtest.h>

#include <QColor>
#include <QQmlComponent>
#include <QQmlEngine>
#include <algorithm>
#include <cmath>
#include <memory>

namespace vemo {
namespace {

/// As the Web Content Accessibility Guidelines define it.
double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

double contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

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
  expectReadable("accentText", {"window", "card"});
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

INSTANTIATE_TEST_SUITE_P(LightAndDark, ThemeTest, testing::Bool());

}  // namespace
}  // namespace vemo
