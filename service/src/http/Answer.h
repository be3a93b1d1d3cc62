// What a request is answered with, before it becomes HTTP. A plain value.
#pragma once

#include <chrono>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vemo::service {

struct Answer {
  unsigned status;
  std::string body = {};
  std::string allow = {};                                         ///< the methods to name in a 405
  std::optional<std::chrono::seconds> retryAfter = std::nullopt;  ///< of a 503 a second, if absent
  std::string_view contentType = "application/json";
  std::string contentRange = {};  ///< of a 206
};

/// Called exactly once, on any thread.
using AnswerCompletion = std::move_only_function<void(Answer)>;

/// No HTTP status says it; this one is what proxies log for a client that went away.
inline constexpr unsigned clientClosedRequest = 499;

/// {"status":"error","error":message}
Answer errorAnswer(unsigned status, std::string_view message);

/// For a database that does not answer.
Answer unavailableAnswer();

}  // namespace vemo::service
