// Reading JSON that came from outside: every step may fail, and says so by value.
//
// Any thread.
#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonObject>
#include <QString>
#include <optional>

namespace vemo {

/// The object that the bytes hold, or nothing when they aren't one whole JSON object in UTF-8.
std::optional<QJsonObject> parseJsonObject(const QByteArray& json);

/// The array that the bytes hold, or nothing when they aren't one whole JSON array in UTF-8.
std::optional<QJsonArray> parseJsonArray(const QByteArray& json);

/// The string under `key`, or nothing when there is none or it is of another type.
std::optional<QString> stringIn(const QJsonObject& object, QStringView key);

/// The number under `key`, or nothing when there is none or it is of another type.
std::optional<double> numberIn(const QJsonObject& object, QStringView key);

/// One line, no white space outside strings, UTF-8.
QByteArray compactJson(const QJsonObject& object);
QByteArray compactJson(const QJsonArray& array);

}  // namespace vemo
