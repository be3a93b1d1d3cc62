#include "http/Listening.h"

#include <boost/asio.hpp>
#include <boost/lexical_cast.hpp>

namespace vemo::service {

namespace net = boost::asio;

std::expected<void, std::string> listenOn(net::ip::tcp::acceptor& acceptor,
                                          const std::string& address, std::uint16_t port) {
  try {
    const net::ip::tcp::endpoint endpoint(net::ip::make_address(address), port);
    acceptor.open(endpoint.protocol());
    acceptor.set_option(net::socket_base::reuse_address(true));
    acceptor.bind(endpoint);
    acceptor.listen();
  } catch (const boost::system::system_error& error) {
    return std::unexpected("cannot listen on " + address + " port " + std::to_string(port) + ": " +
                           error.code().message());
  }
  return {};
}

std::string addressOf(const net::ip::tcp::acceptor& acceptor) {
  return "http://" + boost::lexical_cast<std::string>(acceptor.local_endpoint());
}

}  // namespace vemo::service
