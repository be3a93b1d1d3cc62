// Regular expressions in ICU's dialect, straight on UTF-16.
//
// Compile once, use from any thread. Every use has a time limit, so that no pattern can hang the
// program on some text. Failures are values: RegexError tells a pattern that doesn't compile from a
// match that ran out of time.
#pragma once

#include <QString>
#include <QStringView>
#include <expected>
#include <functional>
#include <memory>
#include <span>
#include <vector>

namespace vemo {

enum class RegexError { InvalidPattern, TimedOut, Failed };

enum class CaseMatching { Sensitive, Insensitive };

/// A stretch of a text, in UTF-16 units. A group that took no part in a match has start -1.
struct TextRange {
  qsizetype start = -1;
  qsizetype length = 0;

  bool isPresent() const { return start >= 0; }
  friend bool operator==(const TextRange&, const TextRange&) = default;
};

/// One match: the whole of it under index 0, then the capture groups.
using RegexMatch = std::vector<TextRange>;

/// Asked about once a millisecond while a pattern is at work; true ends the work as TimedOut.
using RegexInterrupt = std::function<bool()>;

class Regex {
 public:
  static std::expected<Regex, RegexError> compile(QStringView pattern,
                                                  CaseMatching = CaseMatching::Sensitive);
  Regex(Regex&&) noexcept;
  Regex& operator=(Regex&&) noexcept;
  ~Regex();

  /// All matches that don't overlap, from first to last.
  std::expected<std::vector<RegexMatch>, RegexError> matches(const QString& text) const;

  /// The matches among matches() that begin at one of `starts`, which are in ascending order, given
  /// that no match begins elsewhere.
  std::expected<std::vector<RegexMatch>, RegexError> matchesAt(const QString& text,
                                                               std::span<const qsizetype> starts,
                                                               const RegexInterrupt&) const;

  /// All matches that lie within a stretch of the text. "\b" sees what surrounds the stretch.
  std::expected<std::vector<RegexMatch>, RegexError> matchesWithin(const QString& text,
                                                                   TextRange stretch,
                                                                   const RegexInterrupt&) const;

  /// The text with each match replaced by the template, in which "$1" stands for group 1 and "\"
  /// takes the next character as it is. A template that names no existing group is Failed.
  std::expected<QString, RegexError> replaced(const QString& text,
                                              const QString& replacement) const;

  /// A pattern that matches exactly this text.
  static QString escapedPattern(QStringView text);

  /// A template that inserts exactly this text.
  static QString escapedTemplate(QStringView text);

 private:
  struct Compiled;
  explicit Regex(std::unique_ptr<const Compiled> compiled);

  std::unique_ptr<const Compiled> m_compiled;
};

}  // namespace vemo
