#include "http/NetworkSource.h"

#include <boost/algorithm/string/trim.hpp>
#include <boost/asio/ip/address.hpp>
#include <boost/asio/ip/network_v6.hpp>

namespace vemo::service {

namespace {

std::string proxiedSource(const Request& request) {
  std::string last;
  const auto [first, end] = request.headers.equal_range("X-Forwarded-For");
  for (auto field = first; field != end; ++field) last = std::string(field->value());
  last.erase(0, last.rfind(',') + 1);
  boost::algorithm::trim(last);
  return last;
}

}  // namespace

std::string networkOf(const Request& request, bool behindProxy) {
  const auto source = behindProxy ? proxiedSource(request) : request.source;
  boost::system::error_code error;
  const auto address = boost::asio::ip::make_address(source, error);
  if (error || address.is_v4()) return source;
  return boost::asio::ip::make_network_v6(address.to_v6(), 64).canonical().to_string();
}

}  // namespace vemo::service
