// Facts of this machine and this build. Constant while the program runs; any thread.
#pragma once

#include <QString>

namespace vemo {

struct SystemInformation {
  /// Major, minor and patch numbers joined by points, "12.8.0"; what the system doesn't tell is 0.
  QString systemVersion;
  /// Version of this program, "1.2.0".
  QString applicationVersion;
  /// Build of this program, "34".
  QString applicationBuild;
};

}  // namespace vemo
