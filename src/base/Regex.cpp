#include "base/Regex.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <cstddef>
#include <utility>

namespace vemo {

namespace {

/// ICU counts match-engine steps in blocks that take about a millisecond each.
constexpr int32_t timeLimitInSteps = 250;

icu::UnicodeString aliased(QStringView text) {
  return icu::UnicodeString(false, text.utf16(), static_cast<int32_t>(text.size()));
}

RegexError errorFor(UErrorCode status) {
  const bool isOutOfTime = status == U_REGEX_TIME_OUT || status == U_REGEX_STOPPED_BY_CALLER;
  return isOutOfTime ? RegexError::TimedOut : RegexError::Failed;
}

std::unique_ptr<icu::RegexMatcher> matcherFor(const icu::RegexPattern& pattern,
                                              const icu::UnicodeString& text, UErrorCode& status) {
  std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(text, status));
  if (U_SUCCESS(status)) matcher->setTimeLimit(timeLimitInSteps, status);
  return matcher;
}

RegexMatch currentMatch(const icu::RegexMatcher& matcher, UErrorCode& status) {
  RegexMatch match;
  match.reserve(static_cast<std::size_t>(matcher.groupCount()) + 1);
  for (int32_t group = 0; group <= matcher.groupCount(); ++group) {
    const int32_t start = matcher.start(group, status);
    match.push_back({start, matcher.end(group, status) - start});
  }
  return match;
}

/// Makes a matcher ask: between steps of a match, and every so often between places to begin one.
class Interruption {
 public:
  Interruption(const RegexInterrupt& isOver, icu::RegexMatcher& matcher, UErrorCode& status)
      : m_isOver(isOver) {
    matcher.setMatchCallback(goOnMatching, this, status);
    matcher.setFindProgressCallback(goOnFinding, this, status);
  }
  Interruption(const Interruption&) = delete;
  Interruption& operator=(const Interruption&) = delete;

  bool isDueAtNextPlace() { return ++m_places % 256 == 0 && m_isOver(); }

 private:
  static UBool U_CALLCONV goOnMatching(const void* context, int32_t) {
    return !static_cast<const Interruption*>(context)->m_isOver();
  }
  static UBool U_CALLCONV goOnFinding(const void* context, int64_t) {
    return !const_cast<Interruption*>(static_cast<const Interruption*>(context))
                ->isDueAtNextPlace();
  }

  const RegexInterrupt& m_isOver;
  std::size_t m_places = 0;
};

}  // namespace

struct Regex::Compiled {
  std::unique_ptr<icu::RegexPattern> pattern;
};

Regex::Regex(std::unique_ptr<const Compiled> compiled) : m_compiled(std::move(compiled)) {}
Regex::Regex(Regex&&) noexcept = default;
Regex& Regex::operator=(Regex&&) noexcept = default;
Regex::~Regex() = default;

std::expected<Regex, RegexError> Regex::compile(QStringView pattern, CaseMatching caseMatching) {
  const uint32_t flags =
      caseMatching == CaseMatching::Insensitive ? uint32_t{UREGEX_CASE_INSENSITIVE} : 0;
  UParseError position;
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::RegexPattern> compiled(
      icu::RegexPattern::compile(aliased(pattern), flags, position, status));
  if (U_FAILURE(status)) return std::unexpected(RegexError::InvalidPattern);
  return Regex(std::make_unique<const Compiled>(std::move(compiled)));
}

std::expected<std::vector<RegexMatch>, RegexError> Regex::matches(const QString& text) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto unicode = aliased(text);
  const auto matcher = matcherFor(*m_compiled->pattern, unicode, status);
  std::vector<RegexMatch> found;
  while (U_SUCCESS(status) && matcher->find(status))
    found.push_back(currentMatch(*matcher, status));
  if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  return found;
}

std::expected<std::vector<RegexMatch>, RegexError> Regex::matchesAt(
    const QString& text, std::span<const qsizetype> starts, const RegexInterrupt& isOver) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto unicode = aliased(text);
  const auto matcher = matcherFor(*m_compiled->pattern, unicode, status);
  if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  Interruption interruption(isOver, *matcher, status);
  matcher->useTransparentBounds(true);
  matcher->useAnchoringBounds(false);
  std::vector<RegexMatch> found;
  qsizetype searched = 0;
  for (const qsizetype start : starts) {
    if (start < searched) continue;
    if (interruption.isDueAtNextPlace()) return std::unexpected(RegexError::TimedOut);
    matcher->region(start, text.size(), status);
    if (matcher->lookingAt(status)) {
      found.push_back(currentMatch(*matcher, status));
      searched = start + found.back()[0].length;
    }
    if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  }
  return found;
}

std::expected<std::vector<RegexMatch>, RegexError> Regex::matchesWithin(
    const QString& text, TextRange stretch, const RegexInterrupt& isOver) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto unicode = aliased(text);
  const auto matcher = matcherFor(*m_compiled->pattern, unicode, status);
  if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  const Interruption interruption(isOver, *matcher, status);
  matcher->useTransparentBounds(true);
  matcher->useAnchoringBounds(false);
  matcher->region(stretch.start, stretch.start + stretch.length, status);
  std::vector<RegexMatch> found;
  while (U_SUCCESS(status) && matcher->find(status))
    found.push_back(currentMatch(*matcher, status));
  if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  return found;
}

std::expected<QString, RegexError> Regex::replaced(const QString& text,
                                                   const QString& replacement) const {
  UErrorCode status = U_ZERO_ERROR;
  const auto unicode = aliased(text);
  const auto unicodeReplacement = aliased(replacement);
  const auto matcher = matcherFor(*m_compiled->pattern, unicode, status);
  icu::UnicodeString result;
  // RegexMatcher::replaceAll would take a find that ran out of time for the end of the matches.
  while (U_SUCCESS(status) && matcher->find(status))
    matcher->appendReplacement(result, unicodeReplacement, status);
  if (U_FAILURE(status)) return std::unexpected(errorFor(status));
  matcher->appendTail(result);
  return QString::fromUtf16(result.getBuffer(), result.length());
}

QString Regex::escapedPattern(QStringView text) {
  // The metacharacters of ICU's dialect; "#" and white space matter in its comment mode alone.
  static constexpr QStringView metacharacters = u"*?+[](){}^$|\\./-#&~";
  QString escaped;
  escaped.reserve(text.size() * 2);
  for (const QChar unit : text) {
    if (metacharacters.contains(unit)) escaped += u'\\';
    escaped += unit;
  }
  return escaped;
}

QString Regex::escapedTemplate(QStringView text) {
  QString escaped;
  escaped.reserve(text.size());
  for (const QChar unit : text) {
    if (unit == u'$' || unit == u'\\') escaped += u'\\';
    escaped += unit;
  }
  return escaped;
}

}  // namespace vemo
