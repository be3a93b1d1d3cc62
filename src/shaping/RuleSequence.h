// Runs many rewriting rules over a text, one after the other, each over all that the one before has
// left, with the same result as if every pattern were tried everywhere.
//
// What saves the time: patterns are compiled when they are first needed and kept, a rule is spared
// where none of its cues begins, and it is tried at those places alone. After a rule has changed
// the text, the surroundings of the changes are looked through again, since rules feed each other.
//
// Main thread. A pattern that doesn't compile is skipped. Out of time, the text is given up.
#pragma once

#include <QList>
#include <QString>
#include <QStringView>
#include <functional>
#include <optional>
#include <span>
#include <vector>

#include "base/Regex.h"
#include "shaping/CueIndex.h"
#include "shaping/RewriteRule.h"
#include "shaping/Shaped.h"

namespace vemo {

class TimeBudget;

class RuleSequence {
 public:
  /// What a match becomes; nothing leaves it as it is.
  using Rewrite = std::function<std::optional<QString>(const QString& text, const RegexMatch&)>;

  /// The pattern for a phrase, made when it is first needed: of thousands few ever are.
  using PatternFor = QString (*)(const QString& phrase);

  struct Rule {
    QString pattern;  ///< or the phrase that `patternFor` makes one of
    PatternFor patternFor = nullptr;
    CaseMatching caseMatching = CaseMatching::Sensitive;
    QString replacement = QString();  ///< inserted as it is, unless there is a `rewrite`
    Rewrite rewrite = nullptr;
    QString literal = QString();  ///< replaced instead, in any case, when the pattern won't compile
  };

  /// `cues` as in RewriteRule: every match begins with one of them.
  void add(Rule rule, const QList<QStringView>& cues);
  void add(std::span<const RewriteRule> table, CaseMatching caseMatching);

  Shaped apply(const QString& text, const TimeBudget& budget);

 private:
  struct Entry {
    Rule rule;
    std::vector<CueIndex::Cue> cues;
    std::optional<std::expected<Regex, RegexError>> regex;
  };
  class Run;

  std::vector<Entry> m_entries;
  CueIndex m_index;
  std::vector<std::vector<std::uint32_t>> m_entriesOfCue;
};

/// The text with each match replaced by what `rewrite` makes of it. Matches are in their order.
Shaped replacedMatches(const QString& text, std::span<const RegexMatch> matches,
                       const RuleSequence::Rewrite& rewrite, const TimeBudget& budget);

}  // namespace vemo
