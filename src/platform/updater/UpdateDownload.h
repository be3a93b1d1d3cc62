// Fetching an archive piece by piece, from where it stopped the last time.
#pragma once

#include <QString>
#include <QUrl>
#include <expected>
#include <stop_token>

#include "base/Task.h"
#include "ports/HttpSession.h"

namespace vemo {

struct UpdateDownload {
  /// In bytes; what has come of a piece when it breaks off is fetched anew.
  static constexpr qint64 pieceSize = 1024 * 1024;

  QUrl address;
  qint64 size;   ///< of the whole, in bytes; no more is asked for or taken
  QString file;  ///< holds what has come, also of an earlier attempt
};

/// Errors are one line for the log. Main thread.
Task<std::expected<void, QString>> download(HttpSession& session, UpdateDownload wanted,
                                            std::stop_token stop);

}  // namespace vemo
