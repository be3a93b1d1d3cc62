#include "windows/AccentColors.h"

#include <algorithm>
#include <cmath>
#include <initializer_list>

namespace vemo {

namespace {

constexpr double readable = 4.5;
constexpr double step = 0.01;
constexpr double shareOfSelection = 0.18;

double luminance(const QColor& color) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
         0.0722 * linear(color.blueF());
}

QColor mix(const QColor& ground, const QColor& color, double share) {
  const auto part = [share](double one, double other) { return one + (other - one) * share; };
  return QColor::fromRgbF(part(ground.redF(), color.redF()), part(ground.greenF(), color.greenF()),
                          part(ground.blueF(), color.blueF()));
}

/// The colour, lighter or darker until it can be read on all of them.
QColor readableOn(std::initializer_list<QColor> grounds, const QColor& wish, double direction) {
  float hue = 0;
  float saturation = 0;
  float lightness = 0;
  wish.getHslF(&hue, &saturation, &lightness);
  for (double each = lightness; each > 0 && each < 1; each += direction * step) {
    const QColor color = QColor::fromHslF(hue, saturation, static_cast<float>(each));
    if (std::ranges::all_of(
            grounds, [&](const QColor& ground) { return contrast(color, ground) >= readable; }))
      return color.toRgb();
  }
  return direction > 0 ? QColor(Qt::white) : QColor(Qt::black);
}

}  // namespace

double contrast(const QColor& one, const QColor& other) {
  const auto [darker, lighter] = std::minmax({luminance(one), luminance(other)});
  return (lighter + 0.05) / (darker + 0.05);
}

AccentColors accentColors(const QColor& wish, const Grounds& grounds) {
  const bool isDark = luminance(grounds.lightest) < 0.5;
  const QColor& hardest = isDark ? grounds.lightest : grounds.darkest;
  const double direction = isDark ? 1 : -1;
  const QColor textOnAccent = isDark ? QColor(0x10, 0x12, 0x16) : QColor(Qt::white);
  const QColor accent = readableOn({textOnAccent, hardest}, wish, direction);
  const QColor selection =
      mix(isDark ? grounds.darkest : grounds.lightest, accent, shareOfSelection);
  return {.accent = accent,
          .accentText = readableOn({hardest, selection}, wish, direction),
          .textOnAccent = textOnAccent,
          .selection = selection};
}

QVariantMap desktopAccent(const QObject& theme, const QColor& wish) {
  const auto darker = [](const QColor& one, const QColor& other) {
    return luminance(one) < luminance(other);
  };
  const auto [darkest, lightest] = std::minmax(
      {theme.property("sidebar").value<QColor>(), theme.property("card").value<QColor>(),
       theme.property("hoveredCard").value<QColor>()},
      darker);
  const auto colors = accentColors(wish, {.darkest = darkest, .lightest = lightest});
  return {{QStringLiteral("accent"), colors.accent},
          {QStringLiteral("accentText"), colors.accentText},
          {QStringLiteral("textOnAccent"), colors.textOnAccent},
          {QStringLiteral("selection"), colors.selection}};
}

}  // namespace vemo
