// One connection: reads requests one after the other, has them handled, writes the answers.
//
// Network thread only. Owns itself through the coroutine that serves it, and tells the server when
// it ends. Every stage has a time limit for the whole stage, so a peer that trickles is cut off;
// the body is read once, into the place where the recogniser reads it. Pipelined requests wait in
// the socket until the one before is answered. While a recogniser works, a peer that goes away
// frees its place in the queue.
#pragma once

#include <boost/asio/awaitable.hpp>
#include <boost/asio/ip/tcp.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/core/tcp_stream.hpp>
#include <boost/beast/http/parser.hpp>
#include <boost/beast/http/string_body.hpp>
#include <functional>
#include <memory>
#include <optional>
#include <stop_token>

#include "http/AccessLog.h"
#include "http/Admission.h"
#include "http/Router.h"
#include "setup/Configuration.h"

namespace vemo::service {

class HttpConnection : public std::enable_shared_from_this<HttpConnection> {
 public:
  using Ended = std::function<void(HttpConnection*)>;

  HttpConnection(boost::asio::ip::tcp::socket socket, const Limits& limits, const Router& router,
                 Admission& admission, AccessLog& log, Ended ended);

  void start();
  /// Instead of `start`: says that the service is busy, and ends.
  void turnAway();
  bool isTurnedAway() const { return m_turnedAway; }
  /// Ends at once when no request is under way, else after its answer.
  void finish();
  /// Ends now, whatever is under way.
  void abort();

 private:
  using Parser = boost::beast::http::request_parser<boost::beast::http::string_body>;
  enum class Next { Serve, Close };

  void spawn(boost::asio::awaitable<void> (HttpConnection::*life)());
  boost::asio::awaitable<void> run();
  boost::asio::awaitable<void> runTurnedAway();
  boost::asio::awaitable<Next> serve();
  boost::asio::awaitable<bool> waitForRequest();
  boost::asio::awaitable<Next> refuse(Answer answer, std::uint64_t stillToCome);
  boost::asio::awaitable<Next> send(Answer answer, bool keepAlive);
  boost::asio::awaitable<std::expected<Request, Answer>> admit(const Parser& parser,
                                                               const Router::Match& match);
  boost::asio::awaitable<Answer> handle(const Route& route, Request request);
  boost::asio::awaitable<void> discardInput(std::uint64_t expected);
  boost::asio::awaitable<void> discard(std::uint64_t count);
  std::optional<Answer> framingError(const Parser& parser) const;
  std::uint64_t stillToCome(const Parser& parser) const;
  void watchForLeaving();
  void log(unsigned status);

  boost::beast::tcp_stream m_stream;
  const Limits& m_limits;
  const Router& m_router;
  Admission& m_admission;
  AccessLog& m_log;
  Ended m_ended;
  std::string m_source;
  boost::beast::flat_buffer m_buffer;
  std::stop_source m_stop;
  AccessLog::Entry m_entry;
  std::chrono::steady_clock::time_point m_began;
  bool m_turnedAway = false;
  bool m_idle = true;
  bool m_finishing = false;
};

}  // namespace vemo::service
