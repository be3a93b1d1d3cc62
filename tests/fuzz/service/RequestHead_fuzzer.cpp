// Request heads and their queries, read the way a connection reads them, in two pieces.
#include <boost/asio/buffer.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <cstdlib>

#include "http/RequestTarget.h"

namespace http = boost::beast::http;
using namespace vemo::service;

namespace {

constexpr std::size_t bodyLimit = 1024;

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
  const auto target = parseTarget(parser.get().target());
  if (!target) return;
  const auto whole = target->language.size() + target->sessionId.size() + target->chunkIndex.size();
  if (whole > parser.get().target().size()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view text(reinterpret_cast<const char*>(data), size);
  const auto half = size / 2;
  read(text.substr(0, half), text.substr(half));
  static_cast<void>(parseTarget(text));
  return 0;
}
