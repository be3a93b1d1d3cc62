// Whose program stands at the other end of a connection over loopback.
//
// Everyone who is logged in on a machine reaches its loopback ports; a page that signs its owner in
// has to know who asks.
#pragma once

#include <sys/types.h>

#include <boost/asio/ip/tcp.hpp>
#include <optional>
#include <string_view>

namespace vemo::service {

/// The login of the socket that is bound to `from` and connected to `to`, by a table of the form
/// of /proc/net/tcp.
std::optional<uid_t> loginIn(std::string_view table, const boost::asio::ip::tcp::endpoint& from,
                             const boost::asio::ip::tcp::endpoint& to);

/// Whether the peer of a connected socket runs under this program's login. False when nobody can
/// tell.
bool isOfOwnLogin(const boost::asio::ip::tcp::socket& socket);

}  // namespace vemo::service
