// This program's windows, as Qt lists them.
#pragma once

#include "ports/ApplicationWindows.h"

namespace vemo {

class QtApplicationWindows : public ApplicationWindows {
 public:
  void bringForward() override;
};

}  // namespace vemo
