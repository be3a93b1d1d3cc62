// Prints how many words the embedded recogniser gets wrong on recorded speech.
//
//   vemo-word-error-rate TRANSCRIPTION FOLDER
//
// TRANSCRIPTION has lines "<s> the words </s> (name)"; FOLDER holds name.wav. The word error rate
// is the fewest substitutions, insertions and deletions that turn what was heard into what was
// said, over the number of words said.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "speech/PocketsphinxEngine.h"

namespace {

using namespace vemo::service;

struct Sample {
  std::string name;
  std::vector<std::string> words;
};

std::vector<std::string> splitWords(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    if (word != "<s>" && word != "</s>") words.push_back(word);
  return words;
}

std::vector<Sample> readTranscription(const std::filesystem::path& path) {
  std::ifstream file(path);
  std::vector<Sample> samples;
  for (std::string line; std::getline(file, line);) {
    const auto open = line.rfind('(');
    const auto close = line.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) continue;
    samples.push_back({line.substr(open + 1, close - open - 1), splitWords(line.substr(0, open))});
  }
  return samples;
}

std::size_t editDistance(const std::vector<std::string>& said,
                         const std::vector<std::string>& heard) {
  std::vector<std::size_t> row(heard.size() + 1);
  std::iota(row.begin(), row.end(), std::size_t{0});
  for (std::size_t s = 1; s <= said.size(); ++s) {
    std::size_t diagonal = std::exchange(row[0], s);
    for (std::size_t h = 1; h <= heard.size(); ++h) {
      const std::size_t substituted = diagonal + (said[s - 1] == heard[h - 1] ? 0 : 1);
      diagonal = row[h];
      row[h] = std::min({substituted, row[h] + 1, row[h - 1] + 1});
    }
  }
  return row.back();
}

std::string readFile(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: vemo-word-error-rate TRANSCRIPTION FOLDER\n";
    return 2;
  }
  const auto samples = readTranscription(argv[1]);
  PocketsphinxEngine engine{PocketsphinxModel{}};
  if (const auto loaded = engine.load(); !loaded || samples.empty()) {
    std::cerr << (loaded ? "no samples in the transcription" : loaded.error()) << '\n';
    return 1;
  }

  std::size_t words = 0;
  std::size_t errors = 0;
  double audioSeconds = 0;
  const auto start = std::chrono::steady_clock::now();
  for (const auto& sample : samples) {
    const auto recording =
        Recording::fromWav(readFile(std::filesystem::path(argv[2]) / (sample.name + ".wav")));
    if (!recording) {
      std::cerr << sample.name << ": " << recording.error() << '\n';
      return 1;
    }
    const auto heard = engine.transcribe(*recording, {.language = "en"}, {});
    if (!heard) {
      std::cerr << sample.name << ": " << heard.error().message << '\n';
      return 1;
    }
    const auto wrong = editDistance(sample.words, splitWords(*heard));
    std::cout << sample.name << ": " << wrong << " of " << sample.words.size() << ": " << *heard
              << '\n';
    words += sample.words.size();
    errors += wrong;
    audioSeconds += static_cast<double>(recording->sampleCount()) / sampleRate;
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::cout << "word error rate "
            << 100.0 * static_cast<double>(errors) / static_cast<double>(words) << " % (" << errors
            << " of " << words << " words); " << audioSeconds << " s of speech in " << taken.count()
            << " s\n";
}
