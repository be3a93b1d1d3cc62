// One entry of the history, and how the list is stored.
#pragma once

#include <QByteArray>
#include <QString>
#include <QUuid>
#include <optional>
#include <vector>

#include "base/Clock.h"

namespace vemo {

struct DictationItem {
  QUuid id;
  QString text;  ///< as pasted, trimmed
  Clock::WallTime timestamp;

  friend bool operator==(const DictationItem&, const DictationItem&) = default;
};

/// A JSON array of objects with `id` (UUID text), `text`, and `timestamp` in seconds since the
/// start of 2001 (UTC).
QByteArray encodeDictations(const std::vector<DictationItem>& items);

/// Nothing when any part of the bytes isn't of that form.
std::optional<std::vector<DictationItem>> decodeDictations(const QByteArray& json);

}  // namespace vemo
