#include "base/SerialQueue.h"

#include <pthread.h>

#include <utility>

namespace vemo {

SerialQueue::SerialQueue(std::string label) : m_label(std::move(label)) {}

SerialQueue::~SerialQueue() {
  {
    const std::lock_guard lock(m_mutex);
    m_isEnding = true;
  }
  m_changed.notify_all();
  if (m_thread.joinable()) m_thread.join();
}

void SerialQueue::post(std::move_only_function<void()> work) {
  {
    const std::lock_guard lock(m_mutex);
    m_work.push_back(std::move(work));
    if (!m_thread.joinable()) m_thread = std::thread(&SerialQueue::run, this);
  }
  m_changed.notify_all();
}

void SerialQueue::waitUntilIdle() {
  std::unique_lock lock(m_mutex);
  m_changed.wait(lock, [this] { return m_work.empty() && !m_isRunningWork; });
}

void SerialQueue::run() {
  pthread_setname_np(pthread_self(), m_label.substr(0, 15).c_str());
  std::unique_lock lock(m_mutex);
  while (true) {
    m_changed.wait(lock, [this] { return !m_work.empty() || m_isEnding; });
    if (m_work.empty()) return;
    auto work = std::move(m_work.front());
    m_work.pop_front();
    m_isRunningWork = true;
    lock.unlock();
    work();
    work = nullptr;
    lock.lock();
    m_isRunningWork = false;
    m_changed.notify_all();
  }
}

}  // namespace vemo
