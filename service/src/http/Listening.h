// Opening an acceptor on an address, for every server of this program.
#pragma once

#include <boost/asio/ip/tcp.hpp>
#include <expected>
#include <string>

namespace vemo::service {

/// Binds and listens; the error is one line for the operator.
std::expected<void, std::string> listenOn(boost::asio::ip::tcp::acceptor& acceptor,
                                          const std::string& address, std::uint16_t port);

/// "http://address:port", with the port that was chosen.
std::string addressOf(const boost::asio::ip::tcp::acceptor& acceptor);

}  // namespace vemo::service
