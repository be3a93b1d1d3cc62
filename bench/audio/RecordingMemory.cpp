// What a two-hour recording costs at its greatest moment, the stop included, against its PCM, and
// what of it is left when the last chunk has been sent.
//
// The main queue is drained as on a live desktop; each chunk is held until four more have come, as
// uploads under way hold them.
#include <malloc.h>

#include <cstdio>
#include <cstdlib>
#include <deque>
#include <fstream>
#include <string>

#include "audio/AudioRecorder.h"
#include "fakes/FakeAudioInput.h"
#include "fakes/FakeClock.h"
#include "fakes/FakeMainThread.h"

using namespace vemo;

namespace {

constexpr std::size_t chunksUnderWay = 4;
/// The first minute's memory is kept for the next recording.
constexpr double mostLeft = 4e6;

/// A line of the process's status, in bytes.
double statusBytes(const std::string& key) {
  std::ifstream status("/proc/self/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with(key + ":")) return std::atof(line.c_str() + key.size() + 1) * 1024;
  }
  return 0;
}

}  // namespace

int main() {
  mallopt(M_MMAP_THRESHOLD, 128 * 1024);  // as the program itself
  constexpr std::size_t samplesOfTwoHours = 2 * 3600 * 16000;
  FakeMainThread mainThread;
  FakeClock clock(mainThread);
  DebugLog log(clock, {});
  FakeAudioInput input;
  AudioRecorder recorder(input, mainThread, clock, log);
  std::deque<QByteArray> uploads;
  recorder.onAudioChunk = [&uploads](QByteArray wav, int) {
    uploads.push_back(std::move(wav));
    if (uploads.size() > chunksUnderWay) uploads.pop_front();
  };

  const double before = statusBytes("VmRSS");
  if (!recorder.start()) return 1;
  const std::vector<std::int16_t> block(4096, 1234);
  for (std::size_t left = samplesOfTwoHours; left > 0;) {
    const std::size_t count = std::min(left, block.size());
    input.deliver(std::span(block).first(count));
    mainThread.drain();
    left -= count;
  }
  double pcm = 0;
  {
    const auto result = recorder.stop();
    pcm = result->totalDuration * 32000;
  }
  const double peak = statusBytes("VmHWM") - before;
  uploads.clear();
  const double left = statusBytes("VmRSS") - before;
  const bool isWithin = peak <= 1.3 * pcm && left <= mostLeft;
  std::printf(
      "two hours: %.1f MB of PCM, %.1f MB at the greatest moment, ratio %.3f (limit 1.3), "
      "%.1f MB afterwards (limit %.0f)\n",
      pcm / 1e6, peak / 1e6, peak / pcm, left / 1e6, mostLeft / 1e6);
  return isWithin ? 0 : 1;
}
