// Counts the taps.
#pragma once

#include "ports/Haptics.h"

namespace vemo {

class FakeHaptics : public Haptics {
 public:
  void alignment() override { ++taps; }

  int taps = 0;
};

}  // namespace vemo
