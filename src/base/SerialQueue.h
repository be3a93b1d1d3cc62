// A thread that runs the work it is given, one piece after the other, in order.
//
// For what must not hold up the caller, such as writing to disk. The thread starts with the first
// post(), sleeps while there is nothing to do, and is joined by the destructor after it has done
// all that was posted. post() and waitUntilIdle() may be called from any thread but its own.
#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace vemo {

class SerialQueue {
 public:
  /// `label` names the thread for debuggers; Linux shows its first 15 bytes.
  explicit SerialQueue(std::string label);
  ~SerialQueue();
  SerialQueue(const SerialQueue&) = delete;
  SerialQueue& operator=(const SerialQueue&) = delete;

  void post(std::move_only_function<void()> work);

  /// Blocks until everything posted before this call has run.
  void waitUntilIdle();

 private:
  void run();

  const std::string m_label;
  std::mutex m_mutex;
  std::condition_variable m_changed;
  std::deque<std::move_only_function<void()>> m_work;
  bool m_isRunningWork = false;
  bool m_isEnding = false;
  std::thread m_thread;
};

}  // namespace vemo
