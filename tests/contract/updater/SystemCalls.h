// The calls by which this process names, fills, flushes and removes what is on the disk: each can
// be looked at just before it is made.
#pragma once

#include <functional>

namespace vemo {

struct SystemCall {
  const char* name;
  int descriptor;    ///< of fsync, write and fchmod; -1 elsewhere
  const char* path;  ///< what is changed or made; null where the descriptor tells
};

/// Called before each such call of the process, on whichever thread makes it.
extern std::function<void(const SystemCall&)> beforeSystemCall;

/// False where nothing is really flushed, for tests that couldn't see it.
extern bool isFlushing;

}  // namespace vemo
