// The Qt application of a test program: one for all of its tests, and never destroyed, since Qt
// can't make a second one reliably.
#pragma once

#include <QCoreApplication>

namespace vemo {

/// QCoreApplication, or QGuiApplication where windows or fonts are wanted.
template <typename Application>
void makeTestApplication() {
  static int argumentCount = 1;
  static char name[] = "test";
  static char* arguments[] = {name, nullptr};
  if (!QCoreApplication::instance()) new Application(argumentCount, arguments);
}

/// As a base, it is there before a test's members.
template <typename Application>
struct TestApplication {
  TestApplication() { makeTestApplication<Application>(); }
};

}  // namespace vemo
