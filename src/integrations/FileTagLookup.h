// Which file of the project in front the user may mean by a spoken file name.
//
// Main thread only. Neither operation waits for a disk, and neither fails.
#pragma once

#include <QString>
#include <optional>

namespace vemo {

class FileTagLookup {
 public:
  virtual ~FileTagLookup() = default;

  /// Asks for the project that is in front now. Returns at once: lookups go on with the files known
  /// so far until those of the project have been read.
  virtual void refreshActiveWorkspace() = 0;

  /// "@" and the name of the first file that is meant, or nothing. `spokenExtension` may be empty.
  virtual std::optional<QString> resolveFileTag(const QString& spokenName,
                                                const QString& spokenExtension) const = 0;
};

}  // namespace vemo
