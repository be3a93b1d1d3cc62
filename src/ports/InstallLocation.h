// Where this program was started from. A value; any thread.
#pragma once

#include <QString>

namespace vemo {

struct InstallLocation {
  QString path;
  bool isOnRemovableMedium = false;  ///< what is plugged in, and may be gone at the next start
};

}  // namespace vemo
