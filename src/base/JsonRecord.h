// Reads the fields of one JSON object that must have a certain shape: a required field that is
// missing, or any field of another type than asked for, makes the record unsound as a whole. A
// field that is null counts as absent; fields that nobody asks for don't count.
//
// Any thread.
#pragma once

#include <QJsonObject>
#include <QString>
#include <cstdint>
#include <optional>

namespace vemo {

class JsonRecord {
 public:
  explicit JsonRecord(QJsonObject object) : m_object(std::move(object)) {}
  /// Unsound when the value is no object.
  explicit JsonRecord(const QJsonValue& value);

  std::optional<QString> string(QStringView key);
  std::optional<bool> boolean(QStringView key);
  std::optional<double> number(QStringView key);
  /// A number without a fraction that fits.
  std::optional<std::int64_t> integer(QStringView key);
  std::optional<QJsonObject> object(QStringView key);

  QString requiredString(QStringView key);
  QJsonObject requiredObject(QStringView key);
  QJsonArray requiredArray(QStringView key);

  /// Whether everything read so far had its type.
  bool isSound() const { return m_isSound; }

 private:
  enum class Presence { Optional, Required };
  /// The value under the key when it is of that type.
  std::optional<QJsonValue> find(QStringView key, QJsonValue::Type type, Presence presence);

  QJsonObject m_object;
  bool m_isSound = true;
};

}  // namespace vemo
