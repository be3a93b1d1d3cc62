// How long work takes, for benchmarks: the best and the middle of many rounds.
#pragma once

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
