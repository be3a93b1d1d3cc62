// The threads that talk to the database, one connection each, so that the network thread never
// waits.
//
// `ask` is for any thread; its answer is called exactly once, on a worker or in `ask`. Questions
// are taken in the order in which they come; above the limit of those that wait, the answer is
// `Busy` at once. A question whose connection has gone is asked once more on a new one, so it has
// to be a whole that can be repeated: one transaction, or reading alone. Destroying this answers
// everything that waits, and joins. What goes wrong is reported in words that hold nothing of what
// is stored.
#pragma once

#include <chrono>
#include <condition_variable>
#include <deque>
#include <expected>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "database/Database.h"

namespace vemo::service {

enum class DatabaseFailure {
  Busy,         ///< too many questions wait
  Unavailable,  ///< no connection, or the database refused the question
};

class DatabaseWorkers {
 public:
  using Report = std::function<void(std::string_view)>;  ///< called on a worker

  struct Size {
    std::size_t workers;
    std::size_t waiting;
  };

  DatabaseWorkers(DatabaseAddress address, Size size, Report report);
  ~DatabaseWorkers();
  DatabaseWorkers(const DatabaseWorkers&) = delete;
  DatabaseWorkers& operator=(const DatabaseWorkers&) = delete;

  template <typename Question, typename Answer>
  void ask(Question question, Answer answer) {
    using Result = std::invoke_result_t<Question&, Database&>;
    auto result = std::make_shared<std::optional<Result>>();
    submit(
        {.run = [question = std::move(question),
                 result](Database& database) mutable { *result = question(database); },
         .done =
             [answer = std::move(answer), result](std::optional<DatabaseFailure> failure) mutable {
               if (failure)
                 answer(std::expected<Result, DatabaseFailure>(std::unexpected(*failure)));
               else
                 answer(std::expected<Result, DatabaseFailure>(*std::move(*result)));
             }});
  }

 private:
  using Clock = std::chrono::steady_clock;
  struct Job {
    std::move_only_function<void(Database&)> run;
    std::move_only_function<void(std::optional<DatabaseFailure>)> done;
  };
  struct Worker {
    std::unique_ptr<Database> database;
    Clock::time_point connectAgainAt;
  };

  void submit(Job job);
  void work(std::stop_token stop);
  std::optional<DatabaseFailure> run(Worker& worker, Job& job);
  bool connect(Worker& worker);
  void reportReachable(bool reachable);

  const DatabaseAddress m_address;
  const Size m_size;
  const Report m_report;
  std::mutex m_mutex;
  std::condition_variable_any m_changed;
  std::deque<Job> m_waiting;
  bool m_reachable = true;
  std::vector<std::jthread> m_threads;
};

}  // namespace vemo::service
