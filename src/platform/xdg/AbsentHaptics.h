// A machine that can't give a tap.
#pragma once

#include "ports/Haptics.h"

namespace vemo {

class AbsentHaptics : public Haptics {
 public:
  void alignment() override {}
};

}  // namespace vemo
