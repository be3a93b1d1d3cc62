// A desktop whose applications are what the test says. Nothing is in front, and nothing runs, until
// then.
#pragma once

#include <utility>

#include "ports/FocusedApplication.h"

namespace vemo {

class FakeFocusedApplication : public FocusedApplication {
 public:
  std::optional<RunningApplication> frontmost() const override { return m_frontmost; }
  std::vector<RunningApplication> running() const override { return m_running; }

  void setFrontmost(std::optional<RunningApplication> application) {
    m_frontmost = std::move(application);
  }
  void setRunning(std::vector<RunningApplication> applications) {
    m_running = std::move(applications);
  }

 private:
  std::optional<RunningApplication> m_frontmost;
  std::vector<RunningApplication> m_running;
};

}  // namespace vemo
