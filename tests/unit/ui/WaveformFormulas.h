// The waveform evaluated a second time, bar by bar in extended precision: what the drawing is held
// against.
#pragma once

#include <algorithm>
#include <cmath>
#include <map>
#include <numbers>
#include <string>

namespace vemo::formulas {

using Real = long double;

struct Rgb {
  Real r, g, b;
};

struct ThemeRow {
  Rgb bright, edge, rest;
};

inline ThemeRow themeRow(const std::string& name) {
  static const std::map<std::string, ThemeRow> rows{
      {"teal", {{0.98L, 1, 0.98L}, {0.98L, 1, 0.98L}, {0.88L, 0.85L, 0.98L}}},
      {"light", {{0.6196L, 0.451L, 0.9804L}, {0.3569L, 0.2471L, 0.749L}, {0.45L, 0.45L, 0.5L}}},
      {"dark", {{0.62L, 0.45L, 0.98L}, {0.5216L, 0.3922L, 0.9059L}, {0.45L, 0.45L, 0.5L}}}};
  return rows.contains(name) ? rows.at(name) : rows.at("dark");
}

/// The bar number `i` of a canvas w by h at time t.
struct Bar {
  Real i, w, h, t;

  Real slot() const { return w / 21; }
  Real width() const { return std::fmin(slot() * 0.55L, 5.0L); }
  Real left() const { return (i + 0.5L) * slot() - width() / 2; }
  Real envelope() const { return 0.55L + 0.45L * std::sin(std::numbers::pi_v<Real> * i / 20); }
  Real jitter() const {
    // The scatter multiplies the sine's last digits, so the sine has to be that of doubles.
    const double scattered = std::sin(double(i) * 127.1 + 3.7) * 43758.5453;
    return 0.34L + 0.66L * (scattered - std::floor(scattered));
  }
  Real clipped(Real part, Real least) const {
    const Real height = part >= 1 ? h : part * h;
    return height < least ? least : height;
  }

  static Real energy(float level) {
    const float x = 1.9F * level;
    if (x >= 1.0F) return 1;
    if (x < 0.06) return 0;
    return std::exp(0.75L * std::log((Real(x) - 0.06L) / 0.94L));
  }
  Real activeHeight(float level) const {
    const Real e = energy(level);
    const Real ripple = 1 + 0.3L * e * std::sin(9 * t + 0.7L * i);
    return clipped(e * envelope() * jitter() * ripple, width() > 2 ? width() : 2);
  }
  Rgb activeColor(const ThemeRow& theme) const {
    return between(theme.edge, theme.bright, envelope());
  }

  Real light() const {
    const Real phase = 0.45L * t;
    const Real sweep = w * ((phase - std::trunc(phase)) * 1.4L - 0.2L);
    const Real away = ((i + 0.5L) * slot() - sweep) / (0.16L * w);
    return std::exp(-(away * away));
  }
  Real processingHeight() const {
    const Real breath = 0.85L + 0.15L * std::sin(1.5L * t + 0.5L * i);
    return clipped(0.5L * breath * envelope() * jitter(), h / 8 > 1.5L ? h / 8 : 1.5L);
  }
  Rgb processingColor(const ThemeRow& theme) const {
    return between(theme.rest, theme.bright, light());
  }

  static Rgb between(const Rgb& from, const Rgb& to, Real part) {
    const auto channel = [part](Real a, Real b) { return a * (1 - part) + b * part; };
    return {channel(from.r, to.r), channel(from.g, to.g), channel(from.b, to.b)};
  }
};

}  // namespace vemo::formulas
