// A real PostgreSQL of the test's own: in a folder of its own, without a port, as an ordinary user.
#pragma once

#include <gtest/gtest.h>

#include <algorithm>

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/TemporaryFolder.h"

namespace vemo::service {

class PostgresServer {
 public:
  /// The one of this test program, started at its first use.
  static PostgresServer& instance() {
    static PostgresServer server;
    return server;
  }

  ~PostgresServer() { stop(); }
  PostgresServer(const PostgresServer&) = delete;
  PostgresServer& operator=(const PostgresServer&) = delete;

  /// A postgresql:// address of an empty database.
  std::string makeDatabase() {
    const auto name = "test" + std::to_string(++m_count);
    EXPECT_EQ(run({m_programs + "/createdb", "-h", folder(), "-U", "vemo", name}), 0) << errors();
    return "postgresql://vemo@/" + name + "?host=" + folder();
  }

  void start() {
    // Safe from a crash of the machine is nothing that a test needs to be.
    m_server = ChildProcess(
        asOrdinaryUser({m_programs + "/postgres", "-D", data(), "-k", folder(), "-c",
                        "listen_addresses=", "-c", "fsync=off", "-c", "shared_buffers=16MB"}),
        m_folder.path() / "out", m_folder.path() / "server.err");
    const bool isUp = eventually(
        [&] { return run({m_programs + "/pg_isready", "-q", "-h", folder(), "-U", "vemo"}) == 0; });
    EXPECT_TRUE(isUp) << readFile(m_folder.path() / "server.err");
  }
  /// Ends connections without a word, as a crash does.
  void stop() {
    if (m_server.isStarted()) m_server.end(SIGQUIT);
  }

  std::string data() const { return folder() + "/data"; }

 private:
  PostgresServer() {
    for (const auto& version : std::filesystem::directory_iterator("/usr/lib/postgresql"))
      m_programs = std::max(m_programs, version.path().string() + "/bin");
    if (::geteuid() == 0) EXPECT_EQ(::chown(m_folder.path().c_str(), nobody, nobody), 0);
    EXPECT_EQ(run(asOrdinaryUser({m_programs + "/initdb", "--no-sync", "--auth=trust", "-U", "vemo",
                                  "-D", data()})),
              0)
        << errors();
    start();
  }

  static constexpr uid_t nobody = 65534;

  /// It refuses to run as root; what it is started by takes it along.
  static std::vector<std::string> asOrdinaryUser(std::vector<std::string> command) {
    std::vector<std::string> prefix = {"setpriv", "--pdeathsig", "QUIT"};
    if (::geteuid() == 0)
      prefix.insert(prefix.end(), {"--reuid=" + std::to_string(nobody),
                                   "--regid=" + std::to_string(nobody), "--clear-groups"});
    prefix.insert(prefix.end(), command.begin(), command.end());
    return prefix;
  }
  int run(std::vector<std::string> command) {
    return ChildProcess(std::move(command), m_folder.path() / "tool.out",
                        m_folder.path() / "tool.err")
        .wait();
  }
  std::string errors() const { return readFile(m_folder.path() / "tool.err"); }
  std::string folder() const { return m_folder.path().string(); }

  TemporaryFolder m_folder;
  std::string m_programs;
  ChildProcess m_server;
  int m_count = 0;
};

}  // namespace vemo::service
