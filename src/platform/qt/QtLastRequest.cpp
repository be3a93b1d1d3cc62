#include "platform/qt/QtLastRequest.h"

#include <QEventLoop>
#include <QThread>
#include <QTimer>
#include <memory>

#include "base/TaskScope.h"
#include "platform/qt/QtHttpSession.h"
#include "platform/qt/QtMainThread.h"

namespace vemo {

namespace {

Task<> sendAndQuit(QtHttpSession* session, HttpRequest request, QEventLoop* loop,
                   std::stop_token stop) {
  co_await session->send(std::move(request), std::move(stop));
  loop->quit();
}

/// On the thread that waits; its queue is the "main" one of everything made here.
void sendWithin(const HttpRequest& request, std::chrono::milliseconds longest) {
  QEventLoop loop;
  QtMainThread queue;
  QtHttpSession session(queue);
  TaskScope tasks(queue);
  tasks.start(
      [&](std::stop_token stop) { return sendAndQuit(&session, request, &loop, std::move(stop)); });
  QTimer::singleShot(longest, Qt::PreciseTimer, &loop, &QEventLoop::quit);
  loop.exec();
}

}  // namespace

void QtLastRequest::sendAndWait(const HttpRequest& request, std::chrono::milliseconds longest) {
  const std::unique_ptr<QThread> thread(
      QThread::create([&request, longest] { sendWithin(request, longest); }));
  thread->start();
  thread->wait();
}

}  // namespace vemo
