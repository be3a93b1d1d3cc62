// nginx before several instances of the service, which take turns.
#pragma once

#include <gtest/gtest.h>

#include <span>

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/RawClient.h"
#include "support/TemporaryFolder.h"

namespace vemo::service {

class NginxProxy {
 public:
  explicit NginxProxy(std::span<const std::uint16_t> instances) {
    const auto folder = m_folder.path().string();
    std::string servers;
    for (const auto port : instances)
      servers += "    server 127.0.0.1:" + std::to_string(port) + ";\n";
    std::string temporary;
    for (const auto* name : {"client_body", "proxy", "fastcgi", "uwsgi", "scgi"})
      temporary += "  " + std::string(name) + "_temp_path " + folder + "/" + name + ";\n";
    const auto configuration = m_folder.write(
        "nginx.conf",
        "daemon off;\nmaster_process off;\nerror_log stderr;\npid " + folder +
            "/pid;\nevents {}\nhttp {\n  access_log off;\n" + temporary +
            "  client_max_body_size 32m;\n  upstream instances {\n" + servers +
            "  }\n  server {\n    listen 127.0.0.1:" + std::to_string(m_place.port()) +
            " reuseport;\n    location / {\n      proxy_pass http://instances;\n"
            "      proxy_http_version 1.1;\n      proxy_set_header Connection \"\";\n"
            "      proxy_set_header X-Forwarded-For $proxy_add_x_forwarded_for;\n"
            "    }\n  }\n}\n");
    m_nginx = ChildProcess({"setpriv", "--pdeathsig", "KILL", "/usr/sbin/nginx", "-p", folder, "-c",
                            configuration.string()},
                           m_folder.path() / "out", m_folder.path() / "err");
    EXPECT_TRUE(eventually([this] { return RawClient(port()).isConnected(); }))
        << readFile(m_folder.path() / "err");
  }

  std::uint16_t port() const { return m_place.port(); }

 private:
  /// A free port, which nobody but nginx can take while this is there.
  class Place {
   public:
    Place() {
      const int isShared = 1;
      ::setsockopt(m_socket, SOL_SOCKET, SO_REUSEPORT, &isShared, sizeof isShared);
      m_address.sin_family = AF_INET;
      m_address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
      auto* const address = reinterpret_cast<sockaddr*>(&m_address);
      socklen_t length = sizeof m_address;
      ::bind(m_socket, address, length);
      ::getsockname(m_socket, address, &length);
    }
    ~Place() { ::close(m_socket); }
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    std::uint16_t port() const { return ntohs(m_address.sin_port); }

   private:
    const int m_socket = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
    sockaddr_in m_address{};
  };

  TemporaryFolder m_folder;
  const Place m_place;
  ChildProcess m_nginx;
};

}  // namespace vemo::service
