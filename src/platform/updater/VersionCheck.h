// Asks a version that isn't installed yet whether it runs on this machine.
#pragma once

#include <QString>
#include <chrono>
#include <expected>
#include <stop_token>

namespace vemo {

struct VersionCheckFailure {
  QString why;  ///< one line for the log
  /// It would be no better the next time; otherwise this machine was too busy to tell.
  bool isFinal;
};

inline constexpr std::chrono::milliseconds versionCheckLimit = std::chrono::seconds(20);

/// Starts `folder`/bin/vemo to check itself, for `limit` at most, and demands the version and build
/// that it was released as. Blocks; any thread.
std::expected<void, VersionCheckFailure> checkVersion(
    const QString& folder, const QString& version, quint64 build, const std::stop_token& stop = {},
    std::chrono::milliseconds limit = versionCheckLimit);

}  // namespace vemo
