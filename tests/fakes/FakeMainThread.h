// A main queue that runs when a test says so.
#pragma once

#include <deque>
#include <functional>
#include <mutex>
#include <utility>

#include "base/MainThread.h"

namespace vemo {

class FakeMainThread : public MainThread {
 public:
  void post(std::move_only_function<void()> work) override {
    const std::lock_guard lock(m_mutex);
    m_work.push_back(std::move(work));
  }

  /// Runs what is queued, and what that queues, until nothing is left.
  void drain() {
    while (auto work = takeNext()) work();
  }

  bool isEmpty() const {
    const std::lock_guard lock(m_mutex);
    return m_work.empty();
  }

 private:
  std::move_only_function<void()> takeNext() {
    const std::lock_guard lock(m_mutex);
    if (m_work.empty()) return nullptr;
    auto work = std::move(m_work.front());
    m_work.pop_front();
    return work;
  }

  mutable std::mutex m_mutex;
  std::deque<std::move_only_function<void()>> m_work;
};

}  // namespace vemo
