// An identity provider's published keys, on loopback; what it answers can change.
#pragma once

#include <string>

#include "support/LocalServer.h"

namespace vemo::service {

class KeySetServer {
 public:
  explicit KeySetServer(const std::string& keys) : m_server(answerOf(keys)) {}

  std::string address() const { return "http://127.0.0.1:" + m_server.port() + "/jwks"; }

  void answerWith(const std::string& keys, const std::string& headers = "",
                  const std::string& status = "200") {
    m_server.answerWith(answerOf(keys, headers, status));
  }

  int asked() const { return m_server.requestCount(); }

 private:
  static std::string answerOf(const std::string& keys, const std::string& headers = "",
                              const std::string& status = "200") {
    return "HTTP/1.1 " + status + " X\r\n" + headers +
           "Content-Length: " + std::to_string(keys.size()) + "\r\n\r\n" + keys;
  }

  LocalServer m_server;
};

}  // namespace vemo::service
