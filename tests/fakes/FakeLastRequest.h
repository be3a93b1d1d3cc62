// Keeps the requests that the program sends as its last.
#pragma once

#include <utility>
#include <vector>

#include "ports/LastRequest.h"

namespace vemo {

class FakeLastRequest : public LastRequest {
 public:
  std::vector<std::pair<HttpRequest, std::chrono::milliseconds>> requests;

  void sendAndWait(const HttpRequest& request, std::chrono::milliseconds longest) override {
    requests.emplace_back(request, longest);
  }
};

}  // namespace vemo
