#include "base/Json.h"

#include <QJsonDocument>

namespace vemo {

std::optional<QJsonObject> parseJsonObject(const QByteArray& json) {
  const auto document = QJsonDocument::fromJson(json);
  if (!document.isObject()) return std::nullopt;
  return document.object();
}

std::optional<QJsonArray> parseJsonArray(const QByteArray& json) {
  const auto document = QJsonDocument::fromJson(json);
  if (!document.isArray()) return std::nullopt;
  return document.array();
}

std::optional<QString> stringIn(const QJsonObject& object, QStringView key) {
  const auto value = object.value(key);
  if (!value.isString()) return std::nullopt;
  return value.toString();
}

std::optional<double> numberIn(const QJsonObject& object, QStringView key) {
  const auto value = object.value(key);
  if (!value.isDouble()) return std::nullopt;
  return value.toDouble();
}

QByteArray compactJson(const QJsonObject& object) {
  return QJsonDocument(object).toJson(QJsonDocument::Compact);
}

QByteArray compactJson(const QJsonArray& array) {
  return QJsonDocument(array).toJson(QJsonDocument::Compact);
}

}  // namespace vemo
