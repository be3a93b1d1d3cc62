// TaskScope owns the tasks that it starts; StartedTask is a handle to one of them.
//
// start() posts the first step to the main queue, so a task never runs inside start(). Destroying
// the scope destroys the frames of all its unfinished tasks: they end where they wait, without
// resuming. A scope must not be destroyed by one of its own tasks.
//
// Main thread only.
#pragma once

#include <concepts>
#include <cstdint>
#include <map>
#include <memory>
#include <stop_token>
#include <utility>
#include <vector>

#include "base/Completion.h"
#include "base/MainThread.h"
#include "base/Task.h"

namespace vemo {

namespace detail {
struct StartedTaskState {
  explicit StartedTaskState(MainThread& thread) : mainThread(thread) {}
  MainThread& mainThread;
  std::stop_source stopSource;
  bool isFinished = false;
  std::vector<Completion<>> waiters;
};
}  // namespace detail

class StartedTask {
 public:
  /// A handle to no task: finished, and cancelling it does nothing.
  StartedTask() = default;

  /// Asks the task to end early, through its stop token. It goes on running until it sees that.
  void cancel() const;
  bool isCancelled() const;
  bool isFinished() const { return !m_state || m_state->isFinished; }

  /// Waits for the task's end, however it ended. Any number of tasks may wait.
  Task<> finished() const;

 private:
  friend class TaskScope;
  explicit StartedTask(std::shared_ptr<detail::StartedTaskState> state)
      : m_state(std::move(state)) {}

  std::shared_ptr<detail::StartedTaskState> m_state;
};

class TaskScope {
 public:
  explicit TaskScope(MainThread& mainThread);
  ~TaskScope();
  TaskScope(const TaskScope&) = delete;
  TaskScope& operator=(const TaskScope&) = delete;

  /// Starts the task that `makeTask` builds from the stop token of its handle.
  template <std::invocable<std::stop_token> MakeTask>
  StartedTask start(MakeTask&& makeTask) {
    auto state = std::make_shared<detail::StartedTaskState>(m_mainThread);
    Task<> task = std::forward<MakeTask>(makeTask)(state->stopSource.get_token());
    return own(std::move(task), std::move(state));
  }

  /// How many of its tasks have not ended.
  std::size_t unfinishedCount() const { return m_frames.size(); }

 private:
  using Id = std::uint64_t;
  struct Root;

  StartedTask own(Task<> task, std::shared_ptr<detail::StartedTaskState> state);
  static Root runToEnd(Task<> task, std::shared_ptr<detail::StartedTaskState> state,
                       std::shared_ptr<TaskScope*> scope, Id id);
  void resume(Id id) { m_frames.at(id).resume(); }
  void remove(Id id);

  MainThread& m_mainThread;
  std::map<Id, std::coroutine_handle<>> m_frames;
  Id m_nextId = 0;
  std::shared_ptr<TaskScope*> m_self;  ///< lets posted work see that the scope has gone
};

}  // namespace vemo
