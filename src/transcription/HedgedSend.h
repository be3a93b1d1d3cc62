// One attempt of a request, with a second copy on another connection when the first one is slow.
//
// The first copy goes out on the first session. If nothing has come back after five seconds, an
// equal copy goes out on the other session, and the first HTTP answer of either wins, whatever its
// status; the other copy is cancelled. An error ends the attempt only when no other copy is under
// way.
//
// Main thread only. One object per attempt, kept by the caller until send() has ended; send() ends
// only after all that it started has ended. A requested stop cancels whatever is under way, and the
// result is then the error of the last copy to end.
#pragma once

#include <QString>
#include <deque>
#include <optional>
#include <stop_token>
#include <variant>
#include <vector>

#include "base/Clock.h"
#include "base/Completion.h"
#include "base/TaskScope.h"
#include "ports/HttpSession.h"

namespace vemo {

class DebugLog;

class HedgedSend {
 public:
  HedgedSend(HttpSession& session, HttpSession& hedgeSession, Clock& clock, MainThread& mainThread,
             DebugLog& debugLog);
  HedgedSend(const HedgedSend&) = delete;
  HedgedSend& operator=(const HedgedSend&) = delete;

  /// `label` names the operation in the log.
  Task<HttpResult> send(HttpRequest request, QString label, std::stop_token stop);

 private:
  struct HedgeDue {};
  using Outcome = std::variant<HttpResult, HedgeDue>;

  void startCopy(HttpSession& session, const HttpRequest& request);
  Task<> sendCopy(HttpSession& session, HttpRequest request, std::stop_token stop);
  Task<> waitForHedge(std::stop_token stop);
  void deliver(Outcome outcome);
  Task<Outcome> nextOutcome();
  void cancelChildren();
  Task<> childrenEnded();

  HttpSession& m_session;
  HttpSession& m_hedgeSession;
  Clock& m_clock;
  MainThread& m_mainThread;
  DebugLog& m_debugLog;
  std::deque<Outcome> m_outcomes;
  std::optional<Completion<>> m_delivery;
  std::vector<StartedTask> m_children;
  TaskScope m_scope;
};

}  // namespace vemo
