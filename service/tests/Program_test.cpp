// The real program, driven from outside as an operator would.
#include <fcntl.h>
#include <gmock/gmock.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>

#include <algorithm>
#include <utility>

#include "support/Eventually.h"
#include "support/RawClient.h"
#include "support/TemporaryFolder.h"
#include "support/WavFile.h"

extern char** environ;

namespace vemo::service {
namespace {

using testing::AllOf;
using testing::HasSubstr;
using testing::MatchesRegex;
using testing::Not;

class ProgramTest : public testing::Test {
 protected:
  void TearDown() override {
    if (m_process <= 0) return;
    ::kill(m_process, SIGKILL);
    ::waitpid(m_process, nullptr, 0);
  }
  void start(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), VEMO_SERVICE_PROGRAM);
    std::vector<char*> pointers;
    for (auto& argument : arguments) pointers.push_back(argument.data());
    pointers.push_back(nullptr);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    const int flags = O_WRONLY | O_CREAT | O_TRUNC | O_APPEND;
    posix_spawn_file_actions_addopen(&actions, 1, m_output.c_str(), flags, 0600);
    posix_spawn_file_actions_addopen(&actions, 2, m_errors.c_str(), flags, 0600);
    ASSERT_EQ(::posix_spawn(&m_process, VEMO_SERVICE_PROGRAM, &actions, nullptr, pointers.data(),
                            environ),
              0);
    posix_spawn_file_actions_destroy(&actions);
  }
  int waitForExit() {
    int status = 0;
    ::waitpid(m_process, &status, 0);
    m_process = 0;
    return WIFEXITED(status) ? WEXITSTATUS(status) : -1;
  }
  int run(std::vector<std::string> arguments) {
    start(std::move(arguments));
    return waitForExit();
  }
  std::string configuration(const std::string& more = "") {
    return m_folder
        .write("service.conf", "[server]\nport = 0\ntokens-file = " +
                                   (m_folder.path() / "tokens").string() + "\n" + more)
        .string();
  }
  std::string addToken() {
    EXPECT_EQ(run({"--config", configuration(), "add-token"}), 0);
    auto token = output();
    token.pop_back();
    return token;
  }
  std::uint16_t port() {
    EXPECT_TRUE(eventually([&] { return output().ends_with("\n"); }));
    const auto line = output();
    EXPECT_THAT(line, HasSubstr("Listening on http://127.0.0.1:"));
    return static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  std::string output() { return readFile(m_output); }
  std::string errors() { return readFile(m_errors); }

  TemporaryFolder m_folder;
  std::filesystem::path m_output = m_folder.path() / "out";
  std::filesystem::path m_errors = m_folder.path() / "err";
  pid_t m_process = 0;
};

TEST_F(ProgramTest, SpeechGoesInAndTextComesOut) {
  const auto token = addToken();
  start({"--config", configuration()});
  RawClient client(port());
  const auto wav =
      WavFile{.pcm = readFile("/usr/share/pocketsphinx/test/data/goforward.raw")}.bytes();
  const auto answer = client.exchange(
      "POST /desktop/dictate?format_mode=smart&language=en HTTP/1.1\r\nHost: x\r\nAuthorization: "
      "Bearer " +
      token + "\r\nContent-Length: " + std::to_string(wav.size()) + "\r\n\r\n" + wav);
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->body, R"({"status":"success","transcription":"Go forward ten meters."})");
  // Told once every worker has loaded its engine, of which the answer took but one.
  ASSERT_TRUE(eventually([this] { return errors().contains("pocketsphinx is ready"); }));
  ::kill(m_process, SIGTERM);
  EXPECT_EQ(waitForExit(), 0);
  EXPECT_THAT(errors(), AllOf(HasSubstr("POST /desktop/dictate 200 89204B "),
                              Not(HasSubstr("forward")), Not(HasSubstr(token))));
}

TEST_F(ProgramTest, ATokenThatIsMadeWhileItRunsIsGoodAtOnce) {
  start({"--config", configuration()});
  const auto number = port();
  EXPECT_THAT(errors(), HasSubstr("no tokens yet"));
  const auto running = std::exchange(m_process, 0);
  const auto token = addToken();
  m_process = running;
  RawClient client(number);
  const auto answer =
      client.exchange("POST /desktop/dictate HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " +
                      token + "\r\nContent-Length: 0\r\n\r\n");
  ASSERT_TRUE(answer);
  EXPECT_EQ(answer->status, 400);
}

TEST_F(ProgramTest, ATerminationSignalEndsItWhenNobodyIsConnected) {
  start({"--config", configuration()});
  port();
  ::kill(m_process, SIGTERM);
  EXPECT_EQ(waitForExit(), 0);
}

TEST_F(ProgramTest, HelpIsPrinted) {
  EXPECT_EQ(run({"--help"}), 0);
  EXPECT_THAT(output(), HasSubstr("add-token"));
}

TEST_F(ProgramTest, TheVersionIsPrintedAlsoWhereTheConfigurationCannotBeUsed) {
  EXPECT_EQ(run({"--config", "/absent.conf", "--version"}), 0);
  EXPECT_THAT(output(), MatchesRegex("vemo-service [0-9.]+\n"));
}

TEST_F(ProgramTest, WhatCannotWorkStopsItWithOneLineAndAStatusOfItsOwnWhereNoNewStartHelps) {
  constexpr int unusable = 2;
  const auto stopsWith = [&](std::vector<std::string> arguments, const std::string& text,
                             int status) {
    EXPECT_EQ(run(std::move(arguments)), status);
    EXPECT_THAT(errors(), AllOf(HasSubstr("vemo-service: "), HasSubstr(text)));
    EXPECT_EQ(std::ranges::count(errors(), '\n'), 1) << errors();
    EXPECT_EQ(output(), "");
  };
  stopsWith({"--nonsense"}, "--help", unusable);
  stopsWith({"--config", "/absent.conf"}, "/absent.conf", unusable);
  stopsWith({"--config", m_folder.write("bad", "[server]\nport = many").string()},
            "must be a port number", unusable);
  m_folder.write("tokens", "no hash\n");
  stopsWith({"--config", configuration()}, "line 1", 1);
}

TEST_F(ProgramTest, APortThatIsTakenStopsItWithAClearLine) {
  start({"--config", configuration()});
  const auto taken = port();
  const auto running = std::exchange(m_process, 0);
  const auto second = m_folder.write(
      "second.conf", "[server]\nport = " + std::to_string(taken) + "\ntokens-file = /absent\n");
  EXPECT_EQ(run({"--config", second.string()}), 1);
  EXPECT_THAT(errors(), HasSubstr("cannot listen on 127.0.0.1 port " + std::to_string(taken)));
  m_process = running;
}

TEST_F(ProgramTest, AnEngineThatDoesNotLoadStopsItWithAClearLine) {
  EXPECT_EQ(run({"--config", configuration("[pocketsphinx]\ndictionary = /absent\n")}), 1);
  EXPECT_THAT(errors(), HasSubstr("model lacks /absent"));
}

}  // namespace
}  // namespace vemo::service
