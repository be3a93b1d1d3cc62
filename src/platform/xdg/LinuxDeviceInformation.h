// What a Linux desktop tells of itself. Main thread only.
#pragma once

#include <QStringList>
#include <functional>
#include <memory>

#include "ports/DeviceInformation.h"
#include "ports/InputDevice.h"

namespace vemo {

class DesktopAppearance;

class LinuxDeviceInformation : public DeviceInformation {
 public:
  /// `inputSources` reads the keyboard layouts. Made after the QGuiApplication.
  LinuxDeviceInformation(const InputDevice& inputDevice, std::function<QStringList()> inputSources);
  ~LinuxDeviceInformation() override;

  DeviceFacts read() const override;

 private:
  const InputDevice& m_inputDevice;
  const std::function<QStringList()> m_inputSources;
  const std::unique_ptr<DesktopAppearance> m_appearance;
};

}  // namespace vemo
