// Request heads and their queries, read the way a connection reads them, in two pieces.
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdlib>

#include "http/Router.h"

namespace http = boost::beast::http;
using namespace vemo::service;

namespace {

constexpr std::size_t bodyLimit = 1024;

void look(http::verb method, std::string_view text) {
  static const Router router = [] {
    Router routes;
    routes.add({http::verb::post, "/desktop/dictate", Access::Everybody, 0, {}});
    routes.add({http::verb::delete_, "/dictionary/*", Access::Everybody, 0, {}});
    return routes;
  }();
  const auto match = router.find(method, text);
  if (!match) return;
  const auto whole = match->target.parameter("language").size() +
                     match->target.parameter("session_id").size() + match->item.size();
  if (whole > text.size() || match->route->path != router.knownPath(text)) std::abort();
}

void read(std::string_view head, std::string_view rest) {
  http::request_parser<http::string_body> parser;
  parser.header_limit(8192);
  parser.body_limit(bodyLimit);
  parser.eager(true);
  boost::system::error_code error;
  for (const auto piece : {head, rest}) {
    std::string_view left = piece;
    while (!error && !parser.is_done() && !left.empty()) {
      const auto used = parser.put(boost::asio::buffer(left), error);
      if (used == 0) break;
      left.remove_prefix(used);
    }
  }
  if (parser.get().body().size() > bodyLimit) std::abort();
  if (!parser.is_header_done()) return;
  look(parser.get().method(), parser.get().target());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto half = size / 2;
  read(text.substr(0, half), text.substr(half));
  look(http::verb::delete_, text);
  return 0;
}
