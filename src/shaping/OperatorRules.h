// Operators and calls as developers say them.
#pragma once

#include "shaping/RewriteRule.h"

namespace vemo {

inline constexpr RewriteRule operatorRules[] = {
    {u"(?i)\\bconsole\\s*(?:dot|\\.)\\s*log\\b", u"console.log", u"console"},
    {u"(?i)\\bconsole\\s*(?:dot|\\.)\\s*error\\b", u"console.error", u"console"},
    {u"(?i)\\bconsole\\s*(?:dot|\\.)\\s*warn\\b", u"console.warn", u"console"},
    {u"(?i)\\btriple\\s+equals\\b", u"===", u"triple equals"},
    {u"(?i)\\bstrictly\\s+equals\\b", u"===", u"strictly equals"},
    {u"(?i)\\bdouble\\s+equals\\b", u"==", u"double equals"},
    {u"(?i)\\bnot\\s+equals?\\b", u"!=", u"not equal"},
    {u"(?i)\\bfat\\s+arrow\\b", u"=>", u"fat arrow"},
    {u"(?i)\\barrow\\s+function\\b", u"=>", u"arrow function"},
    {u"(?i)\\bgreater\\s+than\\s+or\\s+equal(?:\\s+to)?\\b", u">=", u"greater than or equal"},
    {u"(?i)\\bless\\s+than\\s+or\\s+equal(?:\\s+to)?\\b", u"<=", u"less than or equal"},
    {u"(?i)\\blogical\\s+and\\b", u"&&", u"logical and"},
    {u"(?i)\\blogical\\s+or\\b", u"||", u"logical or"},
    {u"(?i)\\bgit\\s+commit\\s+dash\\s+m\\b", u"git commit -m", u"git commit dash m"},
};

}  // namespace vemo
