// A server that answers as a test says: per path, one script entry for each request, in order.
//
// It honours time-outs and cancellation as a real session does, on the test's clock. A request to a
// path without a script fails the test.
#pragma once

#include <gtest/gtest.h>

#include <QString>
#include <algorithm>
#include <deque>
#include <map>
#include <optional>
#include <vector>

#include "base/Clock.h"
#include "base/Completion.h"
#include "ports/HttpSession.h"

namespace vemo {

class FakeHttpSession : public HttpSession {
 public:
  FakeHttpSession(MainThread& mainThread, Clock& clock, HttpSessionLimits limits = {})
      : m_mainThread(mainThread), m_clock(clock), m_limits(limits) {}

  void answer(const QString& path, int status, const QByteArray& body = {},
              Clock::Duration delay = {}) {
    m_scripts[path].push_back({delay, HttpResponse{.status = status, .body = body}});
  }

  /// The answer to every request that has no script of its own left.
  void answerAlways(const QString& path, int status, const QByteArray& body = {}) {
    m_standingAnswers[path] = {Clock::Duration(), HttpResponse{.status = status, .body = body}};
  }

  /// Something that doesn't speak HTTP answers.
  void answerWithoutStatus(const QString& path, Clock::Duration delay = {}) {
    m_scripts[path].push_back({delay, HttpResponse{}});
  }

  void fail(const QString& path, UrlError code, Clock::Duration delay = {},
            const QString& description = QStringLiteral("the network failed as scripted")) {
    m_scripts[path].push_back({delay, std::unexpected(HttpError{code, description})});
  }

  void neverAnswer(const QString& path) {
    m_scripts[path].push_back({std::nullopt, HttpResponse{}});
  }

  Task<HttpResult> send(HttpRequest request, std::stop_token stop) override {
    if (stop.stop_requested()) {
      ++m_cancellations;
      co_return std::unexpected(HttpError{UrlError::Cancelled, QStringLiteral("cancelled")});
    }
    m_requests.push_back(request);
    m_sendTimes.push_back(m_clock.monotonicTime());
    auto& script = m_scripts[request.url.path()];
    const auto standing = m_standingAnswers.find(request.url.path());
    if (script.empty() && standing != m_standingAnswers.end()) script.push_back(standing->second);
    if (script.empty()) {
      ADD_FAILURE() << "nobody scripted an answer to " << request.url.toString().toStdString();
      co_return std::unexpected(HttpError{UrlError::Unknown, QStringLiteral("not scripted")});
    }
    const Entry entry = std::move(script.front());
    script.pop_front();

    const Opening opening(m_openCount);
    const Clock::Duration silence =
        request.timeout.count() > 0 ? request.timeout : m_limits.requestTimeout;
    const Clock::Duration limit = std::min<Clock::Duration>(silence, m_limits.resourceTimeout);
    const bool timesOut = !entry.delay || *entry.delay >= limit;
    const auto end = co_await wait(timesOut ? limit : *entry.delay, stop);
    if (end == SleepEnd::Cancelled) {
      ++m_cancellations;
      co_return std::unexpected(HttpError{UrlError::Cancelled, QStringLiteral("cancelled")});
    }
    if (timesOut)
      co_return std::unexpected(HttpError{UrlError::TimedOut, QStringLiteral("timed out")});
    HttpResult result = entry.result;
    if (result) result->body.truncate(maximumHttpBodySize);
    co_return result;
  }

  /// All requests so far, and when each was sent.
  const std::vector<HttpRequest>& requests() const { return m_requests; }
  const std::vector<Clock::MonotonicTime>& sendTimes() const { return m_sendTimes; }

  int cancellationCount() const { return m_cancellations; }

  /// How many requests are under way.
  int openCount() const { return m_openCount; }

  /// How many scripted answers nobody has asked for yet.
  std::size_t unusedCount() const {
    std::size_t count = 0;
    for (const auto& [path, script] : m_scripts) count += script.size();
    return count;
  }

 private:
  struct Entry {
    std::optional<Clock::Duration> delay;  ///< absent: never
    HttpResult result;
  };

  struct Opening {
    explicit Opening(int& openCount) : count(openCount) { ++count; }
    ~Opening() { --count; }
    Opening(const Opening&) = delete;
    Opening& operator=(const Opening&) = delete;
    int& count;
  };

  /// No wait at all takes one turn of the main queue, without the clock.
  Task<SleepEnd> wait(Clock::Duration duration, std::stop_token stop) {
    if (duration > Clock::Duration::zero()) co_return co_await m_clock.sleep(duration, stop);
    const Completion<> turn(m_mainThread);
    turn.complete();
    co_await turn;
    co_return stop.stop_requested() ? SleepEnd::Cancelled : SleepEnd::Elapsed;
  }

  MainThread& m_mainThread;
  Clock& m_clock;
  const HttpSessionLimits m_limits;
  std::map<QString, std::deque<Entry>> m_scripts;
  std::map<QString, Entry> m_standingAnswers;
  std::vector<HttpRequest> m_requests;
  std::vector<Clock::MonotonicTime> m_sendTimes;
  int m_cancellations = 0;
  int m_openCount = 0;
};

}  // namespace vemo
