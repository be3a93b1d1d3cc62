#include "session/DictationItem.h"

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

constexpr Clock::WallTime referenceDate =
    std::chrono::sys_days{std::chrono::year{2001} / std::chrono::January / 1};

using Seconds = std::chrono::duration<double>;

/// Further off than any date that a clock can show, and still within the clock's range.
constexpr double mostSeconds = 200.0 * 365.25 * 86'400.0;

std::optional<DictationItem> decodeItem(const QJsonObject& object) {
  const auto id = stringIn(object, u"id");
  const auto text = stringIn(object, u"text");
  const auto timestamp = numberIn(object, u"timestamp");
  if (!id || !text || !timestamp || std::abs(*timestamp) > mostSeconds) return std::nullopt;
  const QUuid uuid(*id);
  if (uuid.isNull()) return std::nullopt;
  const auto sinceReference = std::chrono::round<Clock::WallTime::duration>(Seconds(*timestamp));
  return DictationItem{uuid, *text, referenceDate + sinceReference};
}

}  // namespace

QByteArray encodeDictations(const std::vector<DictationItem>& items) {
  QJsonArray array;
  for (const auto& item : items) {
    array.append(QJsonObject{
        {u"id"_s, item.id.toString(QUuid::WithoutBraces).toUpper()},
        {u"text"_s, item.text},
        {u"timestamp"_s, Seconds(item.timestamp - referenceDate).count()},
    });
  }
  return compactJson(array);
}

std::optional<std::vector<DictationItem>> decodeDictations(const QByteArray& json) {
  const auto array = parseJsonArray(json);
  if (!array) return std::nullopt;
  std::vector<DictationItem> items;
  for (const auto& value : *array) {
    auto item = decodeItem(value.toObject());
    if (!item) return std::nullopt;
    items.push_back(*std::move(item));
  }
  return items;
}

}  // namespace vemo
