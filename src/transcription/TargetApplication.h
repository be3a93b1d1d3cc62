// The application that a dictation is meant for, as requests tell it to the service.
#pragma once

#include <QString>

#include "ports/FocusedApplication.h"

namespace vemo {

struct TargetApplication {
  QString name;        ///< "Desktop App" when the application tells none
  QString identifier;  ///< empty when the application tells none

  /// The application in front. While this program is in front, or nothing is, an active ordinary
  /// application takes its place, if there is one.
  static TargetApplication current(const FocusedApplication& focusedApplication);
};

}  // namespace vemo
