// Mentions of everybody.
#pragma once

#include "shaping/RewriteRule.h"

namespace vemo {

inline constexpr RewriteRule broadcastRules[] = {
    {u"(?i)\\b(?:tag|mention)\\s+everyone\\b", u"@everyone", u"tag everyone|mention everyone"},
    {u"(?i)\\b(?:tag|mention)\\s+here\\b", u"@here", u"tag here|mention here"},
    {u"(?i)\\b(?:tag|mention)\\s+channel\\b", u"@channel", u"tag channel|mention channel"},
};

}  // namespace vemo
