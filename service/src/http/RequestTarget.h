// What a request line asks for: the route and the query items that the service understands.
//
// Pure functions over hostile text. Names in the query that nobody knows are ignored; of a name
// that comes twice, the first counts.
#pragma once

#include <boost/beast/http/verb.hpp>
#include <expected>
#include <string>
#include <string_view>

namespace vemo::service {

enum class Endpoint { Health, Dictate, DictateChunk, DictateFinalize };

enum class TextFormat { Raw, Smart };

struct Route {
  Endpoint endpoint;
  boost::beast::http::verb method;
  std::string_view path;
};

struct RequestTarget {
  const Route* route;
  TextFormat format;  ///< "smart" and nothing else asks for formatting
  // Empty when absent.
  std::string language;
  std::string sessionId;
  std::string chunkIndex;
};

enum class TargetError { Malformed, UnknownPath };

std::expected<RequestTarget, TargetError> parseTarget(std::string_view target);

TextFormat textFormatNamed(std::string_view name);

}  // namespace vemo::service
