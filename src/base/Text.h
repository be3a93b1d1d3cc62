// What "characters", "blank" and "word" mean in this program.
//
// A character is what a person sees as one: an extended grapheme cluster (Unicode Standard Annex
// 29). White space is Unicode's White_Space property, which includes line ends. All functions take
// any UTF-16, unpaired surrogates included, and never fail. Any thread.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>

namespace vemo {

/// How many grapheme clusters the text has.
qsizetype characterCount(QStringView text);

/// The first `count` grapheme clusters.
QString firstCharacters(const QString& text, qsizetype count);

/// The text without white space at its two ends.
QString trimmed(const QString& text);

/// How many runs of non-white-space the text has.
qsizetype wordCount(QStringView text);

/// Unicode's full lower-casing, without the special cases of any locale.
QString lowerCased(const QString& text);

/// UTF-8 on one line: a line break in a name must not begin another header of a request.
QByteArray headerValue(const QString& text);

/// "true" or "false", as logs write it.
QString trueOrFalse(bool value);

}  // namespace vemo
