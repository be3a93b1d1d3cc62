// What the service answers, apart from how it travels.
//
// `admit` decides by the head alone, before a byte of the body is taken; `answer` decides by the
// body. Network thread only; the completion of `answer` runs exactly once, at once or later on a
// recogniser's thread. Cancelled by the stop token, which ends in the status clientClosedRequest.
#pragma once

#include <expected>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

#include "http/RequestTarget.h"
#include "setup/TokenFile.h"
#include "speech/RecognitionQueue.h"

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

class DictationApi {
 public:
  struct Engine {
    std::string name;
    EngineKind::Output output;
  };

  DictationApi(Engine engine, TokenFile& tokens, RecognitionQueue& queue);

  std::expected<RequestTarget, Answer> admit(boost::beast::http::verb method,
                                             std::string_view target,
                                             std::string_view authorization);

  void answer(const RequestTarget& target, std::string body, std::stop_token stop,
              std::move_only_function<void(Answer)> completion);

 private:
  Answer health() const;
  Answer finalize(const std::string& body) const;
  void dictate(const RequestTarget& target, std::string body, std::stop_token stop,
               std::move_only_function<void(Answer)> completion);
  bool isAuthorized(std::string_view authorization);

  const Engine m_engine;
  TokenFile& m_tokens;
  RecognitionQueue& m_queue;
};

}  // namespace vemo::service
