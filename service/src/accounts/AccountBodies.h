// What the bodies of account requests say. Pure functions over hostile text; the error of each is a
// sentence for the sender.
#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

struct SignInBody {
  std::string idToken;
  std::optional<std::string> nonce;
};

struct DictionaryWords {
  std::string phrase;
  std::string replacement;
};

std::expected<SignInBody, std::string_view> readSignIn(std::string_view body);

/// The new name, without spaces around it.
std::expected<std::string, std::string_view> readName(std::string_view body);

std::expected<DictionaryWords, std::string_view> readDictionaryWords(std::string_view body);

}  // namespace vemo::service
