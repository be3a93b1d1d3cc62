// Counts how often the program's windows were brought to the front.
#pragma once

#include "ports/ApplicationWindows.h"

namespace vemo {

class FakeApplicationWindows : public ApplicationWindows {
 public:
  void bringForward() override { ++m_bringForwardCount; }

  int bringForwardCount() const { return m_bringForwardCount; }

 private:
  int m_bringForwardCount = 0;
};

}  // namespace vemo
