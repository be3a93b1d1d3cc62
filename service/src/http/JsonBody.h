// Reads what hostile JSON bodies say. Pure functions, any thread.
#pragma once

#include <boost/json/object.hpp>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

/// None when the body is anything but one JSON object in UTF-8.
std::optional<boost::json::object> jsonObjectIn(std::string_view body);

struct TextLimits {
  std::size_t least;
  std::size_t most;  ///< bytes of UTF-8
};

/// None when there is no text of that name, when its length is out of bounds, or when it has a zero
/// character, which databases don't take.
std::optional<std::string> textIn(const boost::json::object& object, std::string_view name,
                                  TextLimits limits);

}  // namespace vemo::service
