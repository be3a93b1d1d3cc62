// How the default microphone is attached.
//
// Main thread only. Never waits for the sound server longer than half a second; what can't be told
// is Other.
#pragma once

namespace vemo {

enum class InputTransport { BuiltIn, Bluetooth, Usb, Virtual, Other };

class InputDevice {
 public:
  virtual ~InputDevice() = default;

  virtual InputTransport transport() const = 0;
};

}  // namespace vemo
