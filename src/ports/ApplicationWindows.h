// This program's own windows. Main thread only.
#pragma once

namespace vemo {

class ApplicationWindows {
 public:
  virtual ~ApplicationWindows() = default;

  /// Brings every main window to the front and makes this program the active one.
  virtual void bringForward() = 0;
};

}  // namespace vemo
