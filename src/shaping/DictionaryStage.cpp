#include "shaping/DictionaryStage.h"

#include "base/Text.h"
#include "shaping/CustomEntries.h"
#include "shaping/ProductNameRules.h"

namespace vemo {

DictionaryStage::DictionaryStage() {
  m_productName.add(productNameRules, CaseMatching::Sensitive);
}

Shaped DictionaryStage::apply(const QString& text, const std::optional<QByteArray>& stored,
                              const TimeBudget& budget) {
  auto named = m_productName.apply(text, budget);
  if (!named || !stored) return named;
  if (stored->size() > maxStoredBytes) return std::unexpected(ShapingFailure::TooMuch);
  if (*stored != m_stored) read(*stored);
  return m_entries.apply(*named, budget);
}

void DictionaryStage::read(const QByteArray& stored) {
  m_stored = stored;
  m_entries = {};
  const auto entries = decodeDictionary(stored);
  if (!entries) return;
  for (const auto& entry : *entries) {
    const QString phrase = trimmed(entry.phrase);
    const QString replacement = trimmed(entry.replacement);
    if (phrase.isEmpty() || replacement.isEmpty()) continue;
    m_entries.add({.pattern = phrase,
                   .patternFor = phrasePattern,
                   .replacement = replacement,
                   .literal = phrase},
                  {phrase});
  }
}

}  // namespace vemo
