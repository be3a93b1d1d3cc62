#include "provider/PeerLogin.h"

#include <gtest/gtest.h>
#include <sys/wait.h>
#include <unistd.h>

#include <boost/asio.hpp>

namespace vemo::service {
namespace {

namespace net = boost::asio;
using net::ip::tcp;

tcp::endpoint at(const char* address, std::uint16_t port) {
  return {net::ip::make_address(address), port};
}

constexpr std::string_view table =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n"
    "   0: 0100007F:222F 00000000:0000 0A 00000000:00000000 00:00000000 00000000  1000        0 "
    "11 1 0 100 0 0 10 0\n"
    "   1: 0100007F:C350 0100007F:222F 01 00000000:00000000 00:00000000 00000000  1001        0 "
    "12 1 0 20 4 30 10 -1\n"
    "   2: 0100007F:222F 0100007F:C350 01 00000000:00000000 00:00000000 00000000  1000        0 "
    "13 1 0 20 4 30 10 -1\n"
    "   3: broken\n"
    "   4: 00000000000000000000000001000000:C351 00000000000000000000000001000000:222F 01 "
    "00000000:00000000 00:00000000 00000000  1002        0 14 1 0 20 4 30 10 -1\n"
    "   5: 0100007F:C352 0100007F:222F 01 00000000:00000000 00:00000000\n"
    "   6: 0100007F:C353 0100007F:222F 01 00000000:00000000 00:00000000 00000000  1003        0 "
    "15 1 0 20 4 30 10 -1\n";

TEST(PeerLoginTest, TheEndThatAsksCountsAndNotOneOfTheSamePort) {
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 50'000), at("127.0.0.1", 8751)), 1001U);
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 8751), at("127.0.0.1", 50'000)), 1000U);
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 50'001), at("127.0.0.1", 8751)), std::nullopt);
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 50'000), at("127.0.0.1", 8752)), std::nullopt);
}

TEST(PeerLoginTest, AddressesOfVersion6AreRead) {
  EXPECT_EQ(loginIn(table, at("::1", 50'001), at("::1", 8751)), 1002U);
}

TEST(PeerLoginTest, ALineThatBreaksOffTellsNothingAndHidesNoOther) {
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 50'002), at("127.0.0.1", 8751)), std::nullopt);
  EXPECT_EQ(loginIn(table, at("127.0.0.1", 50'003), at("127.0.0.1", 8751)), 1003U);
}

TEST(PeerLoginTest, AnUnreadableTableTellsNothing) {
  EXPECT_EQ(loginIn("", at("127.0.0.1", 1), at("127.0.0.1", 2)), std::nullopt);
  EXPECT_EQ(loginIn("\n\n1: x", at("127.0.0.1", 1), at("127.0.0.1", 2)), std::nullopt);
}

class LivePeerTest : public testing::TestWithParam<const char*> {
 protected:
  net::io_context m_io;
  tcp::acceptor m_acceptor{m_io, at(GetParam(), 0)};
};

TEST_P(LivePeerTest, AProgramOfThisLoginIsKnown) {
  tcp::socket client(m_io);
  client.connect(m_acceptor.local_endpoint());
  EXPECT_TRUE(isOfOwnLogin(m_acceptor.accept()));
}

TEST_P(LivePeerTest, AConnectionThatHasGoneIsNobodys) {
  tcp::socket client(m_io);
  client.connect(m_acceptor.local_endpoint());
  auto socket = m_acceptor.accept();
  socket.close();
  EXPECT_FALSE(isOfOwnLogin(socket));
}

TEST_P(LivePeerTest, AProgramOfAnotherLoginIsKnownForThat) {
  // Only root can become somebody else; another login sees it the other way round, as root's.
  const uid_t nobody = 65'534;
  const auto child = ::fork();
  if (child == 0) {
    if (::getuid() == 0 && ::setresuid(nobody, nobody, nobody) != 0) ::_exit(2);
    net::io_context io;
    tcp::socket client(io);
    boost::system::error_code error;
    client.connect(m_acceptor.local_endpoint(), error);
    char byte = 0;
    if (!error) client.read_some(net::buffer(&byte, 1), error);
    ::_exit(0);
  }
  ASSERT_GT(child, 0);
  auto socket = m_acceptor.accept();
  EXPECT_EQ(isOfOwnLogin(socket), ::getuid() != 0);
  socket.close();
  int status = 0;
  ::waitpid(child, &status, 0);
  EXPECT_EQ(WEXITSTATUS(status), 0);
}

INSTANTIATE_TEST_SUITE_P(Versions, LivePeerTest, testing::Values("127.0.0.1", "::1"),
                         [](const auto& version) {
                           return std::string(version.param) == "::1" ? "Version6" : "Version4";
                         });

}  // namespace
}  // namespace vemo::service
