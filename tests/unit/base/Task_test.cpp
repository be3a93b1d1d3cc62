#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <vector>

#include "base/Completion.h"
#include "base/Task.h"
#include "base/TaskScope.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"

namespace vemo {
namespace {

using namespace std::chrono_literals;

class TaskTest : public testing::Test {
 protected:
  FakeMainThread mainThread;
  FakeClock clock{mainThread};
  std::vector<std::string> events;

  Task<int> answer() {
    events.emplace_back("answered");
    co_return 42;
  }

  Task<> note(std::string event) {
    events.push_back(std::move(event));
    co_return;
  }

  Task<> sleepAndNote(Clock::Duration duration, std::stop_token stop) {
    const auto end = co_await clock.sleep(duration, stop);
    events.emplace_back(end == SleepEnd::Elapsed ? "elapsed" : "cancelled");
  }

  Task<> waitFor(Completion<int> completion) {
    events.push_back("got " + std::to_string(co_await completion));
  }

  Task<> waitForEnd(StartedTask task) {
    co_await task.finished();
    events.emplace_back("saw the end");
  }

  Task<> hold(std::shared_ptr<int> held, Completion<> end) {
    co_await end;
    ++*held;
  }

  Task<> addUp(int count, int* sum) {
    for (int i = 0; i < count; ++i) *sum += co_await answer() / 42;
  }
};

TEST_F(TaskTest, NothingRunsBeforeATaskIsAwaited) {
  {
    const Task<int> task = answer();
  }
  EXPECT_TRUE(events.empty());
}

TEST_F(TaskTest, StartingNeverRunsATaskInline) {
  TaskScope scope(mainThread);
  const StartedTask task = scope.start([&](std::stop_token) { return note("ran"); });
  EXPECT_TRUE(events.empty());
  EXPECT_FALSE(task.isFinished());
  mainThread.drain();
  EXPECT_EQ(events, std::vector<std::string>{"ran"});
  EXPECT_TRUE(task.isFinished());
  EXPECT_EQ(scope.unfinishedCount(), 0u);
}

TEST_F(TaskTest, TasksStartInTheOrderInWhichTheyWereStarted) {
  TaskScope scope(mainThread);
  scope.start([&](std::stop_token) { return note("first"); });
  scope.start([&](std::stop_token) { return note("second"); });
  mainThread.drain();
  EXPECT_EQ(events, (std::vector<std::string>{"first", "second"}));
}

TEST_F(TaskTest, AMillionAwaitsInARowUseNoStack) {
  TaskScope scope(mainThread);
  int sum = 0;
  scope.start([&](std::stop_token) { return addUp(1'000'000, &sum); });
  mainThread.drain();
  EXPECT_EQ(sum, 1'000'000);
}

TEST_F(TaskTest, ASleepEndsWhenItsTimeHasCome) {
  TaskScope scope(mainThread);
  scope.start([&](std::stop_token stop) { return sleepAndNote(2h, stop); });
  clock.advance(2h - 1ns);
  EXPECT_TRUE(events.empty());
  clock.advance(1ns);
  EXPECT_EQ(events, std::vector<std::string>{"elapsed"});
}

TEST_F(TaskTest, CancellingEndsASleepThroughTheQueueAndNotInline) {
  TaskScope scope(mainThread);
  const auto task = scope.start([&](std::stop_token stop) { return sleepAndNote(1s, stop); });
  mainThread.drain();
  task.cancel();
  EXPECT_TRUE(events.empty());
  mainThread.drain();
  EXPECT_EQ(events, std::vector<std::string>{"cancelled"});
  EXPECT_TRUE(task.isCancelled());
  EXPECT_EQ(clock.sleeperCount(), 0u);
}

TEST_F(TaskTest, ATaskCancelledBeforeItsFirstStepStillRunsAndSeesIt) {
  TaskScope scope(mainThread);
  const auto task = scope.start([&](std::stop_token stop) { return sleepAndNote(1s, stop); });
  task.cancel();
  mainThread.drain();
  EXPECT_EQ(events, std::vector<std::string>{"cancelled"});
}

TEST_F(TaskTest, DestroyingTheScopeDestroysItsTasksWhereTheyWait) {
  const Completion<> end(mainThread);
  const auto held = std::make_shared<int>(0);
  {
    TaskScope scope(mainThread);
    scope.start([&](std::stop_token stop) { return sleepAndNote(1s, stop); });
    scope.start([&](std::stop_token) { return hold(held, end); });
    mainThread.drain();
    EXPECT_EQ(held.use_count(), 2);
  }
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(clock.sleeperCount(), 0u);
  end.complete();
  clock.advance(2s);
  EXPECT_TRUE(events.empty());
  EXPECT_EQ(*held, 0);
}

TEST_F(TaskTest, AScopeDestroyedAfterTheWakeUpWasQueuedResumesNothing) {
  const Completion<> end(mainThread);
  const auto held = std::make_shared<int>(0);
  {
    TaskScope scope(mainThread);
    scope.start([&](std::stop_token) { return hold(held, end); });
    mainThread.drain();
    end.complete();
  }
  mainThread.drain();
  EXPECT_EQ(*held, 0);
}

TEST_F(TaskTest, AScopeDestroyedBeforeTheFirstStepRunsNothing) {
  {
    TaskScope scope(mainThread);
    scope.start([&](std::stop_token) { return note("ran"); });
  }
  mainThread.drain();
  EXPECT_TRUE(events.empty());
}

TEST_F(TaskTest, WhatATaskHeldIsFreedWhenItEndsThoughItsHandleIsKept) {
  TaskScope scope(mainThread);
  const Completion<> end(mainThread);
  const auto held = std::make_shared<int>(0);
  const auto task = scope.start([&](std::stop_token) { return hold(held, end); });
  mainThread.drain();
  end.complete();
  mainThread.drain();
  EXPECT_TRUE(task.isFinished());
  EXPECT_EQ(held.use_count(), 1);
  EXPECT_EQ(*held, 1);
}

TEST_F(TaskTest, TheFirstValueOfACompletionWins) {
  TaskScope scope(mainThread);
  const Completion<int> completion(mainThread);
  completion.complete(1);
  completion.complete(2);
  scope.start([&](std::stop_token) { return waitFor(completion); });
  mainThread.drain();
  EXPECT_EQ(events, std::vector<std::string>{"got 1"});
}

TEST_F(TaskTest, SeveralTasksSeeTheEndOfAnother) {
  TaskScope scope(mainThread);
  const Completion<> end(mainThread);
  const auto task =
      scope.start([&](std::stop_token) { return hold(std::make_shared<int>(0), end); });
  scope.start([&](std::stop_token) { return waitForEnd(task); });
  scope.start([&](std::stop_token) { return waitForEnd(task); });
  mainThread.drain();
  EXPECT_TRUE(events.empty());
  end.complete();
  mainThread.drain();
  EXPECT_EQ(events, (std::vector<std::string>{"saw the end", "saw the end"}));
  scope.start([&](std::stop_token) { return waitForEnd(task); });
  mainThread.drain();
  EXPECT_EQ(events.size(), 3u) << "a wait for a task that has ended ends at once";
}

TEST_F(TaskTest, AHandleToNoTaskIsFinished) {
  const StartedTask none;
  none.cancel();
  EXPECT_TRUE(none.isFinished());
  EXPECT_FALSE(none.isCancelled());
}

}  // namespace
}  // namespace vemo
