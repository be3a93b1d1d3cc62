// What account requests are answered with, as JSON. Pure functions.
#pragma once

#include <span>

#include "accounts/Dictionary.h"
#include "accounts/Usage.h"
#include "http/Answer.h"

namespace vemo::service {

/// Whether accounts may take beta updates.
enum class BetaUpdates { No, Yes };

Answer signInAnswer(const std::string& token, const Account& account);
Answer profileAnswer(const Account& account, const UsageSums& usage, BetaUpdates beta);
Answer dictionaryAnswer(std::span<const DictionaryEntry> entries);
Answer entryAnswer(const DictionaryEntry& entry);
/// {"status":"success"}
Answer successAnswer();

}  // namespace vemo::service
