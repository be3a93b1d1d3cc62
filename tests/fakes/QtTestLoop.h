// A Qt application and its event loop, for tests of what needs a real one. It runs until a
// condition holds, and gives up after a generous limit.
#pragma once

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>
#include <chrono>
#include <functional>

#include "fakes/TestApplication.h"

namespace vemo {

class QtTestLoop {
 public:
  QtTestLoop() { makeTestApplication<QCoreApplication>(); }

  /// Whether the condition came to hold.
  static bool runUntil(const std::function<bool()>& condition,
                       std::chrono::milliseconds limit = std::chrono::seconds(60)) {
    const QDeadlineTimer deadline(limit);
    bool holds = false;
    QEventLoop loop;
    QTimer poll;
    QObject::connect(&poll, &QTimer::timeout, &loop, [&] {
      holds = holds || condition();
      if (holds || deadline.hasExpired()) loop.quit();
    });
    poll.start(std::chrono::milliseconds(2));
    loop.exec();
    return holds;
  }
};

}  // namespace vemo
