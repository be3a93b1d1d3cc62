#include "base/Text.h"

#include <unicode/brkiter.h>
#include <unicode/uchar.h>
#include <unicode/unistr.h>
#include <unicode/utf16.h>

#include <algorithm>
#include <memory>

namespace vemo {

namespace {

/// ICU's view of a text, without a copy.
icu::UnicodeString aliased(QStringView text) {
  return icu::UnicodeString(false, text.utf16(), static_cast<int32_t>(text.size()));
}

std::unique_ptr<icu::BreakIterator> characterBreaks(const icu::UnicodeString& text) {
  UErrorCode status = U_ZERO_ERROR;
  std::unique_ptr<icu::BreakIterator> breaks(
      icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
  if (U_FAILURE(status)) return nullptr;  // ICU has no data, and code units must do
  breaks->setText(text);
  return breaks;
}

bool isWhiteSpace(char16_t unit) {
  return u_isUWhiteSpace(unit);  // all white space lies in the basic plane
}

}  // namespace

qsizetype characterCount(QStringView text) {
  // Of ASCII, only a carriage return and its line feed are one character together.
  if (QtPrivate::isAscii(text)) return text.size() - text.count(u"\r\n");
  const auto unicode = aliased(text);
  const auto breaks = characterBreaks(unicode);
  if (!breaks) return text.size();
  qsizetype count = 0;
  while (breaks->next() != icu::BreakIterator::DONE) ++count;
  return count;
}

QString firstCharacters(const QString& text, qsizetype count) {
  if (count <= 0) return {};
  const auto beginning = QStringView(text).first(count < text.size() ? count + 1 : text.size());
  if (QtPrivate::isAscii(beginning) && !beginning.contains(u'\r')) return text.left(count);
  const auto unicode = aliased(text);
  const auto breaks = characterBreaks(unicode);
  if (!breaks) return text.left(count);
  const int32_t end = breaks->next(static_cast<int32_t>(std::min(count, text.size())));
  return end == icu::BreakIterator::DONE ? text : text.left(end);
}

QString trimmed(const QString& text) {
  const auto isInk = [](QChar unit) { return !isWhiteSpace(unit.unicode()); };
  const auto first = std::find_if(text.begin(), text.end(), isInk);
  const auto last = std::find_if(text.rbegin(), std::make_reverse_iterator(first), isInk).base();
  return text.sliced(first - text.begin(), last - first);
}

qsizetype wordCount(QStringView text) {
  qsizetype count = 0;
  bool isInWord = false;
  for (const QChar unit : text) {
    const bool isInk = !isWhiteSpace(unit.unicode());
    if (isInk && !isInWord) ++count;
    isInWord = isInk;
  }
  return count;
}

QString lowerCased(const QString& text) {
  icu::UnicodeString lower = aliased(text);
  lower.toLower(icu::Locale::getRoot());
  return QString::fromUtf16(lower.getBuffer(), lower.length());
}

QByteArray headerValue(const QString& text) {
  QString line = text;
  for (QChar& unit : line) {
    if (unit.category() == QChar::Other_Control) unit = u' ';
  }
  return line.toUtf8();
}

QString trueOrFalse(bool value) {
  return value ? QStringLiteral("true") : QStringLiteral("false");
}

}  // namespace vemo
