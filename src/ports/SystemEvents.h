// What happens to the whole session. The callbacks run on the main thread.
#pragma once

#include <functional>

namespace vemo {

class SystemEvents {
 public:
  virtual ~SystemEvents() = default;

  std::function<void()> onDidWake;          ///< the machine has woken from sleep
  std::function<void()> onDidBecomeActive;  ///< this program has come to the front
};

}  // namespace vemo
