// A device as the test describes it.
#pragma once

#include "ports/DeviceInformation.h"

namespace vemo {

class FakeDeviceInformation : public DeviceInformation {
 public:
  DeviceFacts facts;

  DeviceFacts read() const override {
    ++m_readCount;
    return facts;
  }

  int readCount() const { return m_readCount; }

 private:
  mutable int m_readCount = 0;
};

}  // namespace vemo
