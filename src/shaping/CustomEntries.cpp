#include "shaping/CustomEntries.h"

#include <QStringList>

#include "base/Json.h"
#include "base/Regex.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

template <typename Entry>
std::optional<std::vector<Entry>> decode(const QByteArray& json, QStringView heardKey,
                                         QStringView writtenKey) {
  const auto array = parseJsonArray(json);
  if (!array) return std::nullopt;
  std::vector<Entry> entries;
  entries.reserve(static_cast<std::size_t>(array->size()));
  for (const auto& element : *array) {
    const QJsonObject object = element.toObject();
    auto id = stringIn(object, u"id");
    auto heard = stringIn(object, heardKey);
    auto written = stringIn(object, writtenKey);
    if (!id || !heard || !written) return std::nullopt;
    entries.push_back({*std::move(id), *std::move(heard), *std::move(written)});
  }
  return entries;
}

std::optional<QByteArray> encode(const QJsonArray& array, bool isText) {
  if (!isText) return std::nullopt;
  const QByteArray json = compactJson(array);
  return json.size() <= maxStoredBytes ? std::optional(json) : std::nullopt;
}

}  // namespace

std::optional<std::vector<CustomDictionaryEntry>> decodeDictionary(const QByteArray& json) {
  return decode<CustomDictionaryEntry>(json, u"phrase", u"replacement");
}

std::optional<std::vector<CustomShortcutEntry>> decodeShortcuts(const QByteArray& json) {
  return decode<CustomShortcutEntry>(json, u"trigger", u"snippet");
}

std::optional<QByteArray> encodeDictionary(const std::vector<CustomDictionaryEntry>& entries) {
  QJsonArray array;
  bool isText = true;
  for (const auto& [id, phrase, replacement] : entries) {
    array.append(
        QJsonObject{{u"id"_s, id}, {u"phrase"_s, phrase}, {u"replacement"_s, replacement}});
    isText = isText && id.isValidUtf16() && phrase.isValidUtf16() && replacement.isValidUtf16();
  }
  return encode(array, isText);
}

std::optional<QByteArray> encodeShortcuts(const std::vector<CustomShortcutEntry>& entries) {
  QJsonArray array;
  bool isText = true;
  for (const auto& [id, trigger, snippet] : entries) {
    array.append(QJsonObject{{u"id"_s, id}, {u"trigger"_s, trigger}, {u"snippet"_s, snippet}});
    isText = isText && id.isValidUtf16() && trigger.isValidUtf16() && snippet.isValidUtf16();
  }
  return encode(array, isText);
}

QString phrasePattern(const QString& phrase) {
  QStringList pieces;
  for (const QString& piece : phrase.split(u' ', Qt::SkipEmptyParts))
    pieces.append(Regex::escapedPattern(piece));
  return u"(?i)\\b"_s + pieces.join(u"\\s+"_s) + u"\\b"_s;
}

}  // namespace vemo
