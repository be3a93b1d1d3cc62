#include "provider/FormFields.h"

#include <algorithm>
#include <boost/url/pct_string_view.hpp>
#include <cctype>

namespace vemo::service {

namespace {

/// What a query may hold without being encoded, and the percent sign itself.
bool isQueryLetter(char letter) {
  return std::isalnum(static_cast<unsigned char>(letter)) ||
         std::string_view("-._~!$&'()*+,;=:@/?%").contains(letter);
}

std::optional<std::string> decoded(std::string_view text) {
  const auto encoded = boost::urls::make_pct_string_view({text.data(), text.size()});
  if (!encoded) return std::nullopt;
  boost::urls::encoding_opts options;
  options.space_as_plus = true;
  auto result = encoded->decode(options);
  if (result.contains('\0')) return std::nullopt;
  return result;
}

}  // namespace

std::optional<FormFields> FormFields::read(std::string_view text) {
  if (text.size() > largest || !std::ranges::all_of(text, isQueryLetter)) return std::nullopt;
  FormFields result;
  while (!text.empty()) {
    const auto field = text.substr(0, text.find('&'));
    text.remove_prefix(std::min(field.size() + 1, text.size()));
    const auto equals = std::min(field.find('='), field.size());
    auto name = decoded(field.substr(0, equals));
    auto value = decoded(field.substr(std::min(equals + 1, field.size())));
    if (!name || !value) return std::nullopt;
    if (!result.m_fields.try_emplace(*std::move(name), *std::move(value)).second)
      return std::nullopt;
  }
  return result;
}

std::optional<std::string> FormFields::find(std::string_view name) const {
  const auto field = m_fields.find(name);
  return field == m_fields.end() ? std::nullopt : std::optional(field->second);
}

}  // namespace vemo::service
