#include "shaping/ContextProcessor.h"

#include <chrono>

#include "base/Text.h"
#include "ports/FocusedApplication.h"
#include "shaping/DeveloperTools.h"
#include "shaping/TimeBudget.h"
#include "storage/DebugLog.h"
#include "storage/SettingsKeys.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;

namespace {

/// Of all stages together. Each may use half of what the ones before have left, so that a list of
/// the user's that takes for ever doesn't take the other stages' time.
constexpr std::chrono::milliseconds timeLimit{240};

QStringView wordsFor(ShapingFailure failure) {
  switch (failure) {
    case ShapingFailure::OutOfTime:
      return u"took too long";
    case ShapingFailure::TooLong:
      return u"made the text too long";
    case ShapingFailure::TooMuch:
      return u"has too long a list";
  }
  return {};
}

bool isBlank(QChar unit) {
  return unit == u' ' || unit == u'\t';
}

}  // namespace

ContextProcessor::ContextProcessor(Neighbours neighbours)
    : m_with(neighbours), m_fileTagging(neighbours.files), m_slackRules(neighbours.directory) {}

QString ContextProcessor::process(const QString& text) {
  const auto frontmost = m_with.applications.frontmost().value_or(RunningApplication{});
  const QString bundleId = frontmost.identifier.value_or(u""_s);
  const QString appName = frontmost.name.value_or(u"Unknown"_s);
  const qsizetype count = characterCount(text);
  m_with.debugLog(u"context: frontmost [%1], %2 chars in"_s.arg(bundleId).arg(count));

  const TimeBudget whole(m_with.clock, timeLimit);
  QString shaped = text;
  const auto shape = [&](QStringView name, const Stage& stage) {
    shaped = run(name, shaped, whole, stage);
  };
  shape(u"dictionary", [this](const QString& found, const TimeBudget& budget) {
    return m_dictionary.apply(found, m_with.settings.get(keys::customDictionaryEntries), budget);
  });
  shape(u"snippets", [this](const QString& found, const TimeBudget& budget) {
    return m_shortcuts.apply(found, m_with.settings.get(keys::customShortcutEntries), budget);
  });
  if (isDeveloperTool(bundleId, appName)) {
    shape(u"code rules", [this](const QString& found, const TimeBudget& budget) {
      return m_codeRules.apply(found, budget);
    });
  }
  if (m_with.settings.get(keys::integrationVSCode, true)) {
    shape(u"file tags", [this](const QString& found, const TimeBudget& budget) {
      return m_fileTagging.apply(found, budget);
    });
  }
  if (m_with.settings.get(keys::integrationSlack, true)) {
    shape(u"Slack rules", [this](const QString& found, const TimeBudget& budget) {
      return m_slackRules.apply(found, budget);
    });
  }
  shaped = withSingleBlanks(shaped);

  const bool isChanged = shaped != text;
  m_with.debugLog(
      u"context: %1 chars out, changed=%2"_s.arg(isChanged ? characterCount(shaped) : count)
          .arg(isChanged ? u"true"_s : u"false"_s));
  return shaped;
}

QString ContextProcessor::run(QStringView name, const QString& text, const TimeBudget& whole,
                              const Stage& stage) {
  auto shaped = stage(text, whole.half());
  if (shaped) return *std::move(shaped);
  m_with.debugLog(u"context: %1 left %2 chars as found: %3"_s.arg(name)
                      .arg(characterCount(text))
                      .arg(wordsFor(shaped.error())));
  return text;
}

QString withSingleBlanks(const QString& text) {
  QString result;
  result.reserve(text.size());
  for (qsizetype start = 0; start < text.size();) {
    qsizetype end = start;
    if (isBlank(text[start])) {
      while (end < text.size() && isBlank(text[end])) ++end;
      result += end - start == 1 ? text[start] : u' ';
    } else {
      while (end < text.size() && !isBlank(text[end])) ++end;
      result += QStringView(text).sliced(start, end - start);
    }
    start = end;
  }
  return result;
}

}  // namespace vemo
