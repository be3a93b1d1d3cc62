// The user's own words: "hear this, write that", and trigger phrases for saved texts.
//
// Stored as JSON arrays of objects with exactly these fields, all strings. Any thread; bytes that
// aren't such an array, or one whose elements lack a field, are no list at all.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>
#include <vector>

namespace vemo {

struct CustomDictionaryEntry {
  QString id;
  QString phrase;       ///< what is heard, one or more words
  QString replacement;  ///< what is written

  friend bool operator==(const CustomDictionaryEntry&, const CustomDictionaryEntry&) = default;
};

struct CustomShortcutEntry {
  QString id;
  QString trigger;  ///< what is said
  QString snippet;  ///< what is written, maybe several lines

  friend bool operator==(const CustomShortcutEntry&, const CustomShortcutEntry&) = default;
};

std::optional<std::vector<CustomDictionaryEntry>> decodeDictionary(const QByteArray& json);
std::optional<std::vector<CustomShortcutEntry>> decodeShortcuts(const QByteArray& json);

/// The stored form; nothing when a text isn't UTF-16, or when it would be too long to be read
/// again.
std::optional<QByteArray> encodeDictionary(const std::vector<CustomDictionaryEntry>& entries);
std::optional<QByteArray> encodeShortcuts(const std::vector<CustomShortcutEntry>& entries);

/// The pattern for a phrase between word boundaries: any case, any white space between its words.
QString phrasePattern(const QString& phrase);

/// More bytes than these are not read: they couldn't be within the time of a dictation.
inline constexpr qsizetype maxStoredBytes = 2 * 1024 * 1024;

}  // namespace vemo
