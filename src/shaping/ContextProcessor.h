// The last step between the service's text and the paste: rewrites a finished transcript for the
// application in front.
//
// There is one, made in the composition root. Main thread, in one go, without network or disk. It
// never fails: a stage that can't work, or would keep the main thread waiting, leaves the text as
// it found it, and the log says which.
#pragma once

#include <QString>
#include <QStringView>
#include <functional>

#include "shaping/CodeRules.h"
#include "shaping/DictionaryStage.h"
#include "shaping/FileTagging.h"
#include "shaping/ShortcutStage.h"
#include "shaping/SlackRules.h"

namespace vemo {

class Clock;
class DebugLog;
class FocusedApplication;
class Settings;

class ContextProcessor {
 public:
  /// What it works with; all of it outlives the processor.
  struct Neighbours {
    const FocusedApplication& applications;
    const Settings& settings;
    FileTagLookup& files;
    const MentionLookup& directory;
    const Clock& clock;
    DebugLog& debugLog;
  };

  explicit ContextProcessor(Neighbours neighbours);

  QString process(const QString& text);

 private:
  using Stage = std::function<Shaped(const QString& text, const TimeBudget& budget)>;

  QString run(QStringView name, const QString& text, const TimeBudget& whole, const Stage& stage);

  Neighbours m_with;
  DictionaryStage m_dictionary;
  ShortcutStage m_shortcuts;
  CodeRules m_codeRules;
  FileTagging m_fileTagging;
  SlackRules m_slackRules;
};

/// The text with every run of two or more blanks and tabs as one blank.
QString withSingleBlanks(const QString& text);

}  // namespace vemo
