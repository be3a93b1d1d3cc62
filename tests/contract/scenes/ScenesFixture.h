// A graphical application on a real display, for tests of the windows.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

#include "fakes/TestApplication.h"

namespace vemo {

class ScenesFixture : public testing::Test {
 protected:
  /// Before anything that starts threads: Qt takes the first thread that it meets for the main one,
  /// and wakes the event loop of that one when X events come.
  static void SetUpTestSuite() {
    makeTestApplication<QGuiApplication>();
    QGuiApplication::setQuitOnLastWindowClosed(false);
  }
};

}  // namespace vemo
