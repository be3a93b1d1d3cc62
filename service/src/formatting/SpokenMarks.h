// The words that stand for marks when they are dictated. Data only; SmartFormatter runs it.
#pragma once

#include <array>
#include <string_view>

namespace vemo::service {

enum class Spacing {
  Closing,    ///< joins the word before it: a comma
  Opening,    ///< joins the word after it: an opening parenthesis
  Joining,    ///< joins both: a hyphen
  Free,       ///< stands between blanks: a dash
  LineBreak,  ///< takes the place of the blanks on both sides
};

enum class Following { AsSpoken, NewSentence };

struct SpokenMark {
  std::string_view words;  ///< as spoken, one blank between words
  std::string_view mark;
  Spacing spacing;
  Following following;
};

/// Where two rows match, the one with more words counts.
inline constexpr auto spokenMarks = std::to_array<SpokenMark>({
    {"comma", ",", Spacing::Closing, Following::AsSpoken},
    {"period", ".", Spacing::Closing, Following::NewSentence},
    {"full stop", ".", Spacing::Closing, Following::NewSentence},
    {"question mark", "?", Spacing::Closing, Following::NewSentence},
    {"exclamation mark", "!", Spacing::Closing, Following::NewSentence},
    {"exclamation point", "!", Spacing::Closing, Following::NewSentence},
    {"colon", ":", Spacing::Closing, Following::AsSpoken},
    {"semicolon", ";", Spacing::Closing, Following::AsSpoken},
    {"semi colon", ";", Spacing::Closing, Following::AsSpoken},
    {"ellipsis", "...", Spacing::Closing, Following::AsSpoken},
    {"hyphen", "-", Spacing::Joining, Following::AsSpoken},
    {"dash", "-", Spacing::Free, Following::AsSpoken},
    {"open quote", "\"", Spacing::Opening, Following::AsSpoken},
    {"open quotes", "\"", Spacing::Opening, Following::AsSpoken},
    {"close quote", "\"", Spacing::Closing, Following::AsSpoken},
    {"close quotes", "\"", Spacing::Closing, Following::AsSpoken},
    {"open parenthesis", "(", Spacing::Opening, Following::AsSpoken},
    {"open parentheses", "(", Spacing::Opening, Following::AsSpoken},
    {"close parenthesis", ")", Spacing::Closing, Following::AsSpoken},
    {"close parentheses", ")", Spacing::Closing, Following::AsSpoken},
    {"open bracket", "[", Spacing::Opening, Following::AsSpoken},
    {"close bracket", "]", Spacing::Closing, Following::AsSpoken},
    {"new line", "\n", Spacing::LineBreak, Following::NewSentence},
    {"newline", "\n", Spacing::LineBreak, Following::NewSentence},
    {"new paragraph", "\n\n", Spacing::LineBreak, Following::NewSentence},
});

/// After one of these a row of the table is meant as words: "a period of time", "the new line".
inline constexpr auto determiners = std::to_array<std::string_view>(
    {"a", "an", "the", "my", "your", "our", "their", "its", "every", "another"});

/// Words that are written with a capital wherever they stand.
inline constexpr auto alwaysCapitalised =
    std::to_array<std::string_view>({"i", "i'm", "i'll", "i've", "i'd"});

}  // namespace vemo::service
