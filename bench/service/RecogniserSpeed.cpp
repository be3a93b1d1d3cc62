// How much speech a core recognises: processor seconds a second of speech of the embedded engine.
//
// usage: service_recogniser_speed FOLDER
//
// FOLDER holds recordings as .wav files or as raw samples (.raw), 16,000 a second. Prints one line
// a recording and the sum. Exits with 1 when there is none, or one that fails.
#include <cstdio>
#include <ctime>
#include <filesystem>

#include "speech/PocketsphinxEngine.h"
#include "support/TemporaryFolder.h"
#include "support/WavFile.h"

using namespace vemo::service;

namespace {

double processorSeconds() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) / 1e9;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 2) {
    std::fprintf(stderr, "usage: service_recogniser_speed FOLDER\n");
    return 2;
  }
  PocketsphinxEngine engine{PocketsphinxModel{}};
  if (const auto loaded = engine.load(); !loaded) {
    std::fprintf(stderr, "%s\n", loaded.error().c_str());
    return 1;
  }
  double speech = 0;
  double work = 0;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(argv[1])) {
    const auto extension = entry.path().extension();
    if (extension != ".wav" && extension != ".raw") continue;
    auto bytes = readFile(entry.path());
    if (extension == ".raw") bytes = WavFile{.pcm = bytes}.bytes();
    const auto recording = Recording::fromWav(std::move(bytes));
    if (!recording) continue;
    const double seconds = std::chrono::duration<double>(recording->duration()).count();
    const auto start = processorSeconds();
    if (!engine.transcribe(*recording, {.language = "en"}, {})) return 1;
    const double taken = processorSeconds() - start;
    std::printf("%-40s %6.2f s of speech, %6.2f s of a core\n", entry.path().filename().c_str(),
                seconds, taken);
    speech += seconds;
    work += taken;
  }
  std::printf("%-40s %6.2f s of speech, %6.2f s of a core: %.2f\n", "all", speech, work,
              work / speech);
  return speech > 0 ? 0 : 1;
}
