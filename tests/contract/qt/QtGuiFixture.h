// A graphical application without a screen.
#pragma once

#include <gtest/gtest.h>

#include <QGuiApplication>

#include "fakes/QtTestLoop.h"

namespace vemo {

class QtGuiFixture : public testing::Test {
 protected:
  QtGuiFixture() {
    static int argumentCount = 1;
    static char name[] = "test";
    static char* arguments[] = {name, nullptr};
    // One for the whole test program, as QtTestLoop has it.
    if (!QCoreApplication::instance()) new QGuiApplication(argumentCount, arguments);
  }
};

}  // namespace vemo
