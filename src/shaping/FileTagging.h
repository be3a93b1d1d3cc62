// Turns spoken file names into "@" tags: of the project's own files where it can, else of a name
// made from the words.
//
// Main thread.
#pragma once

#include <QString>
#include <QStringView>
#include <optional>
#include <span>
#include <vector>

#include "base/Regex.h"
#include "shaping/RuleSequence.h"
#include "shaping/Shaped.h"

namespace vemo {

class FileTagLookup;

class FileTagging {
 public:
  explicit FileTagging(FileTagLookup& files);

  Shaped apply(const QString& text, const TimeBudget& budget) const;

 private:
  /// How far before its ending a file name may reach.
  enum class Shape { WordsAfterLead, OneWord };

  struct Pattern {
    std::optional<Regex> regex;
    Shape shape;
    std::size_t nameGroup;
  };

  static Pattern compiled(QStringView pattern, Shape shape);
  Shaped tagged(const QString& text, const Pattern& pattern, const TimeBudget& budget) const;
  QString tagFor(const QString& name, const QString& spokenExtension) const;

  FileTagLookup& m_files;
  std::optional<Regex> m_ending;
  std::vector<Pattern> m_patterns;
};

}  // namespace vemo
