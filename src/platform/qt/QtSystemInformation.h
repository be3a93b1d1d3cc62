// Reads the facts of this machine and this build.
#pragma once

#include <QString>

#include "ports/SystemInformation.h"

namespace vemo {

/// The system's version is that of the distribution (VERSION_ID of os-release), its version in
/// words the PRETTY_NAME there. Model and processor are what the kernel tells of them; `root` is
/// where its files begin.
SystemInformation readSystemInformation(const QString& root = {});

/// Three numbers joined by points, whatever comes: "12" is "12.0.0", "22.04.1" is "22.4.1", and a
/// text that begins with no number is "0.0.0".
QString threePartVersion(const QString& version);

}  // namespace vemo
