// Makes file names out of spoken words.
//
// Any thread; nothing here fails.
#pragma once

#include <QString>
#include <QStringView>

namespace vemo {

/// The extension that is meant by what was heard; an unknown one comes back in lower case, without
/// white space at its ends.
QString normalizeExtension(const QString& spoken);

/// A file stem: that of the table, or else the words put together, each with a capital.
QString spokenToFileName(const QString& spoken);

/// The text with its first character in upper case.
QString capitalized(const QString& text);

/// A pattern of FileTagPatterns.h with the spoken extensions in the place of EXT.
QString withSpokenExtensions(QStringView pattern);

}  // namespace vemo
