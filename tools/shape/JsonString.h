// One JSON string to a line, as --jsonl reads and writes them.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

namespace vemo {

/// The text that the bytes hold, or nothing when they aren't one JSON string in UTF-8.
std::optional<QString> parseJsonString(const QByteArray& json);

/// Unpaired surrogates, which UTF-8 can't hold, are escaped like control characters.
QByteArray jsonString(const QString& text);

}  // namespace vemo
