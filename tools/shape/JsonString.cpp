#include "JsonString.h"

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

void appendEscaped(QByteArray& json, char16_t unit) {
  json += "\\u" + QByteArray::number(unit, 16).rightJustified(4, '0');
}

}  // namespace

std::optional<QString> parseJsonString(const QByteArray& json) {
  const auto array = parseJsonArray('[' + json + ']');
  if (!array || array->size() != 1 || !array->first().isString()) return std::nullopt;
  return array->first().toString();
}

QByteArray jsonString(const QString& text) {
  QByteArray json = "\"";
  qsizetype plainStart = 0;
  const auto appendPlainUpTo = [&](qsizetype end) {
    json += QStringView(text).sliced(plainStart, end - plainStart).toUtf8();
    plainStart = end + 1;
  };
  for (qsizetype i = 0; i < text.size(); ++i) {
    const QChar unit = text[i];
    if (unit.isHighSurrogate() && i + 1 < text.size() && text[i + 1].isLowSurrogate()) {
      ++i;
    } else if (unit == u'"' || unit == u'\\') {
      appendPlainUpTo(i);
      json += '\\';
      json += static_cast<char>(unit.unicode());
    } else if (unit < u' ' || unit.isSurrogate()) {
      appendPlainUpTo(i);
      appendEscaped(json, unit.unicode());
    }
  }
  appendPlainUpTo(text.size());
  return json += '"';
}

}  // namespace vemo
