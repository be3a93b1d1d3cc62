#include "storage/CustomKeyShortcut.h"

#include <QHash>
#include <limits>

#include "base/Json.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

bool isAbsent(const QJsonValue& value) {
  return value.isUndefined() || value.isNull();
}

std::optional<qint64> integer(const QJsonValue& value) {
  // A number that is no integer comes back as whatever is asked for instead.
  constexpr qint64 lowest = std::numeric_limits<qint64>::min();
  if (!value.isDouble()) return std::nullopt;
  const qint64 number = value.toInteger(lowest);
  return number == lowest ? std::nullopt : std::optional(number);
}

}  // namespace

std::size_t qHash(const CustomKeyShortcut& shortcut, std::size_t seed) {
  return qHashMulti(seed, shortcut.keyCode.value_or(-1), shortcut.modifierFlagsRaw,
                    shortcut.isModifierOnly, shortcut.presetId.value_or(QString()));
}

QByteArray encodeShortcut(const CustomKeyShortcut& shortcut) {
  QJsonObject object{
      {u"modifierFlagsRaw"_s, static_cast<qint64>(shortcut.modifierFlagsRaw)},
      {u"isModifierOnly"_s, shortcut.isModifierOnly},
  };
  if (shortcut.keyCode) object.insert(u"keyCode"_s, static_cast<qint64>(*shortcut.keyCode));
  if (shortcut.presetId) object.insert(u"presetId"_s, *shortcut.presetId);
  return compactJson(object);
}

std::optional<CustomKeyShortcut> decodeShortcut(const QByteArray& json) {
  const auto object = parseJsonObject(json);
  if (!object) return std::nullopt;
  const auto flags = integer(object->value(u"modifierFlagsRaw"));
  const auto isModifierOnly = object->value(u"isModifierOnly");
  if (!flags || *flags < 0 || !isModifierOnly.isBool()) return std::nullopt;

  CustomKeyShortcut shortcut;
  shortcut.modifierFlagsRaw = static_cast<std::uint64_t>(*flags);
  shortcut.isModifierOnly = isModifierOnly.toBool();
  if (const auto keyCode = object->value(u"keyCode"); !isAbsent(keyCode)) {
    shortcut.keyCode = integer(keyCode);
    if (!shortcut.keyCode) return std::nullopt;
  }
  if (const auto presetId = object->value(u"presetId"); !isAbsent(presetId)) {
    if (!presetId.isString()) return std::nullopt;
    shortcut.presetId = presetId.toString();
  }
  return shortcut;
}

}  // namespace vemo
