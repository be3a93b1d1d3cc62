// How long after the trigger the first sample is retained, and where that time goes.
//
// Runs on the sound server that PULSE_SERVER names: tools/virtual-desktop --audio -- PROGRAM
// [STARTS]
#include <algorithm>
#include <chrono>
#include <condition_variable>
#include <cstdio>
#include <cstdlib>
#include <mutex>
#include <vector>

#include "audio/AudioRecorder.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"
#include "platform/pulse/PulseAudioInput.h"

using namespace vemo;
using SteadyClock = std::chrono::steady_clock;

namespace {

double millisecondsSince(SteadyClock::time_point start) {
  return std::chrono::duration<double, std::milli>(SteadyClock::now() - start).count();
}

/// The real input, which notes when its steps are through.
class TimedInput : public AudioInput {
 public:
  explicit TimedInput(AudioInput& input) : m_input(input) {}

  std::expected<Formats, AudioInputError> prepare() override {
    const auto start = SteadyClock::now();
    auto formats = m_input.prepare();
    preparation = millisecondsSince(start);
    return formats;
  }
  std::expected<void, AudioInputError> start(BlockHandler handler) override {
    return m_input.start(std::move(handler));
  }
  void stop() override { m_input.stop(); }

  double preparation = 0;

 private:
  AudioInput& m_input;
};

/// When the first sample of a recording was retained.
class FirstSample {
 public:
  void note() {
    const std::lock_guard lock(m_mutex);
    if (m_time) return;
    m_time = SteadyClock::now();
    m_noted.notify_all();
  }
  void forget() {
    const std::lock_guard lock(m_mutex);
    m_time.reset();
  }
  std::optional<SteadyClock::time_point> wait() {
    std::unique_lock lock(m_mutex);
    m_noted.wait_for(lock, std::chrono::seconds(20), [this] { return m_time.has_value(); });
    return m_time;
  }

 private:
  std::mutex m_mutex;
  std::condition_variable m_noted;
  std::optional<SteadyClock::time_point> m_time;
};

void print(const char* what, std::vector<double> times) {
  std::ranges::sort(times);
  const auto at = [&](double share) {
    return times[std::min(times.size() - 1,
                          static_cast<std::size_t>(share * static_cast<double>(times.size())))];
  };
  std::printf("%-34s p50 %6.1f ms   p99 %6.1f ms   max %6.1f ms\n", what, at(0.5), at(0.99),
              times.back());
}

}  // namespace

int main(int argumentCount, char** arguments) {
  const int starts = argumentCount > 1 ? std::atoi(arguments[1]) : 100;
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  DebugLog log(clock, {});
  PulseServer server("Vemo", "brelmox.Vemo");
  PulseAudioInput pulseInput(server);
  TimedInput input(pulseInput);
  AudioRecorder recorder(input, mainThread, clock, log);
  FirstSample firstSample;
  recorder.setPcmSink([&firstSample](std::span<const std::byte>) { firstSample.note(); });

  std::vector<double> preparations;
  std::vector<double> returns;
  std::vector<double> firstSamples;
  for (int i = 0; i <= starts; ++i) {
    firstSample.forget();
    const auto trigger = SteadyClock::now();
    const auto started = recorder.start();
    const double returned = millisecondsSince(trigger);
    const auto first = started ? firstSample.wait() : std::nullopt;
    recorder.stop();
    if (!first) {
      std::fprintf(stderr, "start %d brought no sample\n", i);
      return 1;
    }
    const double retained = std::chrono::duration<double, std::milli>(*first - trigger).count();
    if (i == 0) {
      std::printf("first start, with connecting: %.1f ms to the first sample, %.1f ms prepare\n",
                  retained, input.preparation);
      continue;
    }
    preparations.push_back(input.preparation);
    returns.push_back(returned);
    firstSamples.push_back(retained);
  }
  std::printf("%d further starts, from the trigger to\n", starts);
  print("  microphone found, stream attached", preparations);
  print("  start() returned", returns);
  print("  first sample retained", firstSamples);
}
