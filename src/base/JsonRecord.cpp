#include "base/JsonRecord.h"

#include <QJsonArray>
#include <limits>

namespace vemo {

JsonRecord::JsonRecord(const QJsonValue& value)
    : m_object(value.toObject()), m_isSound(value.isObject()) {}

std::optional<QJsonValue> JsonRecord::find(QStringView key, QJsonValue::Type type,
                                           Presence presence) {
  const QJsonValue value = m_object.value(key);
  if (value.type() == type) return value;
  const bool isAbsent = value.isUndefined() || value.isNull();
  if (!isAbsent || presence == Presence::Required) m_isSound = false;
  return std::nullopt;
}

std::optional<QString> JsonRecord::string(QStringView key) {
  const auto value = find(key, QJsonValue::String, Presence::Optional);
  return value ? std::optional(value->toString()) : std::nullopt;
}

std::optional<bool> JsonRecord::boolean(QStringView key) {
  const auto value = find(key, QJsonValue::Bool, Presence::Optional);
  return value ? std::optional(value->toBool()) : std::nullopt;
}

std::optional<double> JsonRecord::number(QStringView key) {
  const auto value = find(key, QJsonValue::Double, Presence::Optional);
  return value ? std::optional(value->toDouble()) : std::nullopt;
}

std::optional<std::int64_t> JsonRecord::integer(QStringView key) {
  const auto value = find(key, QJsonValue::Double, Presence::Optional);
  if (!value) return std::nullopt;
  // A number that is no integer comes back as whatever is asked for instead.
  const qint64 number = value->toInteger(std::numeric_limits<qint64>::min());
  if (number == value->toInteger(std::numeric_limits<qint64>::max())) return number;
  m_isSound = false;
  return std::nullopt;
}

std::optional<QJsonObject> JsonRecord::object(QStringView key) {
  const auto value = find(key, QJsonValue::Object, Presence::Optional);
  return value ? std::optional(value->toObject()) : std::nullopt;
}

QString JsonRecord::requiredString(QStringView key) {
  const auto value = find(key, QJsonValue::String, Presence::Required);
  return value ? value->toString() : QString();
}

QJsonObject JsonRecord::requiredObject(QStringView key) {
  const auto value = find(key, QJsonValue::Object, Presence::Required);
  return value ? value->toObject() : QJsonObject();
}

QJsonArray JsonRecord::requiredArray(QStringView key) {
  const auto value = find(key, QJsonValue::Array, Presence::Required);
  return value ? value->toArray() : QJsonArray();
}

}  // namespace vemo
