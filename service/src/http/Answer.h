// What a request is answered with, before it becomes HTTP. A plain value.
#pragma once

#include <string>
#include <string_view>

namespace vemo::service {

struct Answer {
  unsigned status;
  std::string body;        ///< JSON
  std::string_view allow;  ///< the method to name in a 405
};

/// No HTTP status says it; this one is what proxies log for a client that went away.
inline constexpr unsigned clientClosedRequest = 499;

/// {"status":"error","error":message}
Answer errorAnswer(unsigned status, std::string_view message);

}  // namespace vemo::service
