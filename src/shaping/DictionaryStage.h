// Fixes words: the product's own name, then the user's dictionary, entry after entry in the order
// in which it is stored.
//
// Main thread. A stored list is taken apart once and kept until other bytes are stored; one that
// doesn't decode counts as empty.
#pragma once

#include <QByteArray>
#include <QString>
#include <optional>

#include "shaping/RuleSequence.h"
#include "shaping/Shaped.h"

namespace vemo {

class DictionaryStage {
 public:
  DictionaryStage();

  /// `stored`: the setting customDictionaryEntries, if there is one.
  Shaped apply(const QString& text, const std::optional<QByteArray>& stored,
               const TimeBudget& budget);

 private:
  void read(const QByteArray& stored);

  RuleSequence m_productName;
  QByteArray m_stored;
  RuleSequence m_entries;
};

}  // namespace vemo
