// Small files that belong to the user and to nobody else, read and replaced as a whole.
//
// A link, anything but a plain file, and a file that another user owns or may touch are errors:
// what they hold could be somebody else's. Any thread.
#pragma once

#include <QByteArray>
#include <expected>

namespace vemo {

enum class FileTrouble {
  Missing,
  NotAPlainFile,  ///< a link, a folder, a pipe
  OtherOwner,
  OpenToOthers,  ///< its mode lets other users read or write it
  TooLarge,
  Damaged,  ///< not what it was when it was written
  Failed,   ///< the disk refuses
};

/// What the log says of it.
const char* nameOf(FileTrouble trouble);

/// The whole file; TooLarge when there are more bytes than `largest`.
std::expected<QByteArray, FileTrouble> readOwnFile(const QByteArray& path, qsizetype largest);

/// Puts the file in place of whatever the path names, with mode 0600. A kill at any moment leaves
/// the old one or the new one.
std::expected<void, FileTrouble> replaceOwnFile(const QByteArray& path, const QByteArray& content);

/// Missing when there is nothing to remove.
std::expected<void, FileTrouble> removeOwnFile(const QByteArray& path);

/// Makes the folder and those above it, with mode 0700, as far as they are missing. Fails on one
/// that belongs to another user or that others may write to.
std::expected<void, FileTrouble> makeOwnFolder(const QByteArray& path);

}  // namespace vemo
