// A program that a test runs beside itself, ended with the test.
#pragma once

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <utility>
#include <vector>

extern char** environ;

namespace vemo::service {

class ChildProcess {
 public:
  ChildProcess() = default;
  /// Output and errors go to files of those names; the program is looked for in PATH.
  ChildProcess(std::vector<std::string> command, const std::filesystem::path& output,
               const std::filesystem::path& errors) {
    std::vector<char*> pointers;
    for (auto& word : command) pointers.push_back(word.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    posix_spawn_file_actions_addopen(&actions, 1, output.c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, errors.c_str(), flags, 0600);
    if (::posix_spawnp(&m_id, pointers[0], &actions, nullptr, pointers.data(), environ) != 0)
      m_id = 0;
    posix_spawn_file_actions_destroy(&actions);
  }
  ~ChildProcess() {
    if (m_id > 0) end(SIGKILL);
  }
  ChildProcess(ChildProcess&& other) noexcept : m_id(std::exchange(other.m_id, 0)) {}
  ChildProcess& operator=(ChildProcess&& other) noexcept {
    std::swap(m_id, other.m_id);
    return *this;
  }

  bool isStarted() const { return m_id > 0; }
  void signal(int number) const { ::kill(m_id, number); }
  /// The exit code; -1 when a signal ended it.
  int wait() {
    int status = 0;
    ::waitpid(m_id, &status, 0);
    m_id = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int end(int number) {
    signal(number);
    return wait();
  }

 private:
  pid_t m_id = 0;
};

}  // namespace vemo::service
