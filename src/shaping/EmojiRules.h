// Emoji by their spoken names. "heart" alone is a word of its own in most sentences and needs the
// word "emoji" after it; the other bare words are replaced wherever they stand.
#pragma once

#include "shaping/RewriteRule.h"

namespace vemo {

inline constexpr RewriteRule emojiRules[] = {
    {u"(?i)\\b(?:thumbs\\s+up|thumbsup)\\b", u":thumbsup:", u"thumbs up|thumbsup"},
    {u"(?i)\\bplus\\s+one\\b", u":+1:", u"plus one"},
    {u"(?i)\\b(?:fire\\s+emoji|fire)\\b", u":fire:", u"fire"},
    {u"(?i)\\b(?:rocket\\s+emoji|rocket)\\b", u":rocket:", u"rocket"},
    {u"(?i)\\b(?:eyes\\s+emoji|eyes)\\b", u":eyes:", u"eyes"},
    {u"(?i)\\b(?:check\\s+mark|checkmark)\\b", u":white_check_mark:", u"check mark|checkmark"},
    {u"(?i)\\b(?:party\\s+emoji|tada)\\b", u":tada:", u"party emoji|tada"},
    {u"(?i)\\b(?:heart\\s+emoji)\\b", u":heart:", u"heart emoji"},
    {u"(?i)\\b(?:thank\\s+you\\s+emoji|pray)\\b", u":pray:", u"thank you emoji|pray"},
};

}  // namespace vemo
