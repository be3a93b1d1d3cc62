#include "transcription/HedgedSend.h"

#include <utility>

#include "storage/DebugLog.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

namespace {

constexpr auto hedgeDelay = 5s;

}  // namespace

HedgedSend::HedgedSend(HttpSession& session, HttpSession& hedgeSession, Clock& clock,
                       MainThread& mainThread, DebugLog& debugLog)
    : m_session(session),
      m_hedgeSession(hedgeSession),
      m_clock(clock),
      m_mainThread(mainThread),
      m_debugLog(debugLog),
      m_scope(mainThread) {}

Task<HttpResult> HedgedSend::send(HttpRequest request, QString label, std::stop_token stop) {
  startCopy(m_session, request);
  m_children.push_back(
      m_scope.start([this](std::stop_token childStop) { return waitForHedge(childStop); }));
  const std::stop_callback onStop(stop, [this] { cancelChildren(); });

  int inFlight = 1;
  while (true) {
    Outcome outcome = co_await nextOutcome();
    if (auto* result = std::get_if<HttpResult>(&outcome)) {
      --inFlight;
      if (!result->has_value() && inFlight > 0) continue;
      co_await childrenEnded();
      co_return std::move(*result);
    }
    if (stop.stop_requested()) continue;
    m_debugLog(u"%1: no answer after 5s, sending a second copy"_s.arg(label));
    ++inFlight;
    startCopy(m_hedgeSession, request);
  }
}

void HedgedSend::startCopy(HttpSession& session, const HttpRequest& request) {
  m_children.push_back(m_scope.start([this, &session, &request](std::stop_token childStop) {
    return sendCopy(session, request, childStop);
  }));
}

Task<> HedgedSend::sendCopy(HttpSession& session, HttpRequest request, std::stop_token stop) {
  HttpResult result = co_await session.send(std::move(request), stop);
  deliver(std::move(result));
}

Task<> HedgedSend::waitForHedge(std::stop_token stop) {
  co_await m_clock.sleep(hedgeDelay, stop);
  deliver(HedgeDue{});
}

void HedgedSend::deliver(Outcome outcome) {
  m_outcomes.push_back(std::move(outcome));
  if (m_delivery) m_delivery->complete();
}

Task<HedgedSend::Outcome> HedgedSend::nextOutcome() {
  if (m_outcomes.empty()) {
    m_delivery.emplace(m_mainThread);
    co_await *m_delivery;
    m_delivery.reset();
  }
  Outcome outcome = std::move(m_outcomes.front());
  m_outcomes.pop_front();
  co_return outcome;
}

void HedgedSend::cancelChildren() {
  for (const auto& child : m_children) child.cancel();
}

Task<> HedgedSend::childrenEnded() {
  cancelChildren();
  for (const auto& child : m_children) co_await child.finished();
}

}  // namespace vemo
