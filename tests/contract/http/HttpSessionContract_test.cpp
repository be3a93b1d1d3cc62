// What every HTTP session promises: the scripted one and Qt's against a real server.
#include <gtest/gtest.h>

#include <memory>
#include <optional>

#include "TestHttpServer.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeHttpSession.h"
#include "fakes/FakeMainThread.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {
namespace {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

constexpr HttpSessionLimits shortLimits{.requestTimeout = 100ms, .resourceTimeout = 400ms};

/// Scripts the paths that the real server knows.
class FakeWorld {
 public:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  FakeHttpSession session{mainThread, clock};
  FakeHttpSession hastySession{mainThread, clock, shortLimits};

  QUrl url(const QString& path) {
    if (path.startsWith(u"/status/"_s)) {
      const int status = path.section(u'/', 2, 2).toInt();
      session.answer(path, status, "body of " + QByteArray::number(status), 1ms);
    } else if (path == u"/big"_s) {
      session.answer(path, 200, QByteArray(100'000'000, 'b'), 1ms);
    } else {
      session.neverAnswer(path);
      hastySession.neverAnswer(path);
    }
    return QUrl(u"http://localhost"_s + path);
  }

  bool runUntil(const std::function<bool()>& condition) {
    mainThread.drain();
    for (int i = 0; i < 10'000 && !condition(); ++i) clock.advance(1ms);
    return condition();
  }

  std::size_t requestCount() const { return session.requests().size(); }
  bool isNothingUnderWay() const {
    return session.openCount() == 0 && hastySession.openCount() == 0;
  }
};

class QtWorld {
 private:
  QtTestLoop m_loop;

 public:
  QtMainThread mainThread;
  TestHttpServer server;
  QtHttpSession session{mainThread};
  QtHttpSession hastySession{mainThread, shortLimits};

  QUrl url(const QString& path) const { return server.url(path); }
  bool runUntil(const std::function<bool()>& condition) { return m_loop.runUntil(condition); }
  std::size_t requestCount() const { return server.requests().size(); }
  bool isNothingUnderWay() const { return server.openConnectionCount() == 0; }
};

template <typename World>
class HttpSessionContract : public testing::Test {
 protected:
  void start(const QString& path, std::chrono::milliseconds timeout = 20s) {
    start(world.session, path, timeout);
  }

  /// Over the session with short limits.
  void startInHaste(const QString& path, std::chrono::milliseconds timeout = 20s) {
    start(world.hastySession, path, timeout);
  }

  bool runUntilFinished() {
    return world.runUntil([this] { return result.has_value(); });
  }

  std::optional<UrlError> error() const {
    return result && !*result ? std::optional(result->error().code) : std::nullopt;
  }

  World world;
  std::optional<HttpResult> result;
  StartedTask task;
  std::unique_ptr<TaskScope> scope = std::make_unique<TaskScope>(world.mainThread);

 private:
  void start(HttpSession& session, const QString& path, std::chrono::milliseconds timeout) {
    const HttpRequest request{.method = "POST"_ba,
                              .url = world.url(path),
                              .headers = {{"Content-Type"_ba, "text/plain"_ba}},
                              .body = "abc"_ba,
                              .timeout = timeout};
    task = scope->start([this, &session, request](std::stop_token stop) {
      return keepResult(session.send(request, stop));
    });
  }

  Task<> keepResult(Task<HttpResult> sending) { result = co_await std::move(sending); }
};

using Worlds = testing::Types<FakeWorld, QtWorld>;
TYPED_TEST_SUITE(HttpSessionContract, Worlds);

TYPED_TEST(HttpSessionContract, AnyStatusIsAnAnswerWithItsBody) {
  for (const int status : {200, 201, 302, 400, 401, 404, 418, 499, 500, 503, 599}) {
    SCOPED_TRACE(status);
    this->result.reset();
    this->start(u"/status/%1"_s.arg(status));
    ASSERT_TRUE(this->runUntilFinished());
    ASSERT_TRUE(this->result->has_value());
    EXPECT_EQ(this->result->value().status, status);
    EXPECT_EQ(this->result->value().body, "body of " + QByteArray::number(status));
  }
  EXPECT_EQ(this->world.requestCount(), 11u);
}

TYPED_TEST(HttpSessionContract, ARequestedStopEndsTheRequestAsCancelledThroughTheMainQueue) {
  this->start(u"/never"_s);
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.requestCount() == 1; }));
  this->task.cancel();
  EXPECT_FALSE(this->result) << "resumed inside the request to stop";
  ASSERT_TRUE(this->runUntilFinished());
  EXPECT_EQ(this->error(), UrlError::Cancelled);
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isNothingUnderWay(); }));
}

TYPED_TEST(HttpSessionContract, AStopRequestedBeforehandSendsNothing) {
  this->start(u"/never"_s);
  this->task.cancel();
  ASSERT_TRUE(this->runUntilFinished());
  EXPECT_EQ(this->error(), UrlError::Cancelled);
  EXPECT_EQ(this->world.requestCount(), 0u);
}

TYPED_TEST(HttpSessionContract, SilenceBeyondTheRequestsOwnLimitTimesOut) {
  this->start(u"/never"_s, 50ms);
  ASSERT_TRUE(this->runUntilFinished());
  EXPECT_EQ(this->error(), UrlError::TimedOut);
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isNothingUnderWay(); }));
}

TYPED_TEST(HttpSessionContract, ARequestWithoutALimitHasTheSessions) {
  this->startInHaste(u"/never"_s, 0ms);
  ASSERT_TRUE(this->runUntilFinished());
  EXPECT_EQ(this->error(), UrlError::TimedOut);
}

TYPED_TEST(HttpSessionContract, ATransferThatNeverEndsHasTheSessionsLimit) {
  this->startInHaste(u"/trickle"_s);
  ASSERT_TRUE(this->runUntilFinished());
  EXPECT_EQ(this->error(), UrlError::TimedOut);
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isNothingUnderWay(); }));
}

TYPED_TEST(HttpSessionContract, AnOwnerThatGoesEndsItsRequest) {
  this->start(u"/never"_s);
  ASSERT_TRUE(this->world.runUntil([this] { return this->world.requestCount() == 1; }));
  this->scope.reset();
  EXPECT_TRUE(this->world.runUntil([this] { return this->world.isNothingUnderWay(); }));
  EXPECT_FALSE(this->result);
}

/// The same promise with ordinary limits, since 16 MB take a while.
TEST(HttpBodyLimitTest, AFakeBodyOf100MegabytesIsCutAtTheLimit) {
  FakeWorld world;
  std::optional<HttpResult> result;
  TaskScope scope(world.mainThread);
  const auto run = [](Task<HttpResult> sending, std::optional<HttpResult>& kept) -> Task<> {
    kept = co_await std::move(sending);
  };
  scope.start([&](std::stop_token stop) {
    return run(
        world.session.send(
            HttpRequest{.method = "GET"_ba, .url = world.url(u"/big"_s), .headers = {}, .body = {}},
            stop),
        result);
  });
  ASSERT_TRUE(world.runUntil([&] { return result.has_value(); }));
  EXPECT_EQ(result->value().body.size(), maximumHttpBodySize);
}

}  // namespace
}  // namespace vemo
