// The servers that uploads go to, each a process of its own so that its memory can be told apart.
#pragma once

#include <arpa/inet.h>
#include <malloc.h>
#include <signal.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <fstream>
#include <iostream>
#include <thread>

#include "Program.h"
#include "setup/TokenFile.h"
#include "speech/RecognitionQueue.h"
#include "support/TemporaryFolder.h"

namespace vemo::service::bench {

/// A child process, ended with its owner.
class Peer {
 public:
  ~Peer() {
    ::kill(m_process, SIGTERM);
    ::waitpid(m_process, nullptr, 0);
  }
  Peer(const Peer&) = delete;
  Peer& operator=(const Peer&) = delete;

  std::uint16_t port() const { return m_port; }
  std::size_t residentBytes() const {
    std::ifstream file("/proc/" + std::to_string(m_process) + "/statm");
    std::size_t total = 0;
    std::size_t resident = 0;
    file >> total >> resident;
    return resident * static_cast<std::size_t>(::getpagesize());
  }

 protected:
  Peer() = default;

  TemporaryFolder m_folder;
  pid_t m_process = -1;
  std::uint16_t m_port = 0;
};

/// Takes as long for every recording, and hears the same in each.
class DelayedEngine : public Engine {
 public:
  explicit DelayedEngine(std::chrono::milliseconds delay) : m_delay(delay) {}

  std::expected<void, std::string> load() override { return {}; }
  std::expected<std::string, EngineError> transcribe(const Recording&, const TranscriptionOptions&,
                                                     std::stop_token) override {
    std::this_thread::sleep_for(m_delay);
    return "some words";
  }

 private:
  std::chrono::milliseconds m_delay;
};

/// The whole service, but for its recogniser.
class ServicePeer : public Peer {
 public:
  ServicePeer(RecognitionQueue::Size queue, std::chrono::milliseconds delay,
              const AccountSettings& accounts = {}) {
    Configuration configuration;
    configuration.accounts = accounts;
    configuration.port = 0;
    configuration.tokensFile = m_folder.path() / "tokens";
    configuration.workers = queue.workers;
    configuration.waiting = queue.waiting;
    m_token = TokenFile::add(configuration.tokensFile).value();
    int ends[2];
    if (::pipe(ends) != 0) std::abort();
    m_process = ::fork();
    if (m_process == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      ::mallopt(M_MMAP_THRESHOLD, 128 * 1024);  // as the program does
      std::ofstream output("/dev/fd/" + std::to_string(ends[1]));
      std::ofstream log("/dev/null");
      const EngineKind engine{.name = "delayed",
                              .output = EngineKind::Output::Punctuated,
                              .make = [delay] { return std::make_unique<DelayedEngine>(delay); }};
      std::_Exit(serve(configuration, engine, output, log));
    }
    ::close(ends[1]);
    std::string line;
    for (char byte = 0; ::read(ends[0], &byte, 1) == 1 && byte != '\n';) line += byte;
    ::close(ends[0]);
    m_port = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }

  const std::string& token() const { return m_token; }

 private:
  std::string m_token;
};

/// nginx that accepts every body and throws it away; it answers as soon as it has the head.
class NginxPeer : public Peer {
 public:
  NginxPeer() {
    m_port = freePort();
    const auto folder = m_folder.path().string();
    const auto configuration = m_folder.write(
        "nginx.conf",
        "daemon off;\nmaster_process off;\nerror_log stderr crit;\npid " + folder +
            "/pid;\nevents { worker_connections 2048; }\nhttp {\n  access_log off;\n"
            "  client_max_body_size 0;\n  client_body_temp_path " +
            folder + "/body;\n  proxy_temp_path " + folder + "/proxy;\n  fastcgi_temp_path " +
            folder + "/fastcgi;\n  uwsgi_temp_path " + folder + "/uwsgi;\n  scgi_temp_path " +
            folder + "/scgi;\n  server {\n    listen 127.0.0.1:" + std::to_string(m_port) +
            ";\n    location / { return 200; }\n  }\n}\n");
    m_process = ::fork();
    if (m_process == 0) {
      ::prctl(PR_SET_PDEATHSIG, SIGKILL);
      ::execl("/usr/sbin/nginx", "nginx", "-p", folder.c_str(), "-c", configuration.c_str(),
              nullptr);
      std::_Exit(127);
    }
  }

  static bool isInstalled() { return ::access("/usr/sbin/nginx", X_OK) == 0; }

 private:
  static std::uint16_t freePort() {
    const int socket = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    socklen_t length = sizeof address;
    ::bind(socket, reinterpret_cast<sockaddr*>(&address), length);
    ::getsockname(socket, reinterpret_cast<sockaddr*>(&address), &length);
    ::close(socket);
    return ntohs(address.sin_port);
  }
};

}  // namespace vemo::service::bench
