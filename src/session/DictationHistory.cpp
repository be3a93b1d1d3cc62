#include "session/DictationHistory.h"

#include "base/Text.h"
#include "storage/SettingsKeys.h"

namespace vemo {

namespace {

constexpr std::size_t mostDictations = 5;
constexpr qsizetype previewLength = 40;

}  // namespace

DictationHistory::DictationHistory(const Clock& clock, Settings& settings)
    : m_clock(clock), m_settings(settings) {}

void DictationHistory::load() {
  m_isLoaded = true;
  const auto stored = m_settings.get(keys::recentDictations);
  auto items = stored ? decodeDictations(*stored) : std::nullopt;
  if (!items) return;
  m_recentDictations = *std::move(items);
  m_lastTranscript = m_recentDictations.empty() ? QString() : m_recentDictations.front().text;
}

void DictationHistory::recordDictation(const QString& text) {
  const QString recorded = trimmed(text);
  if (recorded.isEmpty()) return;
  if (!m_isLoaded) load();
  m_lastTranscript = recorded;
  std::erase_if(m_recentDictations, [&](const auto& item) { return item.text == recorded; });
  m_recentDictations.insert(m_recentDictations.begin(),
                            {QUuid::createUuid(), recorded, m_clock.wallTime()});
  if (m_recentDictations.size() > mostDictations) m_recentDictations.resize(mostDictations);
  m_settings.set(keys::recentDictations, encodeDictations(m_recentDictations));
}

void DictationHistory::clear() {
  m_isLoaded = true;
  m_lastTranscript.clear();
  m_recentDictations.clear();
  m_settings.remove(keys::recentDictations);
}

bool DictationHistory::hasTranscripts() const {
  return !m_lastTranscript.isEmpty() || !m_recentDictations.empty();
}

QString DictationHistory::lastTranscriptPreview() const {
  if (characterCount(m_lastTranscript) <= previewLength) return m_lastTranscript;
  return trimmed(firstCharacters(m_lastTranscript, previewLength)) + u'…';
}

}  // namespace vemo
