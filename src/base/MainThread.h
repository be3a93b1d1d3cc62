// The main thread's queue of work, on which all logic runs.
//
// post() may be called from any thread; the work runs later, on the main thread, in the order of
// the calls. It never runs inside post(). Work still queued when the queue is destroyed is dropped.
#pragma once

#include <functional>

namespace vemo {

class MainThread {
 public:
  virtual ~MainThread() = default;

  virtual void post(std::move_only_function<void()> work) = 0;
};

}  // namespace vemo
