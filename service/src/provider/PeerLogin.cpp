#include "provider/PeerLogin.h"

#include <unistd.h>

#include <boost/asio.hpp>
#include <cstdio>
#include <cstring>
#include <fstream>
#include <sstream>

namespace vemo::service {

namespace {

using boost::asio::ip::tcp;

std::string hexadecimal(std::uint32_t number, int digits) {
  char text[9];
  std::snprintf(text, sizeof text, "%0*X", digits, number);
  return text;
}

/// As the kernel writes it: words of 32 bits in this machine's order, then the port.
std::string written(const tcp::endpoint& endpoint) {
  std::string text;
  const auto add = [&text](const auto& bytes) {
    for (std::size_t at = 0; at < bytes.size(); at += sizeof(std::uint32_t)) {
      std::uint32_t word = 0;
      std::memcpy(&word, bytes.data() + at, sizeof word);
      text += hexadecimal(word, 8);
    }
  };
  if (endpoint.address().is_v4())
    add(endpoint.address().to_v4().to_bytes());
  else
    add(endpoint.address().to_v6().to_bytes());
  return text + ":" + hexadecimal(endpoint.port(), 4);
}

tcp::endpoint asVersion6(const tcp::endpoint& endpoint) {
  if (endpoint.address().is_v6()) return endpoint;
  return {boost::asio::ip::make_address_v6(boost::asio::ip::v4_mapped, endpoint.address().to_v4()),
          endpoint.port()};
}

std::string contentOf(const char* path) {
  std::ostringstream content;
  content << std::ifstream(path).rdbuf();
  return std::move(content).str();
}

}  // namespace

std::optional<uid_t> loginIn(std::string_view table, const tcp::endpoint& from,
                             const tcp::endpoint& to) {
  // The table has a line for each connection of the machine; only that of this one is taken apart.
  const auto ends = " " + written(from) + " " + written(to) + " ";
  const auto place = table.find(ends);
  if (place == std::string_view::npos) return std::nullopt;
  const auto rest = table.substr(place + ends.size());
  std::istringstream fields{std::string(rest.substr(0, rest.find('\n')))};
  std::string state, queues, timer, retransmits;
  uid_t login = 0;
  if (!(fields >> state >> queues >> timer >> retransmits >> login)) return std::nullopt;
  return login;
}

bool isOfOwnLogin(const tcp::socket& socket) {
  boost::system::error_code error;
  const auto own = socket.local_endpoint(error);
  if (error) return false;
  const auto peer = socket.remote_endpoint(error);
  if (error) return false;
  auto login = loginIn(contentOf("/proc/net/tcp"), peer, own);
  // Also where the peer connects from a socket that speaks both protocols.
  if (!login) login = loginIn(contentOf("/proc/net/tcp6"), asVersion6(peer), asVersion6(own));
  return login == ::getuid();
}

}  // namespace vemo::service
