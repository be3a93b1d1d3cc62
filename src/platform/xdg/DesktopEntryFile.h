// The desktop entries that this program writes for the user. Any thread.
//
// Source of the rules: the Desktop Entry Specification, version 1.5.
#pragma once

#include <QByteArray>
#include <QString>
#include <expected>

namespace vemo {

/// An argument of an Exec line, with everything escaped that means something there. In quotes only
/// where it needs them: xdg-open, on its own without a desktop, takes quotes for part of the name.
QString quotedExecArgument(const QString& argument);

/// Makes the file hold `content`, with its folder; one that does already is left as it is. A reader
/// finds the old content or the new one, never a part. The error is one line.
std::expected<void, QString> writeDesktopEntry(const QString& path, const QByteArray& content);

}  // namespace vemo
