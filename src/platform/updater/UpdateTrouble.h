// What goes wrong with an update.
#pragma once

#include <QString>

#include "ports/Updater.h"

namespace vemo {

/// The codes of the updater's own errors.
enum class UpdateTrouble {
  FeedUnreadable = 1000,
  NoUpdate = UpdateError::noUpdate,
  FeedRefused = 1002,
  DownloadFailed = 2001,
  ArchiveRefused = 3000,
  NotSigned = 3001,
  InstallationFailed = 4005,
  NoAnswer =
      4006,  ///< of the new version in time, or to its end; it is asked again at the next check
};

struct UpdateRefusal {
  UpdateTrouble trouble;
  QString why;  ///< one line for the log
};

}  // namespace vemo
