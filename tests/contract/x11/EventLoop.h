// The program's event loop in a test's hand: runs until a condition holds, or a task has ended.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QTimer>
#include <chrono>
#include <functional>
#include <optional>

#include "base/TaskScope.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {

class EventLoop {
 public:
  static constexpr std::chrono::seconds generousLimit{30};

  EventLoop() { application(); }

  QtMainThread& mainThread() { return m_mainThread; }

  /// Whether the condition came true before the limit.
  static bool runUntil(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = generousLimit) {
    // Some conditions are another program's, whose changes wake nobody here.
    QTimer wakeUp;
    wakeUp.start(std::chrono::milliseconds(5));
    const QDeadlineTimer deadline(limit);
    while (!condition()) {
      if (deadline.hasExpired()) return false;
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
  }

  /// The result of a task that is run to its end; absent when it doesn't end.
  template <typename T>
  std::optional<T> await(Task<T> task) {
    std::optional<T> result;
    TaskScope scope(m_mainThread);
    scope.start([&](std::stop_token) { return store(std::move(task), &result); });
    runUntil([&] { return result.has_value(); });
    return result;
  }

 private:
  struct Application {
    int argumentCount = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    QCoreApplication application{argumentCount, arguments};
  };

  static Application& application() {
    static Application theApplication;
    return theApplication;
  }

  template <typename T>
  static Task<> store(Task<T> task, std::optional<T>* result) {
    *result = co_await std::move(task);
  }

  QtMainThread m_mainThread;
};

}  // namespace vemo
