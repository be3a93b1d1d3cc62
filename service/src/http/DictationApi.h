// The endpoints that turn speech into text.
//
// Network thread only; owned by the program, and alive until the recognisers and the database's
// workers have ended. Equal recordings that say which piece of which dictation they are share one
// answer. What an account's dictations come to is counted before they are answered.
#pragma once

#include <boost/asio/any_io_executor.hpp>

#include "accounts/UsageMeter.h"
#include "http/EqualRequests.h"
#include "http/Router.h"
#include "speech/RecognitionQueue.h"

namespace vemo::service {

class DictationApi {
 public:
  /// The engine's kind outlives this; `usage` is absent where there are no accounts.
  DictationApi(const EngineKind& engine, RecognitionQueue& queue, UsageMeter* usage,
               boost::asio::any_io_executor networkThread, const Limits& limits);

  void addTo(Router& router);

  EqualRequests& equalRequests() { return m_equalRequests; }

 private:
  enum class Piece { Whole, Chunk };

  Answer health() const;
  Answer languages() const;
  void finalize(const Request& request, AnswerCompletion completion);
  void dictate(Piece piece, Request request, std::stop_token stop, AnswerCompletion completion);

  void count(const Caller& caller, const UsageStep& step, std::string key, Answer answer,
             AnswerCompletion completion);

  const EngineKind& m_engine;
  RecognitionQueue& m_queue;
  UsageMeter* const m_usage;
  const Limits& m_limits;
  EqualRequests m_equalRequests;
};

}  // namespace vemo::service
