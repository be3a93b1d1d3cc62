// Sends a request from a thread of its own, with an event loop that ends with the answer or the
// time.
#pragma once

#include "ports/LastRequest.h"

namespace vemo {

class QtLastRequest : public LastRequest {
 public:
  void sendAndWait(const HttpRequest& request, std::chrono::milliseconds longest) override;
};

}  // namespace vemo
