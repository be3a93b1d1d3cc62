#include "shaping/ContextProcessor.h"

#include "base/Text.h"
#include "ports/FocusedApplication.h"
#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

ContextProcessor::ContextProcessor(const FocusedApplication& applications, DebugLog& debugLog)
    : m_applications(applications), m_debugLog(debugLog) {
  if (auto blankRuns = Regex::compile(u"[ \\t]{2,}")) m_blankRuns = std::move(*blankRuns);
}

QString ContextProcessor::process(const QString& text) const {
  const auto frontmost = m_applications.frontmost();
  const QString bundleId = frontmost ? frontmost->identifier.value_or(QString()) : QString();
  m_debugLog(u"context: frontmost [%1], %2 chars in"_s.arg(bundleId).arg(characterCount(text)));

  const QString shaped = collapseBlanks(text);

  m_debugLog(u"context: %1 chars out, changed=%2"_s.arg(characterCount(shaped))
                 .arg(shaped == text ? u"false"_s : u"true"_s));
  return shaped;
}

QString ContextProcessor::collapseBlanks(const QString& text) const {
  if (!m_blankRuns) return text;
  return m_blankRuns->replaced(text, u" "_s).value_or(text);
}

}  // namespace vemo
