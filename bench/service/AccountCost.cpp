// What accounts cost a dictation: the same uploads with accounts off and on, one after the other,
// in turns.
//
// usage: service_account_cost [ROUNDS]
//
// A round (of 300) is one recording of 5 s a peer, over a connection that stays, with a recogniser
// that takes no time; so all that is measured is the service itself. Prints the median of each and
// the ratio to accounts off. Exits with 1 when an upload fails, or when accounts cost a dictation
// more than `mostMilliseconds`.
#include <algorithm>
#include <cstdio>

#include "Peers.h"
#include "accounts/BearerTokens.h"
#include "database/Migrations.h"
#include "support/PostgresServer.h"
#include "support/RawClient.h"
#include "support/WavFile.h"

using namespace vemo::service;
using namespace vemo::service::bench;

namespace {

using Clock = std::chrono::steady_clock;

constexpr double mostMilliseconds = 20;
constexpr RecognitionQueue::Size oneWorker{.workers = 1, .waiting = 8};

std::string accountToken(const DatabaseAddress& address) {
  Database database(address);
  if (!migrate(database)) std::abort();
  const auto now = currentMoment();
  const auto account = Accounts(database).signIn({.issuer = "i", .subject = "s"}, now);
  return BearerTokens(database).issue(account.id, now).value();
}

class Measured {
 public:
  Measured(const char* name, const ServicePeer& peer, std::string token)
      : m_name(name), m_token(std::move(token)), m_client(peer.port()) {}

  bool upload(const std::string& wav, int round) {
    const auto request =
        "POST /desktop/dictate HTTP/1.1\r\nHost: x\r\nx-dictation-id: " + std::to_string(round) +
        "\r\nAuthorization: Bearer " + m_token +
        "\r\nContent-Length: " + std::to_string(wav.size()) + "\r\n\r\n" + wav;
    const auto start = Clock::now();
    const auto answer = m_client.exchange(request);
    m_times.push_back(std::chrono::duration<double, std::milli>(Clock::now() - start).count());
    return answer && answer->status == 200;
  }
  double median() {
    std::ranges::nth_element(m_times, m_times.begin() + static_cast<long>(m_times.size() / 2));
    return m_times[m_times.size() / 2];
  }
  const char* name() const { return m_name; }

 private:
  const char* m_name;
  std::string m_token;
  RawClient m_client;
  std::vector<double> m_times;
};

}  // namespace

int main(int argc, char** argv) {
  const int rounds = argc > 1 ? std::stoi(argv[1]) : 300;
  const TemporaryFolder folder;
  const auto sqlite = DatabaseAddress::sqlite(folder.path() / "accounts.db");
  const auto postgres = DatabaseAddress::parse(PostgresServer::instance().makeDatabase()).value();
  const auto sqliteToken = accountToken(sqlite);
  const auto postgresToken = accountToken(postgres);
  const ServicePeer without(oneWorker, {});
  const ServicePeer withSqlite(oneWorker, {}, {.enabled = true, .database = sqlite});
  const ServicePeer withPostgres(oneWorker, {}, {.enabled = true, .database = postgres});
  Measured peers[] = {{"accounts off", without, without.token()},
                      {"on, SQLite", withSqlite, sqliteToken},
                      {"on, PostgreSQL", withPostgres, postgresToken}};

  const auto wav = wavOf(std::vector<std::int16_t>(std::size_t{5} * sampleRate, 7));
  bool good = true;
  for (int round = 0; round < rounds; ++round)
    for (auto& peer : peers) good = peer.upload(wav, round) && good;
  const double baseline = peers[0].median();
  for (auto& peer : peers) {
    const double median = peer.median();
    std::printf("%-16s median %6.3f ms, %.2f times accounts off\n", peer.name(), median,
                median / baseline);
    good = good && median - baseline < mostMilliseconds;
  }
  std::puts(good ? "good" : "NOT GOOD");
  return good ? 0 : 1;
}
