// Real requests against a real server, on Qt's event loop.
#pragma once

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <utility>

#include "TestHttpServer.h"
#include "base/TaskScope.h"
#include "fakes/QtTestLoop.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {

using namespace Qt::Literals::StringLiterals;
using namespace std::chrono_literals;

class QtHttpFixture : public testing::Test {
 protected:
  struct Exchange {
    std::optional<HttpResult> result;
    StartedTask task;
    bool isStarted = false;

    bool isFinished() const { return result.has_value(); }
    std::optional<int> status() const {
      return result && *result ? (*result)->status : std::nullopt;
    }
    QByteArray body() const { return result && *result ? (*result)->body : "(no body)"_ba; }
    std::optional<UrlError> error() const {
      return result && !*result ? std::optional(result->error().code) : std::nullopt;
    }
  };

  static HttpRequest post(const QUrl& url, const QByteArray& body = "some body"_ba) {
    return {.method = "POST"_ba,
            .url = url,
            .headers = {{"Content-Type"_ba, "audio/wav"_ba}},
            .body = body,
            .timeout = 20s};
  }

  void start(Exchange& exchange, QtHttpSession& over, HttpRequest request) {
    exchange.task = scope->start([&exchange, &over, request](std::stop_token stop) {
      return keepResult(&exchange, over.send(request, stop));
    });
  }

  bool runUntilFinished(const Exchange& exchange) {
    return loop.runUntil([&exchange] { return exchange.isFinished(); });
  }

  Exchange send(const HttpRequest& request) {
    Exchange exchange;
    start(exchange, session, request);
    EXPECT_TRUE(runUntilFinished(exchange));
    return exchange;
  }

  QtTestLoop loop;
  QtMainThread mainThread;
  QtHttpSession session{mainThread};
  std::unique_ptr<TaskScope> scope = std::make_unique<TaskScope>(mainThread);

 private:
  static Task<> keepResult(Exchange* exchange, Task<HttpResult> sending) {
    exchange->isStarted = true;
    exchange->result = co_await std::move(sending);
  }
};

}  // namespace vemo
