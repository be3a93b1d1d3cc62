// What a real settings portal tells of the user's taste, and how little is taken from one that
// tells something else.
#include "platform/xdg/DesktopAppearance.h"

#include <gtest/gtest.h>

#include <QDBusArgument>
#include <QGuiApplication>

#include "SettingsPortal.h"
#include "fakes/QtTestLoop.h"
#include "fakes/TestApplication.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

const QString appearanceSpace = u"org.freedesktop.appearance"_s;
const QString colorScheme = u"color-scheme"_s;
const QString accentColor = u"accent-color"_s;

QVariant doubles(std::initializer_list<double> parts) {
  QDBusArgument argument;
  argument.beginStructure();
  for (const double part : parts) argument << part;
  argument.endStructure();
  return QVariant::fromValue(argument);
}

class DesktopAppearanceTest : public testing::Test, protected TestApplication<QGuiApplication> {
 protected:
  /// Until the portal's answer to something that was asked or told after everything else is here.
  static bool tellsDark(DesktopAppearance& appearance) {
    return QtTestLoop::runUntil([&] { return appearance.name() == u"dark"_s; });
  }

  SettingsPortal portal;
};

TEST_F(DesktopAppearanceTest, TheAccentColorIsReadAtTheStart) {
  portal.set(appearanceSpace, accentColor, doubles({0.9, 0.38, 0.0}));
  DesktopAppearance appearance;
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.accent().has_value(); }));
  EXPECT_EQ(appearance.accent(), 0xe66100);
}

TEST_F(DesktopAppearanceTest, ABlackAndAWhiteAccentAreColors) {
  DesktopAppearance appearance;
  portal.tell(appearanceSpace, accentColor, doubles({0, 0, 0}));
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.accent() == 0x000000; }));
  portal.tell(appearanceSpace, accentColor, doubles({1, 1, 1}));
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.accent() == 0xffffff; }));
}

TEST_F(DesktopAppearanceTest, AnotherAccentIsToldAndOneThatIsNoneTakesItAway) {
  portal.set(appearanceSpace, accentColor, doubles({0, 0, 1}));
  DesktopAppearance appearance;
  int changes = 0;
  appearance.onChanged = [&] { ++changes; };
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.accent() == 0x0000ff; }));
  portal.tell(appearanceSpace, accentColor, doubles({1, 0, 0}));
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.accent() == 0xff0000; }));
  portal.tell(appearanceSpace, accentColor, doubles({-1, -1, -1}));
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return !appearance.accent(); }));
  EXPECT_EQ(changes, 3);
}

TEST_F(DesktopAppearanceTest, WhatIsNoColorIsNone) {
  DesktopAppearance appearance;
  for (const QVariant& value :
       {doubles({0, 0, 1.01}), doubles({0, -0.01, 0}), doubles({0, 0}), doubles({0, 0, 0, 0}),
        doubles({qQNaN(), 0, 0}), QVariant(u"red"_s), QVariant(7u)}) {
    portal.tell(appearanceSpace, accentColor, value);
    portal.tell(appearanceSpace, colorScheme, 1u);
    EXPECT_TRUE(tellsDark(appearance));
    EXPECT_FALSE(appearance.accent());
    portal.tell(appearanceSpace, colorScheme, 2u);
    EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.name() == u"light"_s; }));
  }
}

TEST_F(DesktopAppearanceTest, MotionIsReducedWhereAnimationsAreOff) {
  DesktopAppearance appearance;
  EXPECT_FALSE(appearance.hasReducedMotion());
  portal.tell(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, false);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return appearance.hasReducedMotion(); }));
  portal.tell(u"org.gnome.desktop.interface"_s, u"enable-animations"_s, true);
  EXPECT_TRUE(QtTestLoop::runUntil([&] { return !appearance.hasReducedMotion(); }));
}

}  // namespace
}  // namespace vemo
