// The bounded queue between requests and recognisers.
//
// Owns the worker threads and one engine for each. `submit` and the state calls are for any thread;
// a job's completion runs exactly once: on a worker, in `submit`, on the thread that requests the
// stop, or on the one that destroys the queue. A stop request frees a waiting job's place at once
// and reaches into a running one as far as its engine allows. Destroying the queue cancels every
// job and joins the workers.
#pragma once

#include <condition_variable>
#include <functional>
#include <list>
#include <mutex>
#include <thread>
#include <vector>

#include "speech/Engine.h"

namespace vemo::service {

class RecognitionQueue {
 public:
  using Result = std::expected<std::string, EngineError>;
  using Completion = std::move_only_function<void(Result)>;
  /// Called once, on a worker thread: when every engine is loaded, or with the first one's error.
  using Loaded = std::move_only_function<void(std::expected<void, std::string>)>;

  struct Size {
    std::size_t workers;
    std::size_t waiting;  ///< jobs that may wait beside those under way
  };

  RecognitionQueue(const EngineKind& kind, Size size, Loaded loaded);
  ~RecognitionQueue();
  RecognitionQueue(const RecognitionQueue&) = delete;
  RecognitionQueue& operator=(const RecognitionQueue&) = delete;

  /// When the queue is full, `completion` is called with `Busy` before this returns.
  void submit(Recording recording, TranscriptionOptions options, std::stop_token stop,
              Completion completion);

  bool isReady() const;
  std::size_t waitingCount() const;

 private:
  struct Job;
  using JobList = std::list<std::shared_ptr<Job>>;

  void run(Engine& engine, std::stop_token stop);
  bool load(Engine& engine);
  void stopJob(Job& job);

  const Size m_size;
  mutable std::mutex m_mutex;
  std::condition_variable_any m_changed;
  JobList m_waiting;
  JobList m_running;
  std::size_t m_enginesToLoad;
  Loaded m_loaded;
  std::vector<std::unique_ptr<Engine>> m_engines;
  std::vector<std::jthread> m_workers;
};

}  // namespace vemo::service
