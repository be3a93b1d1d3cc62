// Where in a text a spoken file name can stand, told from the endings alone ("dot swift"): so that
// a pattern which begins at every "open" and "in" of a long text, and reads on to the next comma,
// is tried only where it can come to an end.
//
// Any thread. A stretch may be longer than what is found in it, never shorter.
#pragma once

#include <QStringView>
#include <span>
#include <vector>

#include "base/Regex.h"

namespace vemo {

/// For names of many words after a lead such as "open". A stretch begins where the lead could, and
/// ends with the last ending that can be reached from there.
std::vector<TextRange> stretchesAfterLead(QStringView text, std::span<const RegexMatch> endings);

/// For names of one word before the word "dot".
std::vector<TextRange> stretchesOfOneWord(QStringView text, std::span<const RegexMatch> endings);

}  // namespace vemo
