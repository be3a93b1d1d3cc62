// One row of a rule table: a pattern in ICU's dialect and what each of its matches becomes.
//
// Constant data; any thread.
#pragma once

#include <QStringView>

namespace vemo {

struct RewriteRule {
  QStringView pattern;
  QStringView replacement;  ///< inserted as it is
  /// What a match can begin with, alternatives separated by "|", in lower case and with one blank
  /// for any white space. A text in which none of them begins a word is spared the pattern.
  QStringView cues;
};

}  // namespace vemo
