// Fonts to draw with, and no screen.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

namespace vemo {

class UiFixture : public testing::Test {
 protected:
  UiFixture() {
    static int argumentCount = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    // One for the whole test program: Qt can't make a second one reliably.
    if (!QGuiApplication::instance()) new QGuiApplication(argumentCount, arguments);
  }
};

}  // namespace vemo
