// Whether the keyboard focus is where nothing must be pasted: a password field. Main thread only.
#pragma once

namespace vemo {

class SecureInput {
 public:
  virtual ~SecureInput() = default;

  /// False when it can't be told. Waits for the desktop at most 50 ms.
  virtual bool isActive() const = 0;
};

}  // namespace vemo
