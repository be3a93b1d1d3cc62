// Keys that a test strikes in the program's own window.
#pragma once

#include <utility>

#include "ports/LocalKeyMonitor.h"

namespace vemo {

class FakeLocalKeyMonitor : public LocalKeyMonitor {
 public:
  void start(Handler handler) override {
    ++startCount;
    m_handler = std::move(handler);
  }
  void stop() override { m_handler = nullptr; }

  bool isStarted() const { return m_handler != nullptr; }

  /// What becomes of the key; without a handler it goes to the window.
  Handling strike(const KeyEvent& event) {
    const Handler handler = m_handler;
    return handler ? handler(event) : Handling::PassOn;
  }

  int startCount = 0;

 private:
  Handler m_handler;
};

}  // namespace vemo
