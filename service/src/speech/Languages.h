// The languages that the engines know, as clients show them.
#pragma once

#include <array>

#include "speech/Engine.h"

namespace vemo::service {

inline constexpr auto englishOnly = std::to_array<Language>({{"English", "en"}});

/// What servers of "/v1/audio/transcriptions" commonly take; theirs decides in the end.
inline constexpr auto manyLanguages = std::to_array<Language>({
    {"Afrikaans", "af"},  {"Arabic", "ar"},    {"Armenian", "hy"},  {"Azerbaijani", "az"},
    {"Belarusian", "be"}, {"Bosnian", "bs"},   {"Bulgarian", "bg"}, {"Catalan", "ca"},
    {"Chinese", "zh"},    {"Croatian", "hr"},  {"Czech", "cs"},     {"Danish", "da"},
    {"Dutch", "nl"},      {"English", "en"},   {"Estonian", "et"},  {"Finnish", "fi"},
    {"French", "fr"},     {"Galician", "gl"},  {"German", "de"},    {"Greek", "el"},
    {"Hebrew", "he"},     {"Hindi", "hi"},     {"Hungarian", "hu"}, {"Icelandic", "is"},
    {"Indonesian", "id"}, {"Italian", "it"},   {"Japanese", "ja"},  {"Kannada", "kn"},
    {"Kazakh", "kk"},     {"Korean", "ko"},    {"Latvian", "lv"},   {"Lithuanian", "lt"},
    {"Macedonian", "mk"}, {"Malay", "ms"},     {"Maori", "mi"},     {"Marathi", "mr"},
    {"Nepali", "ne"},     {"Norwegian", "no"}, {"Persian", "fa"},   {"Polish", "pl"},
    {"Portuguese", "pt"}, {"Romanian", "ro"},  {"Russian", "ru"},   {"Serbian", "sr"},
    {"Slovak", "sk"},     {"Slovenian", "sl"}, {"Spanish", "es"},   {"Swahili", "sw"},
    {"Swedish", "sv"},    {"Tagalog", "tl"},   {"Tamil", "ta"},     {"Thai", "th"},
    {"Turkish", "tr"},    {"Ukrainian", "uk"}, {"Urdu", "ur"},      {"Vietnamese", "vi"},
    {"Welsh", "cy"},
});

}  // namespace vemo::service
