// The endpoints that turn speech into text.
//
// Network thread only; owned by the program, and alive until the recognisers and the database's
// workers have ended. Equal recordings that say which piece of which dictation they are share one
// answer. What an account's dictations come to is counted before they are answered.
#pragma once

#include <boost/asio/any_io_executor.hpp>

#include "http/EqualRequests.h"
#include "http/Router.h"
#include "speech/RecognitionQueue.h"

namespace vemo::service {

class DictationApi {
 public:
  struct Engine {
    std::string name;
    EngineKind::Output output;
  };

  DictationApi(Engine engine, RecognitionQueue& queue, boost::asio::any_io_executor networkThread,
               const Limits& limits);

  void addTo(Router& router);

  EqualRequests& equalRequests() { return m_equalRequests; }

 private:
  enum class Piece { Whole, Chunk };

  Answer health() const;
  Answer finalize(const std::string& body) const;
  void dictate(Piece piece, Request request, std::stop_token stop, AnswerCompletion completion);

  const Engine m_engine;
  RecognitionQueue& m_queue;
  const Limits& m_limits;
  EqualRequests m_equalRequests;
};

}  // namespace vemo::service
