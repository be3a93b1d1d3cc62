#include "base/Regex.h"

#include <unicode/regex.h>
#include <unicode/unistr.h>

#include <utility>

namespace vemo {

namespace {

/// ICU counts match-engine steps in blocks that take about a millisecond each.
constexpr int32_t timeLimitInSteps = 250;

icu::UnicodeString aliased(QStringView text) {
  return icu::UnicodeString(false, text.utf16(), static_cast<int32_t>(text.size()));
}

RegexError errorFor(UErrorCode status) {
  return status == U_REGEX_TIME_OUT ? RegexError::TimedOut : RegexError::Failed;
}

std::unique_ptr<icu::RegexMatcher> matcherFor(const icu::RegexPattern& pattern,
                                              const icu::UnicodeString& text, UErrorCode& status) {
  std::unique_ptr<icu::RegexMatcher> matcher(pattern.matcher(text, status));
  if (U_SUCCESS(status)) matcher->setTimeLimit(timeLimitInSteps, status);
  return matcher;
}

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
  while (U_SUCCESS(status) && matcher->find(status)) {
    RegexMatch match;
    for (int32_t group = 0; group <= matcher->groupCount(); ++group) {
      const int32_t start = matcher->start(group, status);
      match.push_back({start, matcher->end(group, status) - start});
    }
    found.push_back(std::move(match));
  }
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
