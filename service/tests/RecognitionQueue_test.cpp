#include "speech/RecognitionQueue.h"

#include <gtest/gtest.h>

#include <future>

#include "support/Eventually.h"
#include "support/ScriptedEngine.h"
#include "support/WavFile.h"

namespace vemo::service {
namespace {

using Result = RecognitionQueue::Result;

class RecognitionQueueTest : public testing::Test {
 protected:
  std::future<Result> submit(RecognitionQueue& queue, std::stop_token stop = {}) {
    std::promise<Result> promise;
    auto future = promise.get_future();
    queue.submit(*Recording::fromWav(WavFile{}.bytes()), {.language = "en"}, std::move(stop),
                 [promise = std::move(promise)](Result result) mutable {
                   promise.set_value(std::move(result));
                 });
    return future;
  }
  static EngineError::Kind errorOf(std::future<Result>& future) {
    return future.get().error().kind;
  }

  EngineScript m_script;
};

TEST_F(RecognitionQueueTest, AJobIsAnsweredByTheEngine) {
  RecognitionQueue queue(scripted(m_script), {.workers = 2, .waiting = 1}, [](auto) {});
  EXPECT_EQ(submit(queue).get().value(), "hello world");
}

TEST_F(RecognitionQueueTest, WorkersAndPlacesAreAllThereIs) {
  m_script.hold();
  RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 2}, [](auto) {});
  auto first = submit(queue);
  auto second = submit(queue);
  auto third = submit(queue);
  auto fourth = submit(queue);
  EXPECT_EQ(errorOf(fourth), EngineError::Kind::Busy);
  m_script.letGo();
  EXPECT_TRUE(first.get() && second.get() && third.get());
}

TEST_F(RecognitionQueueTest, AQueueWithoutPlacesStillTakesAJobForEachWorker) {
  m_script.hold();
  RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 0}, [](auto) {});
  auto first = submit(queue);
  auto second = submit(queue);
  EXPECT_EQ(errorOf(second), EngineError::Kind::Busy);
  m_script.letGo();
  EXPECT_TRUE(first.get());
}

TEST_F(RecognitionQueueTest, AStopFreesAWaitingPlaceAtOnce) {
  m_script.hold();
  RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 1}, [](auto) {});
  auto running = submit(queue);
  ASSERT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
  std::stop_source stop;
  auto waiting = submit(queue, stop.get_token());
  stop.request_stop();
  EXPECT_EQ(errorOf(waiting), EngineError::Kind::Cancelled);
  EXPECT_EQ(queue.waitingCount(), 0U);
  auto next = submit(queue);
  m_script.letGo();
  EXPECT_TRUE(running.get());
  EXPECT_TRUE(next.get());
  EXPECT_EQ(m_script.startedCount(), 2U);
}

TEST_F(RecognitionQueueTest, AStopReachesARunningJob) {
  m_script.hold();
  RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 0}, [](auto) {});
  std::stop_source stop;
  auto running = submit(queue, stop.get_token());
  ASSERT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
  stop.request_stop();
  EXPECT_EQ(errorOf(running), EngineError::Kind::Cancelled);
}

TEST_F(RecognitionQueueTest, AJobThatIsStoppedBeforeItIsSubmittedNeverRuns) {
  m_script.hold();
  RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 1}, [](auto) {});
  auto running = submit(queue);
  ASSERT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
  std::stop_source stop;
  stop.request_stop();
  auto stopped = submit(queue, stop.get_token());
  EXPECT_EQ(errorOf(stopped), EngineError::Kind::Cancelled);
  m_script.letGo();
  EXPECT_TRUE(running.get());
}

TEST_F(RecognitionQueueTest, DestructionCancelsWhatRunsAndWhatWaits) {
  m_script.hold();
  std::future<Result> running;
  std::future<Result> waiting;
  {
    RecognitionQueue queue(scripted(m_script), {.workers = 1, .waiting = 1}, [](auto) {});
    running = submit(queue);
    ASSERT_TRUE(eventually([&] { return m_script.runningCount() == 1; }));
    waiting = submit(queue);
  }
  EXPECT_EQ(errorOf(running), EngineError::Kind::Cancelled);
  EXPECT_EQ(errorOf(waiting), EngineError::Kind::Cancelled);
}

TEST_F(RecognitionQueueTest, JobsWaitForEnginesThatAreStillLoading) {
  m_script.holdLoading();
  std::promise<bool> loaded;
  RecognitionQueue queue(scripted(m_script), {.workers = 2, .waiting = 4},
                         [&](auto result) { loaded.set_value(result.has_value()); });
  auto job = submit(queue);
  EXPECT_FALSE(queue.isReady());
  m_script.letLoadingGo();
  EXPECT_TRUE(loaded.get_future().get());
  EXPECT_TRUE(queue.isReady());
  EXPECT_TRUE(job.get());
}

TEST_F(RecognitionQueueTest, AnEngineThatDoesNotLoadIsToldOnce) {
  m_script.failToLoad("no model");
  std::promise<std::string> error;
  RecognitionQueue queue(scripted(m_script), {.workers = 2, .waiting = 4},
                         [&](auto result) { error.set_value(result.error()); });
  EXPECT_EQ(error.get_future().get(), "no model");
  EXPECT_FALSE(queue.isReady());
}

TEST_F(RecognitionQueueTest, StopsAndAnswersMayCrossAtAnyMoment) {
  RecognitionQueue queue(scripted(m_script), {.workers = 2, .waiting = 1000}, [](auto) {});
  for (int round = 0; round < 500; ++round) {
    std::stop_source stop;
    auto job = submit(queue, stop.get_token());
    stop.request_stop();
    const auto result = job.get();
    EXPECT_TRUE(result || result.error().kind == EngineError::Kind::Cancelled);
  }
}

}  // namespace
}  // namespace vemo::service
