// This program's own windows. Main thread only.
#pragma once

namespace vemo {

/// Whether the program has a place in the task bar and among the windows that one switches through.
enum class ActivationPolicy { Regular, Accessory };

class ApplicationWindows {
 public:
  virtual ~ApplicationWindows() = default;

  /// Brings every main window to the front and makes this program the active one.
  virtual void bringForward() = 0;

  /// Makes this program the active one, whichever is now; without a window that does nothing.
  virtual void activate() = 0;

  /// Regular until it is set. Holds for windows that open later, too.
  virtual ActivationPolicy activationPolicy() const = 0;
  virtual void setActivationPolicy(ActivationPolicy policy) = 0;
};

}  // namespace vemo
