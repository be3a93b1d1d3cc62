// A thread that waits for message buses, so that no bus, hung or missing, is ever waited for
// elsewhere. It sleeps until something arrives.
//
// Jobs run on the thread in the order in which they were posted, and none of them blocks. What uses
// the thread is destroyed before it; its end waits for the requests that are being given up.
#pragma once

#include <gio/gio.h>

#include <chrono>
#include <functional>

namespace vemo {

class GioThread {
 public:
  using Job = std::function<void()>;

  GioThread();
  ~GioThread();
  GioThread(const GioThread&) = delete;
  GioThread& operator=(const GioThread&) = delete;

  /// From any thread.
  void post(Job job, std::chrono::milliseconds delay = {});

  /// From any other thread: returns when the job has run.
  void run(const Job& job);

  /// Between the two, on the thread itself, the thread doesn't end: GLib owes an answer.
  void beginRequest() { ++m_requestCount; }
  void endRequest() { --m_requestCount; }

 private:
  static void* runLoop(void* self);

  GMainContext* const m_context;
  GThread* m_thread = nullptr;
  bool m_isEnding = false;  ///< read and written on the thread
  int m_requestCount = 0;
};

}  // namespace vemo
