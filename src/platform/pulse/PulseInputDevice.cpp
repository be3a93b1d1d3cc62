#include "platform/pulse/PulseInputDevice.h"

#include "platform/pulse/PulseSource.h"

using namespace std::chrono_literals;

namespace vemo {

InputTransport PulseInputDevice::transport() const {
  const auto microphone = lookUpMicrophone(m_server, PulseServer::within(500ms));
  if (!microphone || !*microphone) return InputTransport::Other;
  return transportOf(**microphone);
}

}  // namespace vemo
