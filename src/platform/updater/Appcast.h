// The feed of updates: which versions there are, for whom, and every file that each is made of.
//
// A plain value. A feed that isn't whole is an error in one line and gives nothing. Any thread.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QString>
#include <QStringList>
#include <expected>
#include <optional>
#include <vector>

#include "ports/Updater.h"

namespace vemo {

struct AppcastFile {
  QString path;  ///< below the version's folder, "bin/vemo"
  qint64 size = 0;
  QByteArray sha256;
  bool isExecutable = false;

  friend bool operator==(const AppcastFile&, const AppcastFile&) = default;
};

struct AppcastItem {
  UpdateItem shown;
  quint64 build = 0;
  QString channel;               ///< empty: everybody's
  QString minimumSystemVersion;  ///< "12.8"; empty: any
  QString architecture;          ///< "x86_64"; empty: any
  QString archive;               ///< the name of a file beside the feed
  qint64 archiveSize = 0;
  QByteArray archiveSignature;
  std::vector<AppcastFile> files;

  friend bool operator==(const AppcastItem&, const AppcastItem&) = default;
};

struct Appcast {
  static constexpr qsizetype largestFeed = 4 * 1024 * 1024;
  static constexpr qint64 largestArchive = 1024LL * 1024 * 1024;
  static constexpr qint64 largestVersion = 4 * largestArchive;  ///< unpacked

  quint64 serial = 0;  ///< counts the feeds up
  QDateTime expires;
  quint64 days = 30;  ///< from when it was signed to that, for whoever signs the next one
  std::vector<AppcastItem> items;

  static std::expected<Appcast, QString> read(const QByteArray& xml);
  QByteArray write() const;

  friend bool operator==(const Appcast&, const Appcast&) = default;
};

/// What a machine takes.
struct UpdateWish {
  quint64 newerThan = 0;  ///< a build
  QStringList channels;   ///< beside everybody's
  QString systemVersion;  ///< "0.0.0" where the system doesn't tell: whatever is asked for fits
  QString architecture;
};

/// The newest item that fits; critical, too, where one that it passes over is.
std::optional<AppcastItem> chooseUpdate(const Appcast& appcast, const UpdateWish& wish);

/// Whether the path stays below the folder that it is put in.
bool isPathInside(const QString& path);

}  // namespace vemo
