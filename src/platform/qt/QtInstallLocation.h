// Where this program was started from, as the mounted file systems tell. Any thread.
#pragma once

#include "ports/InstallLocation.h"

namespace vemo {

/// `program` is the path of the executable. On a removable medium: a disk that the system calls
/// removable, or a place where desktops mount what is plugged in.
InstallLocation readInstallLocation(const QString& program);

/// Of the medium that is mounted at `root`; `blockDevices` holds what the system knows of disks and
/// their partitions.
bool isRemovableMedium(const QString& root, const QString& device,
                       const QString& blockDevices = QStringLiteral("/sys/class/block"));

}  // namespace vemo
