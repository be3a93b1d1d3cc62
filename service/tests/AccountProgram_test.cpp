// The real program with accounts, driven from outside: signed in to, listed, revoked, summed up.
#include <boost/json.hpp>

#include "support/ChildProcess.h"
#include "support/Eventually.h"
#include "support/IdTokens.h"
#include "support/KeySetServer.h"
#include "support/RawClient.h"
#include "support/TemporaryFolder.h"

#include <gmock/gmock.h>

namespace vemo::service {
namespace {

using testing::HasSubstr;
using testing::Not;

class AccountProgramTest : public testing::Test {
 protected:
  std::string configuration() {
    return m_folder
        .write("service.conf",
               "[server]\nport = 0\ntokens-file = " + path("tokens") +
                   "\n[accounts]\nenabled = yes\ndatabase = sqlite:" + path("accounts.db") +
                   "\nclient-identifiers = our-client\nissuers = https://issuer\njwks-address = " +
                   m_keys.address() + "\n")
        .string();
  }
  std::string path(const std::string& name) const { return (m_folder.path() / name).string(); }
  /// What a command prints.
  std::string run(std::vector<std::string> command) {
    command.insert(command.begin(), {VEMO_SERVICE_PROGRAM, "--config", configuration()});
    EXPECT_EQ(ChildProcess(command, path("command.out"), path("command.err")).wait(), 0)
        << readFile(path("command.err"));
    return readFile(path("command.out"));
  }
  void start() {
    m_service =
        ChildProcess({VEMO_SERVICE_PROGRAM, "--config", configuration()}, path("out"), path("err"));
    ASSERT_TRUE(eventually([&] { return readFile(path("out")).ends_with("\n"); }));
    const auto line = readFile(path("out"));
    m_port = static_cast<std::uint16_t>(std::stoi(line.substr(line.rfind(':') + 1)));
  }
  RawAnswer ask(const std::string& line, const std::string& token, const std::string& body = "") {
    return RawClient(m_port)
        .exchange(line + " HTTP/1.1\r\nHost: x\r\nAuthorization: Bearer " + token +
                  "\r\nContent-Length: " + std::to_string(body.size()) + "\r\n\r\n" + body)
        .value_or(RawAnswer{});
  }

  TemporaryFolder m_folder;
  KeySetServer m_keys{keySetOf({providerKey()})};
  ChildProcess m_service;
  std::uint16_t m_port = 0;
};

TEST_F(AccountProgramTest, ASignInLastsUntilItsTokensAreRevokedFromOutside) {
  start();
  const auto idToken = providerKey().sign(Claims(currentMoment()).text());
  const auto signedIn = ask("POST /desktop/auth/google", "", R"({"idToken":")" + idToken + "\"}");
  ASSERT_EQ(signedIn.status, 200) << readFile(path("err"));
  const std::string token(boost::json::parse(signedIn.body).at("token").as_string());
  EXPECT_EQ(ask("GET /desktop/auth/profile", token).status, 200);
  EXPECT_THAT(run({"accounts"}), HasSubstr("\tada@example.org\tAda\n"));
  EXPECT_THAT(run({"stats"}), HasSubstr("Accounts: 1,"));
  EXPECT_THAT(run({"revoke-tokens", "ada@example.org"}), HasSubstr(": 1 token revoked"));
  // Every connection to the database sees it, whichever is asked.
  for (int request = 0; request < 8; ++request) {
    EXPECT_EQ(ask("GET /desktop/auth/profile", token).status, 401);
    EXPECT_EQ(ask("POST /desktop/dictate", token).status, 401);
  }
  EXPECT_EQ(m_service.end(SIGTERM), 0);
  EXPECT_THAT(readFile(path("err")), Not(HasSubstr(token)));
  EXPECT_THAT(readFile(path("accounts.db")), Not(HasSubstr(token)));
  EXPECT_THAT(readFile(path("accounts.db")), Not(HasSubstr(idToken)));
}

TEST_F(AccountProgramTest, ADatabaseThatOthersMayReadStopsItWithOneLine) {
  m_folder.write("accounts.db", "");
  std::filesystem::permissions(path("accounts.db"), std::filesystem::perms(0644));
  ChildProcess service({VEMO_SERVICE_PROGRAM, "--config", configuration()}, path("out"),
                       path("err"));
  EXPECT_EQ(service.wait(), 1);
  EXPECT_THAT(readFile(path("err")), HasSubstr("others may read it; run chmod 600"));
}

}  // namespace
}  // namespace vemo::service
