#include "database/DatabaseWorkers.h"

namespace vemo::service {

namespace {

/// While a server is gone, one question in this time waits for a connection; the others fail at
/// once.
constexpr std::chrono::seconds connectPause{1};

}  // namespace

DatabaseWorkers::DatabaseWorkers(DatabaseAddress address, Size size, Report report)
    : m_address(std::move(address)), m_size(size), m_report(std::move(report)) {
  for (std::size_t index = 0; index < size.workers; ++index)
    m_threads.emplace_back([this](std::stop_token stop) { work(std::move(stop)); });
}

DatabaseWorkers::~DatabaseWorkers() {
  for (auto& thread : m_threads) thread.request_stop();
  m_threads.clear();
}

void DatabaseWorkers::submit(Job job) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_waiting.size() < m_size.waiting) {
      m_waiting.push_back(std::move(job));
      m_changed.notify_one();
      return;
    }
  }
  job.done(DatabaseFailure::Busy);
}

void DatabaseWorkers::work(std::stop_token stop) {
  Worker worker;
  while (true) {
    std::optional<Job> job;
    {
      std::unique_lock lock(m_mutex);
      m_changed.wait(lock, stop, [this] { return !m_waiting.empty(); });
      if (m_waiting.empty()) return;
      job.emplace(std::move(m_waiting.front()));
      m_waiting.pop_front();
    }
    job->done(run(worker, *job));
  }
}

std::optional<DatabaseFailure> DatabaseWorkers::run(Worker& worker, Job& job) {
  for (int attempt = 1; attempt <= 2; ++attempt) {
    if (!connect(worker)) return DatabaseFailure::Unavailable;
    try {
      job.run(*worker.database);
      return std::nullopt;
    } catch (const std::exception&) {
      // The text of the exception may quote what was stored.
      if (worker.database->isConnected()) {
        m_report("a question to the database failed");
        return DatabaseFailure::Unavailable;
      }
      worker.database.reset();
    }
  }
  return DatabaseFailure::Unavailable;
}

bool DatabaseWorkers::connect(Worker& worker) {
  if (worker.database) return true;
  if (Clock::now() < worker.connectAgainAt) return false;
  try {
    worker.database = std::make_unique<Database>(m_address);
  } catch (const std::exception&) {
    worker.connectAgainAt = Clock::now() + connectPause;
  }
  reportReachable(worker.database != nullptr);
  return worker.database != nullptr;
}

void DatabaseWorkers::reportReachable(bool reachable) {
  {
    const std::lock_guard lock(m_mutex);
    if (m_reachable == reachable) return;
    m_reachable = reachable;
  }
  m_report(reachable ? "the database is reachable again" : "the database cannot be reached");
}

}  // namespace vemo::service
