// Sends a story's requests over real sockets, each by the passage that its fate asks for.
#pragma once

#include <algorithm>
#include <random>
#include <set>
#include <sstream>

#include "FaultProxy.h"
#include "base/TaskScope.h"
#include "fakes/HttpWire.h"
#include "platform/qt/QtHttpSession.h"
#include "session/FaultNetwork.h"

namespace vemo {

/// The sockets of one story, seen by both sessions.
class SocketWorld {
 public:
  SocketWorld(FaultNetwork& network, FaultProxy& proxy, std::uint64_t seed)
      : m_network(network), m_proxy(proxy), m_random(seed) {}

  FaultNetwork& network() { return m_network; }

  /// The address for a request of that fate, and the number of its passage.
  std::pair<QUrl, FaultProxy::Id> route(const QUrl& url, const CopyFate& fate) {
    const auto id = m_proxy.add(passage(fate));
    const bool isRefused =
        !fate.result && fate.result.error().code == UrlError::CannotConnectToHost;
    return {isRefused ? m_proxy.routeToNobody(url) : m_proxy.route(url, id), id};
  }

  /// Whether nothing goes on until time passes: each request under way is at its stall.
  bool isAtRest() const { return ending.empty() && std::ranges::includes(m_proxy.stalled(), open); }

  /// What keeps it from coming to rest, for a failure's message.
  std::string unrest() const {
    std::ostringstream text;
    const auto tell = [&](const char* title, const std::set<FaultProxy::Id>& ids) {
      text << title << ':';
      for (const auto id : ids) text << "\n  " << id << ": " << m_proxy.passage(id);
      text << '\n';
    };
    tell("under way", open);
    tell("told to stop", ending);
    tell("at their stall", m_proxy.stalled());
    return text.str();
  }

  std::set<FaultProxy::Id> open;
  std::set<FaultProxy::Id> ending;  ///< told to stop

 private:
  using Stage = Passage::Stage;
  using End = Passage::End;

  Passage passage(const CopyFate& fate) {
    Passage result{.stage = std::array{Stage::Handshake, Stage::Request, Stage::Answer,
                                       Stage::Answer}[below(4)],
                   .share = below(3) == 0 ? 0.0 : static_cast<double>(below(1'000)) / 1'000,
                   .stall = fate.delay};
    if (!fate.delay || fate.isServed) return result;
    if (fate.result) {
      result.answer = httpAnswer(fate.result->status.value_or(0), fate.result->body);
    } else if (fate.result.error().code == UrlError::CannotParseResponse) {
      // Qt fails at the first byte of nonsense.
      result.share = 0;
      result.answer = "SSH-2.0-Nonsense\r\n\r\n"_ba;
      result.end = End::GoesOnAndCloses;
    } else {
      result.end = below(2) == 0 ? End::Resets : End::Closes;
    }
    return result;
  }

  std::size_t below(std::size_t bound) {
    return std::uniform_int_distribution<std::size_t>(0, bound - 1)(m_random);
  }

  FaultNetwork& m_network;
  FaultProxy& m_proxy;
  std::mt19937_64 m_random;
};

/// The real adapter, but for its time-out, which passes on the story's clock.
class SocketSession : public HttpSession {
 public:
  SocketSession(SocketWorld& world, MainThread& logicThread, Clock& clock, MainThread& qtThread,
                int copy)
      : m_world(world), m_clock(clock), m_copy(copy), m_session(qtThread), m_scope(logicThread) {}

  Task<HttpResult> send(HttpRequest request, std::stop_token stop) override {
    const CopyFate& fate = m_world.network().take(request, m_copy);
    const auto [url, id] = m_world.route(request.url, fate);
    const FaultNetwork::Opening opening(m_world.network());
    const Duration timeout = std::exchange(request.timeout, std::chrono::hours(1));
    request.url = url;
    const Entry entry(m_world, id);

    std::stop_source end;
    const std::stop_callback marking(end.get_token(), [&entry] { entry.markEnding(); });
    const std::stop_callback onStop(stop, [&end] { end.request_stop(); });
    const StartedTask limit = m_scope.start([this, timeout, &end](std::stop_token limitStop) {
      return stopAfter(timeout, &end, std::move(limitStop));
    });
    HttpResult result = co_await m_session.send(std::move(request), end.get_token());
    limit.cancel();
    co_await limit.finished();
    if (end.stop_requested() && !stop.stop_requested())
      co_return std::unexpected(HttpError{UrlError::TimedOut, u"timed out"_s});
    co_return result;
  }

 private:
  using Duration = std::chrono::milliseconds;

  struct Entry {
    Entry(SocketWorld& socketWorld, FaultProxy::Id passage) : world(socketWorld), id(passage) {
      world.open.insert(id);
    }
    ~Entry() {
      world.open.erase(id);
      world.ending.erase(id);
    }
    Entry(const Entry&) = delete;
    Entry& operator=(const Entry&) = delete;
    void markEnding() const {
      if (world.open.erase(id) > 0) world.ending.insert(id);
    }
    SocketWorld& world;
    const FaultProxy::Id id;
  };

  Task<> stopAfter(Duration timeout, std::stop_source* end, std::stop_token stop) {
    if (co_await m_clock.sleep(timeout, stop) == SleepEnd::Elapsed) end->request_stop();
  }

  SocketWorld& m_world;
  Clock& m_clock;
  const int m_copy;
  QtHttpSession m_session;
  TaskScope m_scope;
};

}  // namespace vemo
