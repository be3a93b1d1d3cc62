#include "shaping/FileTagging.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "integrations/FileTagLookup.h"
#include "shaping/FileNameStretches.h"
#include "shaping/FileTagPatterns.h"
#include "shaping/SpokenFileName.h"
#include "shaping/TimeBudget.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

std::optional<Regex> compiledOrNone(QStringView pattern) {
  auto regex = Regex::compile(withSpokenExtensions(pattern));
  return regex ? std::optional(*std::move(regex)) : std::nullopt;
}

QString group(const QString& text, const RegexMatch& match, std::size_t number) {
  return text.sliced(match[number].start, match[number].length);
}

}  // namespace

FileTagging::FileTagging(FileTagLookup& files)
    : m_files(files), m_ending(compiledOrNone(fileEndingPattern)) {
  m_patterns.push_back(compiled(fileAfterNounPattern, Shape::WordsAfterLead));
  m_patterns.push_back(compiled(fileAfterVerbPattern, Shape::WordsAfterLead));
  m_patterns.push_back(compiled(bareFilePattern, Shape::OneWord));
}

FileTagging::Pattern FileTagging::compiled(QStringView pattern, Shape shape) {
  return {compiledOrNone(pattern), shape, shape == Shape::WordsAfterLead ? 2u : 1u};
}

Shaped FileTagging::apply(const QString& text, const TimeBudget& budget) const {
  m_files.refreshActiveWorkspace();
  QString result = text;
  for (const auto& pattern : m_patterns) {
    if (!pattern.regex || !m_ending) continue;
    auto next = tagged(result, pattern, budget);
    if (!next) return next;
    result = *std::move(next);
  }
  // A name that one pattern has tagged may have been tagged again by a later one.
  return result.replace(u"@@"_s, u"@"_s);
}

Shaped FileTagging::tagged(const QString& text, const Pattern& pattern,
                           const TimeBudget& budget) const {
  const auto isOver = [&budget] { return budget.isSpent(); };
  if (isOver()) return std::unexpected(ShapingFailure::OutOfTime);
  const auto endings = m_ending->matchesWithin(text, {0, text.size()}, isOver);
  if (!endings) return std::unexpected(ShapingFailure::OutOfTime);
  const auto stretches = pattern.shape == Shape::OneWord ? stretchesOfOneWord(text, *endings)
                                                         : stretchesAfterLead(text, *endings);
  std::vector<RegexMatch> matches;
  qsizetype searched = 0;
  for (const auto& [stretchStart, stretchLength] : stretches) {
    const qsizetype start = std::max(stretchStart, searched);
    const qsizetype end = stretchStart + stretchLength;
    if (start >= end) continue;
    auto found = pattern.regex->matchesWithin(text, {start, end - start}, isOver);
    if (!found) return std::unexpected(ShapingFailure::OutOfTime);
    if (found->empty()) continue;
    searched = found->back()[0].start + found->back()[0].length;
    std::ranges::move(*found, std::back_inserter(matches));
  }
  return replacedMatches(
      text, matches,
      [&](const QString& searchedText, const RegexMatch& match) {
        const QString tag = tagFor(group(searchedText, match, pattern.nameGroup),
                                   group(searchedText, match, pattern.nameGroup + 1));
        return pattern.shape == Shape::OneWord ? tag : group(searchedText, match, 1) + u' ' + tag;
      },
      budget);
}

QString FileTagging::tagFor(const QString& name, const QString& spokenExtension) const {
  const QString extension = normalizeExtension(spokenExtension);
  if (auto tag = m_files.resolveFileTag(name, extension)) return *std::move(tag);
  return u'@' + spokenToFileName(name) + u'.' + extension;
}

}  // namespace vemo
