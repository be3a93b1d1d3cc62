// The program's one connection to the sound server (PulseAudio, or PipeWire in its place).
//
// It is made at first use, kept between recordings, and made anew at the next use after the server
// went away. libpulse runs on a thread of its own, which sleeps while nothing happens; its
// callbacks run there, under libpulse's lock, which every use of its objects from elsewhere takes
// through Lock. Nothing here waits longer than its deadline, whatever the server does. The server
// is never started by this program: that is the session's, and would block.
//
// The composition root owns it; whoever uses it is destroyed before it.
#pragma once

#include <pulse/pulseaudio.h>

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <functional>
#include <mutex>
#include <string>

namespace vemo {

class PulseServer {
 public:
  using Deadline = std::chrono::steady_clock::time_point;
  using StateHandler = std::function<void(pa_context& context, pa_context_state_t state)>;

  explicit PulseServer(std::string applicationName, std::string applicationId);
  ~PulseServer();
  PulseServer(const PulseServer&) = delete;
  PulseServer& operator=(const PulseServer&) = delete;

  static Deadline within(std::chrono::milliseconds duration) {
    return std::chrono::steady_clock::now() + duration;
  }

  /// Held while libpulse's objects are touched outside its callbacks. Don't nest.
  class Lock {
   public:
    explicit Lock(PulseServer& server);
    ~Lock();
    Lock(const Lock&) = delete;
    Lock& operator=(const Lock&) = delete;

   private:
    pa_threaded_mainloop* m_mainloop;
  };

  /// Begins to connect unless a connection stands or is under way. Returns at once.
  void connect();

  /// Connects, and waits until that is decided; says whether the connection stands.
  bool waitUntilConnected(Deadline deadline);

  /// Gives the connection up, so that the next use begins afresh.
  void disconnect();

  /// Waits until `isDone`, which is asked under the lock after each wake(). False at the deadline.
  bool waitUntil(Deadline deadline, const std::function<bool()>& isDone);

  /// For callbacks, under the lock: something that a waiting thread may look for has changed.
  void wake();

  /// Hears of each change of the connection, on libpulse's thread and under its lock, or inside
  /// connect() and disconnect().
  void setStateHandler(StateHandler handler);

  /// Null before the first connect(). With the lock held.
  pa_context* context() const { return m_context; }

  /// Whether the connection stands or is under way. With the lock held.
  bool isAlive() const;

 private:
  void startMainloop();
  void dropContext();
  void handleState();

  const std::string m_applicationName;
  const std::string m_applicationId;
  pa_threaded_mainloop* m_mainloop = nullptr;  ///< null when libpulse couldn't make one
  pa_context* m_context = nullptr;
  bool m_isRunning = false;
  StateHandler m_stateHandler;

  std::mutex m_wakeMutex;
  std::condition_variable m_woken;
  std::uint64_t m_wakeCount = 0;
};

/// A request under way. Ended early, its callback no longer comes. Made and destroyed under the
/// lock.
class PulseOperation {
 public:
  explicit PulseOperation(pa_operation* operation = nullptr) : m_operation(operation) {}
  ~PulseOperation() { reset(); }
  PulseOperation(const PulseOperation&) = delete;
  PulseOperation& operator=(const PulseOperation&) = delete;

  /// Ends the request in hand and takes on another.
  void reset(pa_operation* operation = nullptr) {
    if (m_operation) {
      pa_operation_cancel(m_operation);
      pa_operation_unref(m_operation);
    }
    m_operation = operation;
  }

 private:
  pa_operation* m_operation;
};

}  // namespace vemo
