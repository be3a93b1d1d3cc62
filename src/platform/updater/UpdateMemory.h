// What an updater remembers between starts, in one small file.
//
// The newest feed and the newest key that it has seen are what an old feed and an old key are told
// by. A file that can't be read counts as absent. Main thread only.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <optional>

namespace vemo {

struct UpdateMemory {
  quint64 serial = 0;  ///< of the newest feed, under the key in force
  QByteArray key;      ///< in force
  std::optional<QDateTime> lastCheck;
  quint64 skippedBuild = 0;    ///< the newest that the user doesn't want
  quint64 installedBuild = 0;  ///< the last one, until the user knows that it has given way
  bool automaticallyChecks = true;
  bool automaticallyDownloads = true;

  /// Begins anew with `builtIn` where another key had been built in.
  static UpdateMemory read(const QString& file, const QByteArray& builtIn);
  /// False where it couldn't be kept.
  bool write(const QString& file, const QByteArray& builtIn) const;
};

}  // namespace vemo
