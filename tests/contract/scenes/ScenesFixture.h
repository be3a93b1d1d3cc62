// A graphical application on a real display, for tests of the windows.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

namespace vemo {

class ScenesFixture : public testing::Test {
 protected:
  /// Before anything that starts threads: Qt takes the first thread that it meets for the main one,
  /// and wakes the event loop of that one when X events come.
  static void SetUpTestSuite() {
    static int argumentCount = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    if (!QGuiApplication::instance()) new QGuiApplication(argumentCount, arguments);
    QGuiApplication::setQuitOnLastWindowClosed(false);
  }
};

}  // namespace vemo
