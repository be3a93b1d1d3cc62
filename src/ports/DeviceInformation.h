// What this machine is like at the moment: screens, language, keyboard, microphone.
//
// Main thread only. What can't be told is left out.
#pragma once

#include <QString>
#include <QStringList>
#include <optional>

namespace vemo {

struct DeviceFacts {
  std::optional<int> displayCount;
  std::optional<QString> mainDisplay;     ///< size in pixels, "1920x1080"
  std::optional<QString> appearance;      ///< "light" or "dark"
  bool inApplicationsFolder = false;      ///< the program lies where the system keeps programs
  QStringList languages;                  ///< the user's, the preferred first, "de-DE"
  QString localeIdentifier;               ///< "de_DE"
  std::optional<QString> localeRegion;    ///< "DE"
  std::optional<QString> timeZone;        ///< "Europe/Berlin"
  QStringList inputSources;               ///< keyboard layouts, "de", "us(dvorak)"
  std::optional<QString> microphoneType;  ///< as wireName() of InputDevice.h says it
};

class DeviceInformation {
 public:
  virtual ~DeviceInformation() = default;

  virtual DeviceFacts read() const = 0;
};

}  // namespace vemo
