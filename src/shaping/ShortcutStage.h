// Expands trigger phrases into the user's saved texts: a text that is a trigger and nothing else
// becomes the snippet as it is stored, and triggers within a text are expanded, longest first.
//
// Main thread. A stored list is taken apart once and kept until other bytes are stored; one that
// doesn't decode counts as empty.
#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>
#include <optional>
#include <vector>

#include "shaping/CustomEntries.h"
#include "shaping/RuleSequence.h"
#include "shaping/Shaped.h"

namespace vemo {

class ShortcutStage {
 public:
  /// `stored`: the setting customShortcutEntries, if there is one.
  Shaped apply(const QString& text, const std::optional<QByteArray>& stored,
               const TimeBudget& budget);

 private:
  void read(const QByteArray& stored);

  QByteArray m_stored;
  QHash<QString, QString> m_snippetOfUtterance;
  RuleSequence m_triggers;
};

/// How two utterances are compared: in lower case, without blanks and then punctuation at the ends.
QString spokenForm(const QString& text);

}  // namespace vemo
