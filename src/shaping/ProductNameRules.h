// The product's own name, which speech models mishear. Runs for everybody, before the user's words.
//
// The case of a heard word decides the case of the result; "DEMO" has no row and stays.
#pragma once

#include "shaping/RewriteRule.h"

namespace vemo {

inline constexpr RewriteRule productNameRules[] = {
    {u"(?i)\\b(?:the\\s+file\\s+)?(memo\\s*app|demo\\s*app)\\b", u"VemoApp",
     u"memo|demo|the file memo|the file demo"},
    {u"(?i)\\bmemoapp\\b", u"VemoApp", u"memoapp"},
    {u"\\bMemo\\b", u"Vemo", u"memo"},
    {u"\\bmemo\\b", u"vemo", u"memo"},
    {u"\\bDemo\\b", u"Vemo", u"demo"},
    {u"\\bdemo\\b", u"vemo", u"demo"},
    {u"\\bMEMO\\b", u"VEMO", u"memo"},
};

}  // namespace vemo
