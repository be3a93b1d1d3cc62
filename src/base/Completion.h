// Completion<T>: a value that arrives once, and the one coroutine that waits for it.
//
// It is how a callback becomes something to co_await. Copies share one state: the producer keeps a
// copy and calls complete(), the consumer awaits another. The first value wins and later ones are
// dropped. The consumer is always resumed through the main queue, never inside complete(), so it is
// safe to complete from a signal, from a std::stop_callback or from an abort. A consumer whose
// frame is destroyed while it waits is forgotten.
//
// Main thread only; at most one coroutine may wait at a time.
#pragma once

#include <cassert>
#include <coroutine>
#include <memory>
#include <optional>
#include <utility>
#include <variant>

#include "base/MainThread.h"

namespace vemo {

template <typename T = std::monostate>
class Completion {
 public:
  explicit Completion(MainThread& mainThread) : m_state(std::make_shared<State>(mainThread)) {}

  void complete(T value = {}) const {
    if (m_state->value) return;
    m_state->value.emplace(std::move(value));
    if (m_state->waiter) resumeLater(m_state);
  }

  bool isComplete() const { return m_state->value.has_value(); }

  auto operator co_await() const { return Awaiter(m_state); }

 private:
  struct State {
    explicit State(MainThread& thread) : mainThread(thread) {}
    MainThread& mainThread;
    std::optional<T> value;
    std::coroutine_handle<> waiter;
  };

  class Awaiter {
   public:
    explicit Awaiter(std::shared_ptr<State> state) : m_state(std::move(state)) {}
    Awaiter(const Awaiter&) = delete;
    Awaiter& operator=(const Awaiter&) = delete;
    ~Awaiter() { m_state->waiter = nullptr; }

    bool await_ready() const noexcept { return false; }
    void await_suspend(std::coroutine_handle<> waiter) const {
      assert(!m_state->waiter);
      m_state->waiter = waiter;
      if (m_state->value) resumeLater(m_state);
    }
    T await_resume() const { return std::move(*m_state->value); }

   private:
    std::shared_ptr<State> m_state;
  };

  static void resumeLater(const std::shared_ptr<State>& state) {
    state->mainThread.post([state] {
      if (auto waiter = std::exchange(state->waiter, nullptr)) waiter.resume();
    });
  }

  std::shared_ptr<State> m_state;
};

}  // namespace vemo
