#include "shaping/FileNameStretches.h"

#include <algorithm>

namespace vemo {

namespace {

/// Longer than any word of a lead, however it is written.
constexpr qsizetype longestLeadWord = 16;

/// What [a-zA-Z0-9_\-] takes without regard to case; two letters outside ASCII fold to "s" and "k".
bool isNameUnit(QChar unit) {
  const char16_t code = unit.unicode();
  return (code >= u'a' && code <= u'z') || (code >= u'A' && code <= u'Z') ||
         (code >= u'0' && code <= u'9') || code == u'_' || code == u'-' || code == u'\u017F' ||
         code == u'\u212A';
}

bool isNameOrBlank(QChar unit) {
  return isNameUnit(unit) || unit.isSpace();
}

/// From where on a lead can begin whose name lies in the run of name units at `run`. A lead that is
/// written with a ligature may begin before the run does.
qsizetype startOfLead(QStringView text, qsizetype run) {
  if (run == 0 || text[run - 1].unicode() < 0x80) return run;
  qsizetype start = std::max(qsizetype{0}, run - longestLeadWord);
  while (start > 0 && text[start - 1].isSpace()) --start;
  return std::max(qsizetype{0}, start - longestLeadWord);
}

}  // namespace

std::vector<TextRange> stretchesAfterLead(QStringView text, std::span<const RegexMatch> endings) {
  std::vector<TextRange> stretches;
  qsizetype run = 0;
  qsizetype runOfLast = -1;
  qsizetype position = 0;
  for (const auto& ending : endings) {
    for (; position < ending[0].start; ++position) {
      if (!isNameOrBlank(text[position])) run = position + 1;
    }
    const qsizetype end = ending[0].start + ending[0].length;
    if (run == runOfLast) {
      stretches.back().length = end - stretches.back().start;
    } else {
      const qsizetype start = startOfLead(text, run);
      stretches.push_back({start, end - start});
      runOfLast = run;
    }
  }
  return stretches;
}

std::vector<TextRange> stretchesOfOneWord(QStringView text, std::span<const RegexMatch> endings) {
  std::vector<TextRange> stretches;
  for (const auto& ending : endings) {
    qsizetype start = ending[0].start;
    while (start > 0 && text[start - 1].isSpace()) --start;
    if (start == ending[0].start) continue;
    while (start > 0 && isNameUnit(text[start - 1])) --start;
    stretches.push_back({start, ending[0].start + ending[0].length - start});
  }
  return stretches;
}

}  // namespace vemo
