// A tap that the user feels, on machines that can give one. Main thread only; never fails.
#pragma once

namespace vemo {

class Haptics {
 public:
  virtual ~Haptics() = default;

  /// The short tap that marks something falling into place.
  virtual void alignment() = 0;
};

}  // namespace vemo
