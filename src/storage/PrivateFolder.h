// Folders that only the user can look into. Any thread.
#pragma once

#include <QString>

namespace vemo {

/// Makes the folder and those above it, as far as they are missing, with mode 0700. Folders that
/// exist stay as they are. False when the folder doesn't exist afterwards.
bool makePrivateFolder(const QString& path);

}  // namespace vemo
