#include "http/RequestTarget.h"

#include <algorithm>
#include <array>
#include <boost/url.hpp>

namespace vemo::service {

namespace {

using boost::beast::http::verb;

constexpr auto routes = std::to_array<Route>({
    {Endpoint::Health, verb::get, "/health"},
    {Endpoint::Dictate, verb::post, "/desktop/dictate"},
    {Endpoint::DictateChunk, verb::post, "/desktop/dictate/chunk"},
    {Endpoint::DictateFinalize, verb::post, "/desktop/dictate/finalize"},
});

}  // namespace

TextFormat textFormatNamed(std::string_view name) {
  return name == "smart" ? TextFormat::Smart : TextFormat::Raw;
}

std::expected<RequestTarget, TargetError> parseTarget(std::string_view target) {
  const auto url = boost::urls::parse_origin_form({target.data(), target.size()});
  if (!url) return std::unexpected(TargetError::Malformed);
  const std::string_view path = url->encoded_path();
  const auto route = std::ranges::find(routes, path, &Route::path);
  if (route == routes.end()) return std::unexpected(TargetError::UnknownPath);

  const auto parameters = url->params();
  const auto valueOf = [&parameters](std::string_view name) -> std::string {
    const auto parameter = parameters.find({name.data(), name.size()});
    return parameter == parameters.end() ? std::string() : (*parameter).value;
  };
  return RequestTarget{.route = &*route,
                       .format = textFormatNamed(valueOf("format_mode")),
                       .language = valueOf("language"),
                       .sessionId = valueOf("session_id"),
                       .chunkIndex = valueOf("chunk_index")};
}

}  // namespace vemo::service
