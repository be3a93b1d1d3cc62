// The fields of a form or a query: "name=value&name=value", percent-encoded.
//
// A plain value; reading takes hostile text. Stricter than it has to be: what another reader might
// understand otherwise is not read at all.
#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

class FormFields {
 public:
  static constexpr std::size_t largest = std::size_t{8} * 1024;

  /// None when the text is too long, isn't percent-encoded as it should be, names a field twice or
  /// holds a zero.
  static std::optional<FormFields> read(std::string_view text);

  std::optional<std::string> find(std::string_view name) const;
  /// Empty when it is absent.
  std::string value(std::string_view name) const { return find(name).value_or(""); }
  std::size_t count() const { return m_fields.size(); }

 private:
  std::map<std::string, std::string, std::less<>> m_fields;
};

}  // namespace vemo::service
