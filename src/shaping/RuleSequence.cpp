#include "shaping/RuleSequence.h"

#include <algorithm>
#include <iterator>
#include <set>
#include <utility>

#include "shaping/TimeBudget.h"

namespace vemo {

namespace {

/// A stretch of the old text and what stands there now.
struct Change {
  TextRange before;
  QString after;
};

std::expected<std::vector<Change>, ShapingFailure> changesFor(const QString& text,
                                                              std::span<const RegexMatch> matches,
                                                              const RuleSequence::Rewrite& rewrite,
                                                              const TimeBudget& budget) {
  std::vector<Change> changes;
  qsizetype growth = 0;
  for (const auto& match : matches) {
    if (changes.size() % 64 == 63 && budget.isSpent())
      return std::unexpected(ShapingFailure::OutOfTime);
    auto after = rewrite(text, match);
    if (!after) continue;
    growth += after->size() - match[0].length;
    if (growth > maxGrowth) return std::unexpected(ShapingFailure::TooLong);
    changes.push_back({match[0], *std::move(after)});
  }
  return changes;
}

QString changed(const QString& text, std::span<const Change> changes) {
  qsizetype size = text.size();
  for (const auto& change : changes) size += change.after.size() - change.before.length;
  QString result;
  result.reserve(size);
  qsizetype copied = 0;
  for (const auto& change : changes) {
    result += QStringView(text).sliced(copied, change.before.start - copied);
    result += change.after;
    copied = change.before.start + change.before.length;
  }
  return result += QStringView(text).sliced(copied);
}

std::vector<RegexMatch> literalMatches(const QString& text, const QString& literal) {
  std::vector<RegexMatch> matches;
  for (qsizetype at = 0; (at = text.indexOf(literal, at, Qt::CaseInsensitive)) >= 0;
       at += literal.size())
    matches.push_back({{at, literal.size()}});
  return matches;
}

}  // namespace

Shaped replacedMatches(const QString& text, std::span<const RegexMatch> matches,
                       const RuleSequence::Rewrite& rewrite, const TimeBudget& budget) {
  const auto changes = changesFor(text, matches, rewrite, budget);
  if (!changes) return std::unexpected(changes.error());
  return changed(text, *changes);
}

/// One text on its way through the rules.
class RuleSequence::Run {
 public:
  Run(RuleSequence& sequence, const QString& text, const TimeBudget& budget)
      : m_sequence(sequence),
        m_text(text),
        m_maxSize(text.size() + maxGrowth),
        m_budget(budget),
        m_isAwake(sequence.m_index.cueCount()) {
    m_places = sequence.m_index.placesIn(m_text, 0, m_text.size());
    wake(m_places, 0);
  }

  Shaped toTheEnd() {
    while (!m_pending.empty()) {
      if (m_budget.isSpent()) return std::unexpected(ShapingFailure::OutOfTime);
      const std::uint32_t number = m_pending.begin()->first;
      while (!m_pending.empty() && m_pending.begin()->first == number) {
        const CueIndex::Cue cue = m_pending.begin()->second;
        m_pending.erase(m_pending.begin());
        enqueue(cue, number + 1);
      }
      if (const auto failure = apply(number)) return std::unexpected(*failure);
    }
    return m_text;
  }

 private:
  using Places = std::vector<CueIndex::Place>;

  std::optional<ShapingFailure> apply(std::uint32_t number) {
    Entry& entry = m_sequence.m_entries[number];
    const auto matches = matchesOf(entry);
    if (!matches) return ShapingFailure::OutOfTime;
    if (matches->empty()) return std::nullopt;
    const auto insertReplacement = [&](const QString&, const RegexMatch&) {
      return std::optional(entry.rule.replacement);
    };
    const auto changes = changesFor(
        m_text, *matches, entry.rule.rewrite ? entry.rule.rewrite : insertReplacement, m_budget);
    if (!changes) return changes.error();
    change(*changes, number + 1);
    if (m_text.size() > m_maxSize) return ShapingFailure::TooLong;
    return std::nullopt;
  }

  std::expected<std::vector<RegexMatch>, RegexError> matchesOf(Entry& entry) const {
    const Rule& rule = entry.rule;
    if (!entry.regex)
      entry.regex = Regex::compile(rule.patternFor ? rule.patternFor(rule.pattern) : rule.pattern,
                                   rule.caseMatching);
    if (*entry.regex)
      return (*entry.regex)->matchesAt(m_text, startsOf(entry), [this] {
        return m_budget.isSpent();
      });
    if (rule.literal.isEmpty()) return {};
    return literalMatches(m_text, rule.literal);
  }

  std::vector<qsizetype> startsOf(const Entry& entry) const {
    std::vector<qsizetype> starts;
    for (const auto& place : m_places) {
      const bool isAnother = starts.empty() || starts.back() != place.start;
      if (isAnother && std::ranges::find(entry.cues, place.cue) != entry.cues.end())
        starts.push_back(place.start);
    }
    return starts;
  }

  /// Lets the rules from `first` on have their turn that have a cue among these places.
  void wake(std::span<const CueIndex::Place> places, std::uint32_t first) {
    for (const auto& place : places) {
      if (m_isAwake[place.cue]) continue;
      m_isAwake[place.cue] = true;
      enqueue(place.cue, first);
    }
  }

  void enqueue(CueIndex::Cue cue, std::uint32_t first) {
    const auto& numbers = m_sequence.m_entriesOfCue[cue];
    const auto next = std::ranges::lower_bound(numbers, first);
    if (next != numbers.end()) m_pending.emplace(*next, cue);
  }

  /// Makes the changes, and brings the places up to date for the rules from `next` on.
  void change(std::span<const Change> changes, std::uint32_t next) {
    if (changes.empty()) return;
    m_text = changed(m_text, changes);
    Places kept;
    Places found;
    auto place = m_places.begin();
    qsizetype shift = 0;      // of what stands behind the changes so far
    qsizetype lookedTo = -1;  // the last place in the new text that has been looked at again
    const auto keepUpTo = [&](qsizetype oldEnd, qsizetype newEnd) {
      for (; place != m_places.end() && place->start < oldEnd; ++place) {
        const qsizetype start = place->start + shift;
        if (start > lookedTo && start < newEnd) kept.push_back({start, place->cue});
      }
    };
    for (const auto& [before, after] : changes) {
      const qsizetype start = before.start + shift;
      const qsizetype end = start + after.size();
      const qsizetype from = std::max(CueIndex::reachBefore(m_text, start), lookedTo + 1);
      keepUpTo(before.start, from);
      while (place != m_places.end() && place->start < before.start + before.length) ++place;
      std::ranges::copy(m_sequence.m_index.placesIn(m_text, from, end), std::back_inserter(found));
      lookedTo = end;
      shift += after.size() - before.length;
    }
    keepUpTo(m_text.size() - shift + 1, m_text.size() + 1);
    wake(found, next);
    m_places.clear();
    std::ranges::merge(kept, found, std::back_inserter(m_places), {}, &CueIndex::Place::start,
                       &CueIndex::Place::start);
  }

  RuleSequence& m_sequence;
  QString m_text;
  const qsizetype m_maxSize;
  const TimeBudget& m_budget;
  Places m_places;              ///< in the order of the text
  std::vector<bool> m_isAwake;  ///< of each cue: it has had a place in the text
  /// The next rule to come for each cue that is awake.
  std::set<std::pair<std::uint32_t, CueIndex::Cue>> m_pending;
};

void RuleSequence::add(Rule rule, const QList<QStringView>& cues) {
  const auto number = static_cast<std::uint32_t>(m_entries.size());
  Entry entry{std::move(rule), {}, std::nullopt};
  for (const QStringView cue : cues) {
    entry.cues.push_back(m_index.add(cue));
    m_entriesOfCue.resize(m_index.cueCount());
    m_entriesOfCue[entry.cues.back()].push_back(number);
  }
  m_entries.push_back(std::move(entry));
}

void RuleSequence::add(std::span<const RewriteRule> table, CaseMatching caseMatching) {
  for (const auto& row : table) {
    add({.pattern = row.pattern.toString(),
         .caseMatching = caseMatching,
         .replacement = row.replacement.toString()},
        row.cues.split(u'|'));
  }
}

Shaped RuleSequence::apply(const QString& text, const TimeBudget& budget) {
  return Run(*this, text, budget).toTheEnd();
}

}  // namespace vemo
