// The last step between the service's text and the paste: rewrites a finished transcript for the
// application in front.
//
// Runs on the main thread, in one go, without network or disk. It never fails: a stage that can't
// work leaves the text as it found it.
#pragma once

#include <QString>
#include <optional>

#include "base/Regex.h"

namespace vemo {

class DebugLog;
class FocusedApplication;

class ContextProcessor {
 public:
  ContextProcessor(const FocusedApplication& applications, DebugLog& debugLog);

  QString process(const QString& text) const;

 private:
  QString collapseBlanks(const QString& text) const;

  const FocusedApplication& m_applications;
  DebugLog& m_debugLog;
  std::optional<Regex> m_blankRuns;
};

}  // namespace vemo
