// A setting's value, and the form that all settings together take in their file: one JSON object
// with a member per setting, such as
//
//   {
//     "isEnabled": true,
//     "dictationLanguage": "hi",
//     "recentDictations": {"data": "[]"},             bytes that are UTF-8, else {"base64": "…"}
//     "telemetryFirstLaunchAt": {"date": "2026-03-14T09:26:53.000Z"}
//   }
//
// Any thread. Decoding takes any bytes: what isn't such an object is nothing, and a member of
// another form is kept as it was found and written back unchanged.
#pragma once

#include <QByteArray>
#include <QDateTime>
#include <QJsonValue>
#include <QString>
#include <map>
#include <optional>
#include <variant>

namespace vemo {

/// The QJsonValue stands for a member of a form that this version doesn't know.
using SettingValue = std::variant<bool, QString, QByteArray, QDateTime, QJsonValue>;

using SettingValues = std::map<QString, SettingValue>;

QByteArray encodeSettings(const SettingValues& values);

std::optional<SettingValues> decodeSettings(const QByteArray& json);

}  // namespace vemo
