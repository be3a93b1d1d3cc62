// The time from the stop to the paste, when every request takes the service two seconds.
#include <cstdio>

#include "session/SessionFixture.h"

namespace vemo {
namespace {

class TwoSeconds : public HttpSession {
 public:
  explicit TwoSeconds(Clock& clock) : m_clock(clock) {}
  Task<HttpResult> send(HttpRequest, std::stop_token stop) override {
    co_await m_clock.sleep(2s, stop);
    co_return HttpResponse{200, success(u"Words."_s)};
  }

 private:
  Clock& m_clock;
};

class WaitAfterTheStop : public SessionFixture {
 public:
  /// The recording goes on for so long, unless its own limit ends it.
  double seconds(double recorded) {
    dictationSession = &m_service;
    startUp();
    startRecording();
    hear(recorded);
    const auto stop = clock.monotonicTime();
    if (appState->phase() == Phase::recording()) stopRecording();
    for (int step = 0; step < 10'000 && keyPoster.events().empty(); ++step) clock.advance(10ms);
    EXPECT_EQ(keyPoster.makePasteCount(), 1);
    return std::chrono::duration<double>(clock.monotonicTime() - stop).count();
  }

  void TestBody() override {}

 private:
  TwoSeconds m_service{clock};
};

TEST(WaitAfterTheStopTest, DoesNotGrowWithTheLengthOfTheDictation) {
  const double shortest = WaitAfterTheStop().seconds(20);
  EXPECT_GT(shortest, 0);
  for (const double recorded : {10.0 * 60 + 5, 2.0 * 60 * 60}) {
    const double waited = WaitAfterTheStop().seconds(recorded);
    std::printf("stop to paste: %.2f s after 20 s of speech, %.2f s after %.0f s\n", shortest,
                waited, recorded);
    EXPECT_NEAR(waited, shortest, 0.1 * shortest);
  }
}

}  // namespace
}  // namespace vemo
