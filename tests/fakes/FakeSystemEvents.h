// System events that happen when a test says so. An event that nobody listens to fails the test.
#pragma once

#include <gtest/gtest.h>

#include "ports/SystemEvents.h"

namespace vemo {

class FakeSystemEvents : public SystemEvents {
 public:
  void wake() const { tell(onDidWake); }
  void becomeActive() const { tell(onDidBecomeActive); }

 private:
  static void tell(const std::function<void()>& listener) {
    if (listener)
      listener();
    else
      ADD_FAILURE() << "a system event happened, and nobody listens";
  }
};

}  // namespace vemo
