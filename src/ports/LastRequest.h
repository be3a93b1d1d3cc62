// A request that the caller waits for, when the program ends and nobody will hear an answer.
//
// Main thread only; nothing else of the program runs meanwhile. The answer isn't told.
#pragma once

#include <chrono>

#include "ports/HttpSession.h"

namespace vemo {

class LastRequest {
 public:
  virtual ~LastRequest() = default;

  /// Blocks until the answer has come, the request has failed, or `longest` has passed.
  virtual void sendAndWait(const HttpRequest& request, std::chrono::milliseconds longest) = 0;
};

}  // namespace vemo
