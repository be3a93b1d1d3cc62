// Unpacks a version's archive, of which only what the feed names is taken.
//
// Files are written anew, with modes of their own and flushed to the disk; a link, a device, a path
// or a file that the feed doesn't name, one that is missing, comes twice or differs is an error,
// and what was written so far may stay. Blocks; any thread.
#pragma once

#include <QString>
#include <expected>
#include <stop_token>
#include <vector>

#include "platform/updater/Appcast.h"

namespace vemo {

/// `folder` is made, and must not exist. Ends between two files where it is stopped. The error is
/// one line for the log.
std::expected<void, QString> unpackUpdate(const QString& archive,
                                          const std::vector<AppcastFile>& files,
                                          const QString& folder, const std::stop_token& stop = {});

/// Packs the files of a folder, in their order, with nothing in the archive that depends on who
/// packs or when.
std::expected<std::vector<AppcastFile>, QString> packUpdate(const QString& folder,
                                                            const QString& archive);

}  // namespace vemo
