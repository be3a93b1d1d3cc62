// The keys that are struck while one of this program's own windows has the focus, before the window
// sees them.
//
// Main thread only; the handler runs on it. One monitor serves one handler at a time. Keys of other
// applications' windows are never told.
#pragma once

#include <functional>

#include "ports/KeyEventSource.h"

namespace vemo {

class LocalKeyMonitor {
 public:
  enum class Handling {
    Swallow,  ///< nothing of the key reaches the window, until it has come up
    PassOn,
  };
  /// A held key that repeats is told once. What it answers to a key that comes up counts only when
  /// the window has seen the key go down.
  using Handler = std::function<Handling(const KeyEvent&)>;

  virtual ~LocalKeyMonitor() = default;

  /// Begins to tell, in place of an earlier handler.
  virtual void start(Handler handler) = 0;

  /// Ends it: the handler isn't called any more, from this call on. It may be called from inside
  /// the handler, and when nothing was started.
  virtual void stop() = 0;
};

}  // namespace vemo
