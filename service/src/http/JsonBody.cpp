#include "http/JsonBody.h"

#include <boost/json/parse.hpp>

namespace vemo::service {

namespace json = boost::json;

std::optional<json::object> jsonObjectIn(std::string_view body) {
  boost::system::error_code error;
  auto parsed = json::parse({body.data(), body.size()}, error);
  if (error || !parsed.is_object()) return std::nullopt;
  return std::move(parsed.get_object());
}

std::optional<std::string> textIn(const json::object& object, std::string_view name,
                                  TextLimits limits) {
  const auto* value = object.if_contains({name.data(), name.size()});
  if (!value || !value->is_string()) return std::nullopt;
  const std::string_view text = value->get_string();
  if (text.size() < limits.least || text.size() > limits.most) return std::nullopt;
  if (text.contains('\0')) return std::nullopt;
  return std::string(text);
}

}  // namespace vemo::service
