#include "database/DatabaseWorkers.h"

#include <future>

#include "support/DatabaseTest.h"

namespace vemo::service {
namespace {

using testing::Contains;
using testing::IsEmpty;

class DatabaseWorkersTest : public DatabaseTest {
 protected:
  using Result = std::expected<int, DatabaseFailure>;

  void start(std::size_t workers, std::size_t waiting = 100) {
    m_workers.emplace(m_address, DatabaseWorkers::Size{.workers = workers, .waiting = waiting},
                      [this](std::string_view line) {
                        const std::lock_guard lock(m_mutex);
                        m_reports.emplace_back(line);
                      });
  }
  std::future<Result> ask(std::function<int(Database&)> question) {
    auto promise = std::make_shared<std::promise<Result>>();
    auto future = promise->get_future();
    m_workers->ask(std::move(question), [promise](Result result) { promise->set_value(result); });
    return future;
  }
  static int count(Database& database) {
    int count = 0;
    database.session() << "SELECT count(*) FROM accounts", soci::into(count);
    return count;
  }
  std::vector<std::string> reports() {
    const std::lock_guard lock(m_mutex);
    return m_reports;
  }

  std::mutex m_mutex;
  std::vector<std::string> m_reports;
  std::optional<DatabaseWorkers> m_workers;
};

TEST_P(DatabaseWorkersTest, QuestionsAreAnsweredByTheDatabase) {
  database();
  start(2);
  EXPECT_EQ(ask(count).get(), 0);
  EXPECT_THAT(reports(), IsEmpty());
}

TEST_P(DatabaseWorkersTest, AQuestionThatFailsLeavesTheOthersAndNothingStoredInTheReport) {
  database();
  start(1);
  auto bad = ask([](Database& own) {
    const std::string secret = "telltale";
    own.session() << "INSERT INTO absent VALUES (:x)", soci::use(secret);
    return 0;
  });
  EXPECT_EQ(bad.get().error(), DatabaseFailure::Unavailable);
  EXPECT_EQ(ask(count).get(), 0);
  EXPECT_THAT(reports(), testing::ElementsAre("a question to the database failed"));
}

TEST_P(DatabaseWorkersTest, AboveTheLimitTheAnswerIsBusyAtOnce) {
  database();
  start(1, 1);
  std::promise<void> begun;
  std::promise<void> go;
  auto running = ask([&](Database&) {
    begun.set_value();
    go.get_future().wait();
    return 1;
  });
  begun.get_future().wait();
  auto waiting = ask(count);
  EXPECT_EQ(ask(count).get().error(), DatabaseFailure::Busy);
  go.set_value();
  EXPECT_EQ(running.get(), 1);
  EXPECT_EQ(waiting.get(), 0);
}

TEST_P(DatabaseWorkersTest, WhatWaitsIsAnsweredBeforeTheEnd) {
  database();
  start(1);
  std::vector<std::future<Result>> answers;
  for (int index = 0; index < 50; ++index) answers.push_back(ask(count));
  m_workers.reset();
  for (auto& answer : answers) EXPECT_EQ(answer.get(), 0);
}

INSTANTIATE_TEST_SUITE_P(Both, DatabaseWorkersTest, bothDatabases, nameOf);

class PostgresRestartTest : public DatabaseWorkersTest {};

TEST_P(PostgresRestartTest, AConnectionThatIsGoneIsMadeAnewAndTheQuestionAskedAgain) {
  database();
  start(1);
  EXPECT_EQ(ask(count).get(), 0);
  PostgresServer::instance().stop();
  PostgresServer::instance().start();
  EXPECT_EQ(ask(count).get(), 0);
}

TEST_P(PostgresRestartTest, WithoutAServerQuestionsFailSoonAndAfterItTheyWorkAgain) {
  database();
  start(1);
  PostgresServer::instance().stop();
  EXPECT_EQ(ask(count).get().error(), DatabaseFailure::Unavailable);
  EXPECT_EQ(ask(count).get().error(), DatabaseFailure::Unavailable);
  EXPECT_THAT(reports(), testing::ElementsAre("the database cannot be reached"));
  PostgresServer::instance().start();
  EXPECT_TRUE(eventually([&] { return ask(count).get().has_value(); }));
  EXPECT_THAT(reports(), Contains("the database is reachable again"));
}

INSTANTIATE_TEST_SUITE_P(Restart, PostgresRestartTest,
                         testing::Values(DatabaseAddress::Kind::PostgreSql), nameOf);

}  // namespace
}  // namespace vemo::service
