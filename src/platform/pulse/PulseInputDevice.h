// How the microphone of this moment is attached, as the sound server's device properties tell.
#pragma once

#include "platform/pulse/PulseServer.h"
#include "ports/InputDevice.h"

namespace vemo {

class PulseInputDevice : public InputDevice {
 public:
  explicit PulseInputDevice(PulseServer& server) : m_server(server) {}

  InputTransport transport() const override;

 private:
  PulseServer& m_server;
};

}  // namespace vemo
