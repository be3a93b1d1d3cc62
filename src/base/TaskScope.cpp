#include "base/TaskScope.h"

namespace vemo {

void StartedTask::cancel() const {
  if (m_state) m_state->stopSource.request_stop();
}

bool StartedTask::isCancelled() const {
  return m_state && m_state->stopSource.stop_requested();
}

Task<> StartedTask::finished() const {
  const auto state = m_state;
  if (!state || state->isFinished) co_return;
  const Completion<> end(state->mainThread);
  state->waiters.push_back(end);
  co_await end;
}

/// The outermost coroutine of a started task. It stays suspended at its end: a frame can't be
/// destroyed by what runs in it, so a posted step removes it.
struct TaskScope::Root {
  struct promise_type {
    Root get_return_object() { return {std::coroutine_handle<promise_type>::from_promise(*this)}; }
    std::suspend_always initial_suspend() const noexcept { return {}; }
    std::suspend_always final_suspend() const noexcept { return {}; }
    void return_void() const noexcept {}
    [[noreturn]] void unhandled_exception() const noexcept { std::terminate(); }
  };

  std::coroutine_handle<> frame;
};

TaskScope::TaskScope(MainThread& mainThread)
    : m_mainThread(mainThread), m_self(std::make_shared<TaskScope*>(this)) {}

TaskScope::~TaskScope() {
  *m_self = nullptr;
  for (const auto& [id, frame] : m_frames) frame.destroy();
}

TaskScope::Root TaskScope::runToEnd(Task<> task, std::shared_ptr<detail::StartedTaskState> state,
                                    std::shared_ptr<TaskScope*> scope, Id id) {
  co_await std::move(task);
  task = {};  // frees what the task held before anybody is told that it ended
  state->isFinished = true;
  for (const auto& waiter : std::exchange(state->waiters, {})) waiter.complete();
  state->mainThread.post([scope, id] {
    if (*scope) (*scope)->remove(id);
  });
}

StartedTask TaskScope::own(Task<> task, std::shared_ptr<detail::StartedTaskState> state) {
  const Id id = m_nextId++;
  m_frames.emplace(id, runToEnd(std::move(task), state, m_self, id).frame);
  m_mainThread.post([scope = m_self, id] {
    if (*scope) (*scope)->resume(id);
  });
  return StartedTask(std::move(state));
}

void TaskScope::remove(Id id) {
  const auto entry = m_frames.find(id);
  entry->second.destroy();
  m_frames.erase(entry);
}

}  // namespace vemo
