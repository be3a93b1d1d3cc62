// What the service answers, apart from how it travels.
//
// `admit` decides by the head alone, before a byte of the body is taken; `answer` decides by the
// body. Network thread only; the completion of `answer` runs exactly once, at once or later on a
// recogniser's thread. Cancelled by the stop token, which ends in the status clientClosedRequest.
// Equal recordings that say which piece of which dictation they are share one answer.
#pragma once

#include <expected>
#include <functional>
#include <stop_token>
#include <string>
#include <string_view>

#include "http/Answer.h"
#include "http/EqualRequests.h"
#include "http/RequestTarget.h"
#include "setup/TokenFile.h"
#include "speech/RecognitionQueue.h"

namespace vemo::service {

struct RequestHead {
  boost::beast::http::verb method;
  std::string_view target;
  std::string_view authorization;
  std::string_view dictationId;
};

struct AdmittedRequest {
  RequestTarget target;
  std::string token;
  std::string dictationId;  ///< empty when absent
};

class DictationApi {
 public:
  struct Engine {
    std::string name;
    EngineKind::Output output;
  };

  DictationApi(Engine engine, TokenFile& tokens, RecognitionQueue& queue,
               boost::asio::any_io_executor networkThread, const Limits& limits);

  std::expected<AdmittedRequest, Answer> admit(const RequestHead& head);

  void answer(const AdmittedRequest& request, std::string body, std::stop_token stop,
              std::move_only_function<void(Answer)> completion);

  EqualRequests& equalRequests() { return m_equalRequests; }

 private:
  Answer health() const;
  Answer finalize(const std::string& body) const;
  void dictate(const AdmittedRequest& request, std::string body, std::stop_token stop,
               std::move_only_function<void(Answer)> completion);

  const Engine m_engine;
  TokenFile& m_tokens;
  RecognitionQueue& m_queue;
  EqualRequests m_equalRequests;
};

}  // namespace vemo::service
