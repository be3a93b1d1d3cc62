// What stands between a file that has been fetched and a version that can be installed.
#pragma once

#include <QByteArray>
#include <QString>
#include <chrono>
#include <expected>
#include <stop_token>

#include "platform/updater/Appcast.h"
#include "platform/updater/UpdateTrouble.h"

namespace vemo {

using UpdatePreparation = std::expected<void, UpdateRefusal>;

/// Verifies the file's signature before anything else is done with it, unpacks it into the folder,
/// which is made anew, and has the version check itself there, for which it has `limit`. Where it
/// fails, the folder is gone. Blocks; any thread.
UpdatePreparation prepareUpdate(const AppcastItem& item, const QString& file, const QByteArray& key,
                                const QString& folder, std::chrono::milliseconds limit,
                                const std::stop_token& stop);

}  // namespace vemo
