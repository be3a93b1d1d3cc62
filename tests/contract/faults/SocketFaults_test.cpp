// Stories of dictations over networks that fail at random, over real sockets: the real client and
// its HTTP adapter, a proxy that fails as the story says, and the real service with an engine that
// tells how loud a recording is. Only time is virtual: it passes while every request under way is
// at its stall, so each wait lasts as long as it says and costs nothing.
//
// The seeds are fixed; VEMO_FAULT_SEED as in the stories without sockets.
#include <malloc.h>

#include <QDeadlineTimer>
#include <QDir>
#include <QTimer>
#include <functional>

#include "SocketSession.h"
#include "fakes/QtTestLoop.h"
#include "http/TestCertificates.h"
#include "platform/qt/QtMainThread.h"
#include "session/FaultStoryRun.h"
#include "support/RunningService.h"

namespace vemo {
namespace {

/// Sanitizers take several times as long.
#if __has_feature(address_sanitizer) || __has_feature(thread_sanitizer)
constexpr std::uint64_t storyCount = 100;
#else
constexpr std::uint64_t storyCount = 1'000;
#endif

class HearingEngine : public service::Engine {
 public:
  std::expected<void, std::string> load() override { return {}; }
  std::expected<std::string, service::EngineError> transcribe(const service::Recording& recording,
                                                              const service::TranscriptionOptions&,
                                                              std::stop_token) override {
    return spokenText(recording.samples()[0]).toStdString();
  }
};

service::EngineKind hearing() {
  return {.name = "hearing", .output = service::EngineKind::Output::Punctuated, .make = [] {
            return std::make_unique<HearingEngine>();
          }};
}

/// What all stories share.
struct Surroundings {
  Surroundings() { certificates.trustTheTrustedOne(); }

  QtTestLoop loop;
  TestCertificates certificates;
  const QSslConfiguration tls = certificates.server(u"trusted"_s, u"localhost"_s);
  service::RunningService service{hearing(),
                                  {.limits = {}, .queue = {.workers = 1, .waiting = 64}}};
};

bool isOverTls(std::uint64_t seed) {
  return seed % 4 == 0;
}

class SocketStoryRun : public FaultStoryRun {
 public:
  SocketStoryRun(std::uint64_t seed, Surroundings& around)
      : FaultStoryRun(seed, Wire::Sockets),
        m_proxy(clock, mainThread, around.service.port(),
                isOverTls(seed) ? std::optional(around.tls) : std::nullopt),
        m_world(network, m_proxy, seed) {
    dictationSession = &m_first;
    dictationHedgeSession = &m_second;
    secrets.add(u"brelmox.Vemo"_s, u"authToken"_s,
                QByteArray::fromStdString(around.service.token()));
  }

  void TestBody() override {
    FaultStoryRun::TestBody();
    // A connection whose request was given up may stay while others of its session are under way.
    runUntil([this] { return m_proxy.stalled().empty(); });
  }

 private:
  void pass(Clock::Duration duration) override {
    const auto until = clock.monotonicTime() + duration;
    while (comeToRest()) {
      const auto due = clock.nextDue();
      if (!due || *due > until) break;
      clock.advance(*due - clock.monotonicTime());
    }
    clock.advance(until - clock.monotonicTime());
    comeToRest();
  }

  bool comeToRest() {
    return runUntil([this] { return m_world.isAtRest(); });
  }

  /// Runs both loops till then.
  bool runUntil(const std::function<bool()>& condition) {
    const QDeadlineTimer limit(std::chrono::seconds(20));
    QTimer waker;
    waker.start(2ms);
    for (mainThread.drain(); !condition(); mainThread.drain()) {
      if (limit.hasExpired()) {
        ADD_FAILURE() << "requests that get nowhere; " << m_world.unrest();
        return false;
      }
      QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
  }

  QtMainThread m_qtThread;
  FaultProxy m_proxy;
  SocketWorld m_world;
  SocketSession m_first{m_world, mainThread, clock, m_qtThread, 0};
  SocketSession m_second{m_world, mainThread, clock, m_qtThread, 1};
};

qsizetype openFileCount() {
  return QDir(u"/proc/self/fd"_s).entryList(QDir::AllEntries | QDir::System).size();
}

TEST(SocketFaultsTest, DictationsOverFailingSocketsComeOutAsTheRulesSayAndLeaveNothing) {
  Surroundings around;
  const auto playStories = [&around](std::uint64_t from, std::uint64_t count) {
    for (std::uint64_t seed = from; seed < from + count; ++seed) {
      SCOPED_TRACE("VEMO_FAULT_SEED=" + std::to_string(seed));
      SocketStoryRun(seed, around).TestBody();
      if (testing::Test::HasFailure()) return;
    }
  };
  const std::uint64_t first = firstFaultSeed();
  playStories(first, 20);
  const auto comeToRest = [&around](qsizetype files) {
    return around.loop.runUntil(
        [&] { return openFileCount() <= files && around.service.waitingForAnswers() == 0; });
  };
  EXPECT_TRUE(comeToRest(openFileCount()));
  const qsizetype filesBefore = openFileCount();
  const auto bytesBefore = static_cast<double>(mallinfo2().uordblks);
  playStories(first + 20, storyCount - 20);
  EXPECT_TRUE(comeToRest(filesBefore)) << openFileCount() << " files open, of " << filesBefore;
  const double grown = static_cast<double>(mallinfo2().uordblks) - bytesBefore;
  std::printf("after %d stories: %d files open, %d before; %.0f bytes more in use\n",
              static_cast<int>(storyCount), static_cast<int>(openFileCount()),
              static_cast<int>(filesBefore), grown);
  EXPECT_LT(grown, 1'000'000) << "one chunk's upload and more";
}

}  // namespace
}  // namespace vemo
