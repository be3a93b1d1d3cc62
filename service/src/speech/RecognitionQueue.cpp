#include "speech/RecognitionQueue.h"

#include <algorithm>
#include <optional>
#include <utility>

namespace vemo::service {

struct RecognitionQueue::Job {
  Recording recording;
  TranscriptionOptions options;
  Completion completion;
  std::stop_source stop;
  std::optional<std::stop_callback<std::function<void()>>> onStop;
};

namespace {

RecognitionQueue::Result failed(EngineError::Kind kind, std::string message) {
  return std::unexpected(EngineError{kind, std::move(message)});
}

RecognitionQueue::Result cancelled() {
  return failed(EngineError::Kind::Cancelled, "Cancelled");
}

}  // namespace

RecognitionQueue::RecognitionQueue(const EngineKind& kind, Size size, Loaded loaded)
    : m_size(size), m_enginesToLoad(size.workers), m_loaded(std::move(loaded)) {
  for (std::size_t index = 0; index < size.workers; ++index) m_engines.push_back(kind.make());
  for (const auto& engine : m_engines)
    m_workers.emplace_back([this, &engine = *engine](std::stop_token stop) { run(engine, stop); });
}

RecognitionQueue::~RecognitionQueue() {
  for (auto& worker : m_workers) worker.request_stop();
  JobList waiting;
  JobList running;
  {
    const std::lock_guard lock(m_mutex);
    waiting.swap(m_waiting);
    running = m_running;
  }
  for (const auto& job : running) job->stop.request_stop();
  for (const auto& job : waiting) job->completion(cancelled());
  m_workers.clear();
}

void RecognitionQueue::submit(Recording recording, TranscriptionOptions options,
                              std::stop_token stop, Completion completion) {
  const auto job = std::make_shared<Job>(std::move(recording), std::move(options),
                                         std::move(completion), std::stop_source(), std::nullopt);
  bool full = false;
  {
    const std::lock_guard lock(m_mutex);
    full = m_waiting.size() + m_running.size() >= m_size.workers + m_size.waiting;
    if (!full) m_waiting.push_back(job);
  }
  if (full)
    return job->completion(
        failed(EngineError::Kind::Busy, "The service is busy. Try again in a moment."));
  // Outside the lock: the callback runs at once when the stop has been requested already.
  job->onStop.emplace(std::move(stop), [this, job = job.get()] { stopJob(*job); });
  m_changed.notify_one();
}

void RecognitionQueue::stopJob(Job& job) {
  job.stop.request_stop();
  std::shared_ptr<Job> withdrawn;
  {
    const std::lock_guard lock(m_mutex);
    const auto place = std::ranges::find(m_waiting, &job, &std::shared_ptr<Job>::get);
    if (place == m_waiting.end()) return;
    withdrawn = *place;
    m_waiting.erase(place);
  }
  withdrawn->completion(cancelled());
}

bool RecognitionQueue::load(Engine& engine) {
  auto result = engine.load();
  Loaded loaded;
  {
    const std::lock_guard lock(m_mutex);
    if (result) --m_enginesToLoad;
    if (!result || m_enginesToLoad == 0) loaded = std::exchange(m_loaded, nullptr);
  }
  const bool usable = result.has_value();
  if (loaded) loaded(std::move(result));
  return usable;
}

void RecognitionQueue::run(Engine& engine, std::stop_token stop) {
  if (!load(engine)) return;
  while (true) {
    JobList current;
    {
      std::unique_lock lock(m_mutex);
      if (!m_changed.wait(lock, stop, [this] { return !m_waiting.empty(); })) return;
      current.splice(current.end(), m_waiting, m_waiting.begin());
      m_running.push_back(current.front());
    }
    const auto& job = current.front();
    Result result = engine.transcribe(job->recording, job->options, job->stop.get_token());
    {
      const std::lock_guard lock(m_mutex);
      m_running.remove(job);
    }
    job->completion(std::move(result));
  }
}

bool RecognitionQueue::isReady() const {
  const std::lock_guard lock(m_mutex);
  return m_enginesToLoad == 0;
}

std::size_t RecognitionQueue::waitingCount() const {
  const std::lock_guard lock(m_mutex);
  return m_waiting.size();
}

}  // namespace vemo::service
