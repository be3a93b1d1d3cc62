// How the default microphone is attached.
//
// Main thread only. Never waits for the sound server longer than half a second; what can't be told
// is Other.
#pragma once

#include <QString>
#include <utility>

namespace vemo {

enum class InputTransport { BuiltIn, Bluetooth, Usb, Virtual, Other };

/// What requests and reports call it.
inline QString wireName(InputTransport transport) {
  switch (transport) {
    case InputTransport::BuiltIn:
      return QStringLiteral("builtIn");
    case InputTransport::Bluetooth:
      return QStringLiteral("bluetooth");
    case InputTransport::Usb:
      return QStringLiteral("usb");
    case InputTransport::Virtual:
      return QStringLiteral("virtual");
    case InputTransport::Other:
      return QStringLiteral("other");
  }
  std::unreachable();
}

class InputDevice {
 public:
  virtual ~InputDevice() = default;

  virtual InputTransport transport() const = 0;
};

}  // namespace vemo
