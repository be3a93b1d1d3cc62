#include "shaping/ShortcutStage.h"

#include <algorithm>
#include <utility>

#include "base/Text.h"

namespace vemo {

namespace {

/// The entries' numbers, those with the longest triggers first.
std::vector<std::size_t> longestFirst(const std::vector<CustomShortcutEntry>& entries) {
  std::vector<std::pair<qsizetype, std::size_t>> order;
  for (std::size_t i = 0; i < entries.size(); ++i)
    order.emplace_back(-characterCount(entries[i].trigger), i);
  std::ranges::sort(order);
  std::vector<std::size_t> numbers;
  for (const auto& [length, number] : order) numbers.push_back(number);
  return numbers;
}

/// How many units the punctuation mark before `end` has: 0 when there is none.
qsizetype punctuationBefore(QStringView text, qsizetype end) {
  if (end >= 2 && text[end - 1].isLowSurrogate() && text[end - 2].isHighSurrogate())
    return QChar::isPunct(QChar::surrogateToUcs4(text[end - 2], text[end - 1])) ? 2 : 0;
  return end >= 1 && text[end - 1].isPunct() ? 1 : 0;
}

qsizetype punctuationAt(QStringView text, qsizetype start) {
  const qsizetype length = start < text.size() && text[start].isHighSurrogate() ? 2 : 1;
  return start + length <= text.size() && punctuationBefore(text.sliced(start), length) == length
             ? length
             : 0;
}

QString withoutPunctuationAtEnds(const QString& text) {
  qsizetype start = 0;
  while (const qsizetype length = punctuationAt(text, start)) start += length;
  qsizetype end = text.size();
  while (const qsizetype length = punctuationBefore(QStringView(text).sliced(start), end - start))
    end -= length;
  return text.sliced(start, end - start);
}

}  // namespace

Shaped ShortcutStage::apply(const QString& text, const std::optional<QByteArray>& stored,
                            const TimeBudget& budget) {
  if (!stored) return text;
  if (stored->size() > maxStoredBytes) return std::unexpected(ShapingFailure::TooMuch);
  if (*stored != m_stored) read(*stored);
  if (!m_snippetOfUtterance.isEmpty()) {
    const auto snippet = m_snippetOfUtterance.constFind(spokenForm(text));
    if (snippet != m_snippetOfUtterance.cend()) return *snippet;
  }
  return m_triggers.apply(text, budget);
}

void ShortcutStage::read(const QByteArray& stored) {
  m_stored = stored;
  m_snippetOfUtterance.clear();
  m_triggers = {};
  const auto entries = decodeShortcuts(stored);
  if (!entries) return;
  for (const auto& entry : *entries) {
    const QString form = spokenForm(entry.trigger);
    if (!m_snippetOfUtterance.contains(form)) m_snippetOfUtterance.insert(form, entry.snippet);
  }
  for (const std::size_t number : longestFirst(*entries)) {
    const QString trigger = trimmed((*entries)[number].trigger);
    const QString snippet = trimmed((*entries)[number].snippet);
    if (trigger.isEmpty() || snippet.isEmpty()) continue;
    m_triggers.add({.pattern = trigger, .patternFor = phrasePattern, .replacement = snippet},
                   {trigger});
  }
}

QString spokenForm(const QString& text) {
  return withoutPunctuationAtEnds(trimmed(lowerCased(text)));
}

}  // namespace vemo
