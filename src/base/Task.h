// Task<T>: a lazily started coroutine that ends with a T.
//
// Nothing runs before the task is awaited (co_await std::move(task)) or started in a TaskScope. The
// Task owns its frame: destroying the Task destroys the frame and, through the destructors of the
// awaiters in it, whatever the coroutine was waiting for. A task is cancelled by the
// std::stop_token that it was given, which ends a wait early; what that means is for the code after
// the wait.
//
// Tasks run on the main thread only. A coroutine is a named function with parameters taken by
// value, or a member function of an object that outlives it. An exception that leaves a coroutine
// ends the program: failures are values, and exceptions stop at the adapter that met them.
#pragma once

#include <coroutine>
#include <exception>
#include <optional>
#include <utility>

namespace vemo {

template <typename T = void>
class Task;

namespace detail {

struct TaskPromiseBase {
  struct FinalAwaiter {
    bool await_ready() const noexcept { return false; }
    template <typename Promise>
    std::coroutine_handle<> await_suspend(std::coroutine_handle<Promise> finished) const noexcept {
      return finished.promise().continuation;
    }
    void await_resume() const noexcept {}
  };

  std::suspend_always initial_suspend() const noexcept { return {}; }
  FinalAwaiter final_suspend() const noexcept { return {}; }
  [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }

  std::coroutine_handle<> continuation = std::noop_coroutine();
};

template <typename T>
struct TaskPromise : TaskPromiseBase {
  Task<T> get_return_object();
  template <typename Value>
  void return_value(Value&& value) {
    result.emplace(std::forward<Value>(value));
  }
  T takeResult() { return std::move(*result); }

  std::optional<T> result;
};

template <>
struct TaskPromise<void> : TaskPromiseBase {
  Task<void> get_return_object();
  void return_void() const noexcept {}
  void takeResult() const noexcept {}
};

}  // namespace detail

template <typename T>
class [[nodiscard]] Task {
 public:
  using promise_type = detail::TaskPromise<T>;

  Task() = default;
  Task(Task&& other) noexcept : m_frame(std::exchange(other.m_frame, {})) {}
  Task& operator=(Task&& other) noexcept {
    if (this != &other) {
      destroyFrame();
      m_frame = std::exchange(other.m_frame, {});
    }
    return *this;
  }
  ~Task() { destroyFrame(); }

  auto operator co_await() && noexcept {
    struct Awaiter {
      std::coroutine_handle<promise_type> frame;

      bool await_ready() const noexcept { return false; }
      std::coroutine_handle<> await_suspend(std::coroutine_handle<> awaiting) const noexcept {
        frame.promise().continuation = awaiting;
        return frame;
      }
      T await_resume() const { return frame.promise().takeResult(); }
    };
    return Awaiter{m_frame};
  }

 private:
  friend promise_type;
  explicit Task(std::coroutine_handle<promise_type> frame) : m_frame(frame) {}

  void destroyFrame() {
    if (m_frame) m_frame.destroy();
  }

  std::coroutine_handle<promise_type> m_frame;
};

namespace detail {

template <typename T>
Task<T> TaskPromise<T>::get_return_object() {
  return Task<T>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

inline Task<void> TaskPromise<void>::get_return_object() {
  return Task<void>(std::coroutine_handle<TaskPromise>::from_promise(*this));
}

}  // namespace detail

}  // namespace vemo
