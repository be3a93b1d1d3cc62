// A default microphone that is attached as the test says.
#pragma once

#include <gtest/gtest.h>

#include <optional>

#include "ports/InputDevice.h"

namespace vemo {

class FakeInputDevice : public InputDevice {
 public:
  InputTransport transport() const override {
    if (!m_transport) ADD_FAILURE() << "the transport was asked for, and no test said which";
    return m_transport.value_or(InputTransport::Other);
  }

  void setTransport(InputTransport transport) { m_transport = transport; }

 private:
  std::optional<InputTransport> m_transport;
};

}  // namespace vemo
