// What a stage of the shaping gives: the new text, or why it has to leave the text as it found it.
#pragma once

#include <QString>
#include <expected>

namespace vemo {

enum class ShapingFailure {
  OutOfTime,  ///< the stage's share of the time is spent
  TooLong,    ///< the text has outgrown what anybody could want to paste
  TooMuch,    ///< the user's own list is too long to be read in the time of a dictation
};

using Shaped = std::expected<QString, ShapingFailure>;

/// How much longer than it was one stage may make a text, in UTF-16 units.
inline constexpr qsizetype maxGrowth = 4 * 1024 * 1024;

}  // namespace vemo
