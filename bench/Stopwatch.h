// How long work takes, for benchmarks: the best and the middle of many rounds.
#pragma once

#include <time.h>

#include <algorithm>
#include <chrono>
#include <vector>

namespace vemo {

template <typename Work>
double millisecondsFor(Work&& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - start)
      .count();
}

/// Of the processor, for this thread: what other programs take of it doesn't count.
template <typename Work>
double processorMillisecondsFor(Work&& work) {
  const auto used = [] {
    timespec time{};
    ::clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
    return static_cast<double>(time.tv_sec) * 1e3 + static_cast<double>(time.tv_nsec) / 1e6;
  };
  const double before = used();
  work();
  return used() - before;
}

class Rounds {
 public:
  void add(double milliseconds) { m_times.push_back(milliseconds); }
  double best() const { return *std::ranges::min_element(m_times); }
  double worst() const { return *std::ranges::max_element(m_times); }
  double median() const {
    auto times = m_times;
    std::ranges::sort(times);
    return times[times.size() / 2];
  }

 private:
  std::vector<double> m_times;
};

}  // namespace vemo
