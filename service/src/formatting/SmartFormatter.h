// Written text out of bare spoken words: sentence case, spoken punctuation, a final point.
//
// A pure function for recognisers that return lower-case words without any marks; text that comes
// punctuated is not for it. Works on UTF-8 and changes the case of ASCII letters only. Never fails,
// and takes time in proportion to the text.
#pragma once

#include <string>
#include <string_view>

namespace vemo::service {

std::string formatSmart(std::string_view words);

}  // namespace vemo::service
