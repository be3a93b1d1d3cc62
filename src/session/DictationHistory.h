// The few newest dictations, for the menu and the main window, and the text behind "Copy Last
// Transcript". Kept in memory and, the list, in the settings. Main thread only.
#pragma once

#include <QString>
#include <vector>

#include "session/DictationItem.h"

namespace vemo {

class Clock;
class Settings;

class DictationHistory {
 public:
  DictationHistory(const Clock& clock, Settings& settings);

  /// Takes what the settings hold; data that doesn't decode is ignored.
  void load();

  /// Puts the trimmed text in front of what is stored, as a new entry; an older entry of equal text
  /// goes. Blank text changes nothing.
  void recordDictation(const QString& text);

  /// Forgets all of it, in the settings too.
  void clear();

  /// The newest text, as it came from the service until it has been pasted.
  const QString& lastTranscript() const { return m_lastTranscript; }
  void setLastTranscript(QString text) { m_lastTranscript = std::move(text); }

  /// Newest first, at most five, no two of equal text.
  const std::vector<DictationItem>& recentDictations() const { return m_recentDictations; }

  bool hasTranscripts() const;

  /// The newest text, cut to 40 characters for the menu.
  QString lastTranscriptPreview() const;

 private:
  const Clock& m_clock;
  Settings& m_settings;
  QString m_lastTranscript;
  std::vector<DictationItem> m_recentDictations;
  bool m_isLoaded = false;
};

}  // namespace vemo
