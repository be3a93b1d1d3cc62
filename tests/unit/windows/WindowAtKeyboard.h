// A window on fakes in the hands of somebody at the keyboard, who hears what a screen reader says.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAccessible>
#include <QQuickItem>
#include <QTest>
#include <memory>
#include <optional>

#include "ShownWindow.h"

namespace vemo {

/// `OnFakes` makes the model that the window shows.
template <typename OnFakes>
class WindowAtKeyboard : public testing::Test {
 protected:
  void press(Qt::Key key, Qt::KeyboardModifiers modifiers = {}) {
    QTest::keyClick(&window->window(), key, modifiers);
    offline->pass({});
    window->draw();
  }

  /// What a screen reader says of the item that has the keyboard.
  QString focusText(QAccessible::Text kind = QAccessible::Name) {
    auto* accessible = QAccessible::queryAccessibleInterface(window->window().activeFocusItem());
    return accessible ? accessible->text(kind) : QString();
  }

  /// Every stop of the Tab key, from where the keyboard is, until it comes round.
  QStringList tabStops() {
    QStringList stops;
    QList<QQuickItem*> seen;
    for (int steps = 0; steps < mostStops; ++steps) {
      press(Qt::Key_Tab);
      auto* item = window->window().activeFocusItem();
      if (seen.contains(item)) break;
      seen.append(item);
      stops.append(focusText());
    }
    return stops;
  }

  /// Tab until the item of this text has the keyboard.
  void walkTo(const QString& text, QAccessible::Text kind = QAccessible::Name) {
    for (int steps = 0; steps < mostStops && focusText(kind) != text; ++steps) press(Qt::Key_Tab);
    ASSERT_EQ(focusText(kind), text);
  }

  static constexpr int mostStops = 80;

  std::optional<OnFakes> offline;
  std::unique_ptr<ShownWindow> window;
};

}  // namespace vemo
