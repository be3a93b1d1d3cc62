// The plain reading of the rules: one compiled pattern after the other, over the whole text. What
// the program does faster must come to the same.
//
// For tests and benchmarks. Main thread; no time limit beyond that of a single pattern.
#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <expected>
#include <map>
#include <optional>
#include <utility>

#include "base/Regex.h"

namespace vemo {

class FileTagLookup;
class MentionLookup;

struct PlainSettings {
  std::optional<QByteArray> dictionary;
  std::optional<QByteArray> shortcuts;
  bool tagsFiles = true;
  bool mentionsPeople = true;
};

/// Compiles patterns: each time anew, or once where only the outcome matters.
class PlainPatterns {
 public:
  enum class Keeping { Nothing, Everything };

  explicit PlainPatterns(Keeping keeping) : m_keeping(keeping) {}

  /// Null when the pattern doesn't compile. Valid until the next call.
  const Regex* compiled(QStringView pattern, CaseMatching = CaseMatching::Sensitive);

  /// What a pattern has made of a text, or nothing when it ran out of time.
  template <typename Outcome>
  std::optional<Outcome> finished(std::expected<Outcome, RegexError> outcome) {
    if (outcome) return *std::move(outcome);
    m_isCutShort = true;
    return std::nullopt;
  }

  bool isCutShort() const { return m_isCutShort; }

 private:
  bool m_isCutShort = false;
  Keeping m_keeping;
  std::map<std::pair<QString, CaseMatching>, std::expected<Regex, RegexError>> m_kept;
};

class PlainContextProcessor {
 public:
  PlainContextProcessor(FileTagLookup& files, const MentionLookup& directory,
                        PlainPatterns::Keeping keeping = PlainPatterns::Keeping::Nothing)
      : m_files(files), m_directory(directory), m_patterns(keeping) {}

  QString process(const QString& text, const QString& bundleId, const QString& appName,
                  const PlainSettings& settings);

  /// Whether a pattern has ever run out of time, so that the outcome tells nothing.
  bool isCutShort() const { return m_patterns.isCutShort(); }

 private:
  QString applyFileTagging(const QString& text);
  QString applySlackRules(const QString& text);
  QString fileTag(const QString& name, const QString& spokenExtension);
  QString userMention(const QString& name);

  FileTagLookup& m_files;
  const MentionLookup& m_directory;
  PlainPatterns m_patterns;
};

}  // namespace vemo
