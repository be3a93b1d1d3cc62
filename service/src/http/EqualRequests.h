// Does the work of equal requests once and gives every one of them the answer.
//
// A client that has waited for some seconds sends a second copy of its request, and one whose
// connection broke sends it again. A copy that comes while the work is under way waits for the same
// answer; one that comes after a success gets it from memory. Failures are shared by those who wait
// for them and then forgotten, so that a later copy is a new try.
//
// The work ends early only when everyone who waited for it has left. Network thread only; work may
// complete on any thread. Memory is bounded: what is under way by the connections that wait for it,
// what is remembered by Limits::repeatTime, Limits::repeatAnswers and `rememberedBytes`; above
// those, the oldest answer is forgotten first.
#pragma once

#include <boost/asio/any_io_executor.hpp>
#include <boost/asio/steady_timer.hpp>
#include <deque>
#include <functional>
#include <memory>
#include <stop_token>
#include <unordered_map>

#include "http/Answer.h"
#include "http/RequestKey.h"
#include "setup/Configuration.h"

namespace vemo::service {

class EqualRequests {
 public:
  using Completion = AnswerCompletion;
  /// Called at most once, before `answer` returns; its completion may be called on any thread.
  using Work = std::move_only_function<void(std::stop_token, Completion)>;

  static constexpr std::size_t rememberedBytes = 4 * 1024 * 1024;

  /// `executor` is the network thread's.
  EqualRequests(boost::asio::any_io_executor executor, const Limits& limits);

  /// `completion` runs exactly once, on the network thread; a stop request ends the wait of this
  /// request alone, with the status clientClosedRequest.
  void answer(const RequestKey& key, std::stop_token stop, Work work, Completion completion);

  /// Lets go of every answer, and of the timer that would keep the executor busy.
  void forget();

  /// Requests that wait for work under way.
  std::size_t waitingCount() const;

 private:
  struct Waiter;
  struct Entry;
  using Clock = std::chrono::steady_clock;

  void join(const std::shared_ptr<Entry>& entry, std::stop_token stop, Completion completion);
  void leave(const std::shared_ptr<Entry>& entry, const Waiter* waiter);
  void complete(const std::shared_ptr<Entry>& entry, Answer answer);
  void remember(const std::shared_ptr<Entry>& entry, Answer answer);
  void forgetOldest();
  void forgetOutdated();

  const boost::asio::any_io_executor m_executor;
  const Limits& m_limits;
  std::unordered_map<RequestKey, std::shared_ptr<Entry>, RequestKeyHash> m_entries;
  std::deque<std::shared_ptr<Entry>> m_answered;  ///< the oldest first
  std::size_t m_answeredBytes = 0;
  boost::asio::steady_timer m_timer;
};

}  // namespace vemo::service
