// Counts how often the program's windows were brought to the front, and notes in which order policy
// and activation changed.
#pragma once

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "ports/ApplicationWindows.h"

namespace vemo {

class FakeApplicationWindows : public ApplicationWindows {
 public:
  void bringForward() override { ++m_bringForwardCount; }
  void activate() override {
    m_calls.emplace_back("activate");
    if (whenActivated) whenActivated();
  }
  ActivationPolicy activationPolicy() const override { return m_policy; }
  void setActivationPolicy(ActivationPolicy policy) override {
    m_policy = policy;
    m_calls.emplace_back(policy == ActivationPolicy::Regular ? "regular" : "accessory");
  }

  int bringForwardCount() const { return m_bringForwardCount; }
  /// "activate", "regular" and "accessory", since the last time that this was asked.
  std::vector<std::string> takeCalls() { return std::exchange(m_calls, {}); }

  std::function<void()> whenActivated;

 private:
  int m_bringForwardCount = 0;
  ActivationPolicy m_policy = ActivationPolicy::Regular;
  std::vector<std::string> m_calls;
};

}  // namespace vemo
