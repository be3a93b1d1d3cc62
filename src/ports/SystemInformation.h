// Facts of this machine and this build. Constant while the program runs; any thread.
#pragma once

#include <QString>
#include <optional>

namespace vemo {

struct SystemInformation {
  /// Major, minor and patch numbers joined by points, "12.8.0"; what the system doesn't tell is 0.
  QString systemVersion;
  /// Version of this program, "1.2.0".
  QString applicationVersion;
  /// Build of this program, "34".
  QString applicationBuild;
  /// The system's own name and version in words, "Debian GNU/Linux 12 (bookworm)".
  QString systemVersionText = {};
  /// The maker's name of this machine's model.
  std::optional<QString> deviceModel = {};
  QString processorArchitecture = {};  ///< "x86_64", "arm64"
  /// The processor's own name of itself.
  std::optional<QString> processorName = {};

  /// Version and build, "1.2.0 (34)".
  QString versionLabel() const {
    return QStringLiteral("%1 (%2)").arg(applicationVersion, applicationBuild);
  }
};

}  // namespace vemo
