#include "storage/SettingValue.h"

#include <QJsonDocument>
#include <QJsonObject>

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

QJsonValue encodeBytes(const QByteArray& bytes) {
  // Not every run of UTF-8 comes back as it was: a byte order mark, for one, would be lost.
  const QString text = QString::fromUtf8(bytes);
  if (text.toUtf8() == bytes) return QJsonObject{{u"data"_s, text}};
  return QJsonObject{{u"base64"_s, QString::fromLatin1(bytes.toBase64())}};
}

QString textOf(const QDateTime& date) {
  return date.toUTC().toString(Qt::ISODateWithMs);
}

std::optional<QDateTime> dateOf(const QString& text) {
  const QDateTime date = QDateTime::fromString(text, Qt::ISODateWithMs).toUTC();
  // In UTC a date at the edge can leave the years 0 to 9999, which are all that can be written.
  if (!QDateTime::fromString(textOf(date), Qt::ISODateWithMs).isValid()) return std::nullopt;
  return date;
}

struct Encoder {
  QJsonValue operator()(bool value) const { return value; }
  QJsonValue operator()(const QString& value) const { return value; }
  QJsonValue operator()(const QByteArray& value) const { return encodeBytes(value); }
  QJsonValue operator()(const QDateTime& value) const {
    return QJsonObject{{u"date"_s, textOf(value)}};
  }
  QJsonValue operator()(const QJsonValue& value) const { return value; }
};

/// The value of an object with exactly one member, which names the type.
std::optional<SettingValue> decodeTagged(const QJsonObject& object) {
  if (object.size() != 1) return std::nullopt;
  if (const auto text = stringIn(object, u"data")) return text->toUtf8();
  if (const auto base64 = stringIn(object, u"base64")) {
    const auto bytes =
        QByteArray::fromBase64Encoding(base64->toLatin1(), QByteArray::AbortOnBase64DecodingErrors);
    if (bytes) return *bytes;
  }
  if (const auto text = stringIn(object, u"date")) {
    if (const auto date = dateOf(*text)) return *date;
  }
  return std::nullopt;
}

SettingValue decodeValue(const QJsonValue& json) {
  if (json.isBool()) return json.toBool();
  if (json.isString()) return json.toString();
  if (json.isObject()) {
    if (auto value = decodeTagged(json.toObject())) return *std::move(value);
  }
  return json;
}

}  // namespace

QByteArray encodeSettings(const SettingValues& values) {
  QJsonObject object;
  for (const auto& [name, value] : values) object.insert(name, std::visit(Encoder{}, value));
  return QJsonDocument(object).toJson(QJsonDocument::Indented);
}

std::optional<SettingValues> decodeSettings(const QByteArray& json) {
  const auto object = parseJsonObject(json);
  if (!object) return std::nullopt;
  SettingValues values;
  for (auto member = object->begin(); member != object->end(); ++member)
    values.emplace(member.key(), decodeValue(member.value()));
  return values;
}

}  // namespace vemo
