#include "formatting/SmartFormatter.h"

#include <algorithm>
#include <span>
#include <vector>

#include "formatting/SpokenMarks.h"

namespace vemo::service {

namespace {

using Words = std::span<const std::string_view>;

constexpr std::string_view blanks = " \t\r\n\f\v";

std::vector<std::string_view> split(std::string_view text) {
  std::vector<std::string_view> words;
  for (auto start = text.find_first_not_of(blanks); start != std::string_view::npos;) {
    const auto end = std::min(text.find_first_of(blanks, start), text.size());
    words.push_back(text.substr(start, end - start));
    start = text.find_first_not_of(blanks, end);
  }
  return words;
}

char lower(char letter) {
  return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

char upper(char letter) {
  return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

bool sameWord(std::string_view word, std::string_view lowerCase) {
  return std::ranges::equal(word, lowerCase, {}, lower);
}

bool isOneOf(std::span<const std::string_view> list, std::string_view word) {
  return std::ranges::any_of(list, [word](auto entry) { return sameWord(word, entry); });
}

/// The number of words that the row takes from the front; 0 when it doesn't match there.
std::size_t matchLength(const SpokenMark& row, Words words) {
  std::size_t count = 0;
  for (auto rest = row.words; !rest.empty(); ++count) {
    const auto end = std::min(rest.find(' '), rest.size());
    if (count == words.size() || !sameWord(words[count], rest.substr(0, end))) return 0;
    rest.remove_prefix(std::min(end + 1, rest.size()));
  }
  return count;
}

struct Match {
  const SpokenMark* mark = nullptr;
  std::size_t length = 0;
};

Match longestMatch(Words words) {
  Match best;
  for (const auto& row : spokenMarks) {
    const auto length = matchLength(row, words);
    if (length > best.length) best = {&row, length};
  }
  return best;
}

bool endsOpen(char last) {
  return last == ',' || last == ';' || last == ':' || last == '-';
}

class Writer {
 public:
  void word(std::string_view word) {
    blank();
    const auto start = m_text.size();
    m_text += word;
    if (m_sentenceStarts || isOneOf(alwaysCapitalised, word)) m_text[start] = upper(m_text[start]);
    m_sentenceStarts = false;
    m_joinNext = false;
  }

  void mark(const SpokenMark& mark) {
    if (mark.spacing == Spacing::Opening || mark.spacing == Spacing::Free) blank();
    m_text += mark.mark;
    m_joinNext = mark.spacing == Spacing::Opening || mark.spacing == Spacing::Joining ||
                 mark.spacing == Spacing::LineBreak;
    if (mark.following == Following::NewSentence) m_sentenceStarts = true;
  }

  /// A text that ends in a word or a closing mark gets its point; a spoken end stands as it is.
  std::string finish() {
    if (m_text.empty() || m_sentenceStarts || m_joinNext || endsOpen(m_text.back())) return m_text;
    const auto inside = m_text.find_last_not_of("\")]");
    const bool closed = inside != std::string::npos && inside + 1 < m_text.size() &&
                        std::string_view(".?!").contains(m_text[inside]);
    if (!closed && !m_text.ends_with("...")) m_text += '.';
    return m_text;
  }

 private:
  void blank() {
    if (!m_text.empty() && !m_joinNext) m_text += ' ';
  }

  std::string m_text;
  bool m_sentenceStarts = true;
  bool m_joinNext = false;
};

}  // namespace

std::string formatSmart(std::string_view text) {
  const auto words = split(text);
  Writer writer;
  for (std::size_t index = 0; index < words.size();) {
    const bool meantAsWord = index > 0 && isOneOf(determiners, words[index - 1]);
    const auto match = meantAsWord ? Match{} : longestMatch(Words(words).subspan(index));
    if (match.mark)
      writer.mark(*match.mark);
    else
      writer.word(words[index]);
    index += std::max<std::size_t>(match.length, 1);
  }
  return writer.finish();
}

}  // namespace vemo::service
