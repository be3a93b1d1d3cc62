// A client that sends exactly the bytes it is told to, well-formed or not.
#pragma once

#include <arpa/inet.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cstdlib>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

struct RawAnswer {
  int status = 0;
  std::string head = {};
  std::string body = {};

  bool operator==(int expected) const { return status == expected; }
};

class RawClient {
 public:
  explicit RawClient(std::uint16_t port) : m_socket(::socket(AF_INET, SOCK_STREAM, 0)) {
    // Far above every limit that a test sets: a server that hangs fails the test instead.
    const timeval limit{.tv_sec = 60, .tv_usec = 0};
    ::setsockopt(m_socket, SOL_SOCKET, SO_RCVTIMEO, &limit, sizeof limit);
    ::setsockopt(m_socket, SOL_SOCKET, SO_SNDTIMEO, &limit, sizeof limit);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    m_connected =
        ::connect(m_socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  }
  ~RawClient() { close(); }
  RawClient(const RawClient&) = delete;
  RawClient& operator=(const RawClient&) = delete;

  bool isConnected() const { return m_connected; }

  /// False when the server has closed the connection.
  bool send(std::string_view bytes) {
    while (!bytes.empty()) {
      const auto count = ::send(m_socket, bytes.data(), bytes.size(), MSG_NOSIGNAL);
      if (count <= 0) return false;
      bytes.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

  /// None when the connection ends before a whole answer.
  std::optional<RawAnswer> read() {
    std::size_t end = std::string::npos;
    while ((end = m_input.find("\r\n\r\n")) == std::string::npos)
      if (!receive()) return std::nullopt;
    RawAnswer answer{.status = std::atoi(m_input.substr(9, 3).c_str()),
                     .head = m_input.substr(0, end + 2)};
    m_input.erase(0, end + 4);
    const auto field = answer.head.find("Content-Length: ");
    const std::size_t length =
        field == std::string::npos
            ? 0
            : static_cast<std::size_t>(std::atoll(answer.head.c_str() + field + 16));
    while (m_input.size() < length)
      if (!receive()) return std::nullopt;
    answer.body = m_input.substr(0, length);
    m_input.erase(0, length);
    return answer;
  }

  std::optional<RawAnswer> exchange(std::string_view request) {
    return send(request) ? read() : std::nullopt;
  }

  /// True once the server has ended the connection; what it still sends is dropped.
  bool waitForEnd() {
    while (receive()) m_input.clear();
    return m_ended;
  }
  bool hasInput() const {
    char byte = 0;
    return ::recv(m_socket, &byte, 1, MSG_PEEK | MSG_DONTWAIT) >= 0;
  }

  /// Nothing more will be sent, but answers can still come.
  void finishSending() { ::shutdown(m_socket, SHUT_WR); }
  void close() {
    if (m_socket >= 0) ::close(m_socket);
    m_socket = -1;
  }

 private:
  bool receive() {
    char block[4096];
    const auto count = ::recv(m_socket, block, sizeof block, 0);
    if (count == 0 || (count < 0 && errno == ECONNRESET)) m_ended = true;
    if (count <= 0) return false;
    m_input.append(block, static_cast<std::size_t>(count));
    return true;
  }

  int m_socket;
  bool m_connected = false;
  bool m_ended = false;
  std::string m_input;
};

}  // namespace vemo::service
