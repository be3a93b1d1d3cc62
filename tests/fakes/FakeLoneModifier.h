// Counts how often a held modifier was given company.
#pragma once

#include "ports/LoneModifier.h"

namespace vemo {

class FakeLoneModifier : public LoneModifier {
 public:
  void accompany() override { ++accompanyCount; }

  int accompanyCount = 0;
};

}  // namespace vemo
