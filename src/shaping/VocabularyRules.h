// How developers write the words that they say. All rows ignore case.
#pragma once

#include "shaping/RewriteRule.h"

namespace vemo {

inline constexpr RewriteRule vocabularyRules[] = {
    {u"\\bapi\\b", u"API", u"api"},
    {u"\\bapis\\b", u"APIs", u"apis"},
    {u"\\bpr\\b", u"PR", u"pr"},
    {u"\\bprs\\b", u"PRs", u"prs"},
    // "uy" is how speech models hear "UI".
    {u"(?i)\\b(?:ui|uy)\\b", u"UI", u"ui|uy"},
    {u"(?i)\\b(?:ux)\\b", u"UX", u"ux"},
    {u"(?i)\\baddictionary\\b", u"add dictionary", u"addictionary"},
    {u"\\bjwt\\b", u"JWT", u"jwt"},
    {u"\\bsdk\\b", u"SDK", u"sdk"},
    {u"\\bsdks\\b", u"SDKs", u"sdks"},
    {u"\\bsql\\b", u"SQL", u"sql"},
    {u"\\bnosql\\b", u"NoSQL", u"nosql"},
    {u"\\bdb\\b", u"DB", u"db"},
    {u"\\boauth\\b", u"OAuth", u"oauth"},
    {u"\\bcli\\b", u"CLI", u"cli"},
    {u"\\bstt\\b", u"STT", u"stt"},
    {u"\\bjson\\b", u"JSON", u"json"},
    {u"\\bhttp\\b", u"HTTP", u"http"},
    {u"\\bhttps\\b", u"HTTPS", u"https"},
    {u"\\burl\\b", u"URL", u"url"},
    {u"\\burls\\b", u"URLs", u"urls"},
    {u"\\bdto\\b", u"DTO", u"dto"},
    {u"\\bdtos\\b", u"DTOs", u"dtos"},
    {u"\\borm\\b", u"ORM", u"orm"},
    {u"\\bide\\b", u"IDE", u"ide"},
    {u"\\bmcp\\b", u"MCP", u"mcp"},
};

}  // namespace vemo
