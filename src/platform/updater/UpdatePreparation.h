// What stands between a file that has been fetched and a version that can be installed.
#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <expected>
#include <stop_token>

#include "platform/updater/Appcast.h"
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
  NoAnswer = 4006,  ///< of the new version, which is tried again at the next check
};

struct UpdateRefusal {
  UpdateTrouble trouble;
  QString why;  ///< one line for the log
};

using UpdatePreparation = std::expected<void, UpdateRefusal>;

/// Verifies the file's signature before anything else is done with it, unpacks it into the folder,
/// which is made anew, and has the version check itself there, for which it has `limit`. Where it
/// fails, the folder is gone. Blocks; any thread.
UpdatePreparation prepareUpdate(const AppcastItem& item, const QString& file, const QByteArray& key,
                                const QString& folder, std::chrono::milliseconds limit,
                                const std::stop_token& stop);

}  // namespace vemo
