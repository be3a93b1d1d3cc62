// Prints how many words the embedded recogniser gets wrong on recorded speech.
//
//   vemo-word-error-rate [TRANSCRIPTION FOLDER]...
//
// TRANSCRIPTION has lines "<s> the words </s> (name)"; FOLDER holds name.wav. Without arguments it
// takes the samples of the Debian package pocketsphinx-testdata. The word error rate is the fewest
// substitutions, insertions and deletions that turn what was heard into what was said, over the
// number of words said.
#include <algorithm>
#include <chrono>
#include <filesystem>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <iterator>
#include <numeric>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

#include "speech/PocketsphinxEngine.h"

namespace {

using namespace vemo::service;

const std::filesystem::path testData = "/usr/share/pocketsphinx/test/data";

struct Sample {
  std::filesystem::path file;
  std::vector<std::string> words;
};

std::vector<std::string> splitWords(const std::string& text) {
  std::istringstream stream(text);
  std::vector<std::string> words;
  for (std::string word; stream >> word;)
    if (word != "<s>" && word != "</s>") words.push_back(word);
  return words;
}

std::vector<Sample> readTranscription(const std::filesystem::path& path,
                                      const std::filesystem::path& folder) {
  std::ifstream file(path);
  std::vector<Sample> samples;
  for (std::string line; std::getline(file, line);) {
    const auto open = line.rfind('(');
    const auto close = line.rfind(')');
    if (open == std::string::npos || close == std::string::npos || close < open) continue;
    const auto name = line.substr(open + 1, close - open - 1);
    samples.push_back({folder / (name + ".wav"), splitWords(line.substr(0, open))});
  }
  return samples;
}

std::vector<Sample> samplesOf(const std::vector<std::string>& arguments) {
  if (arguments.empty()) {
    auto samples = samplesOf({testData / "librivox/transcription", testData / "librivox",
                              testData / "cards/cards.transcription", testData / "cards"});
    samples.push_back({testData / "goforward.raw", splitWords("go forward ten meters")});
    return samples;
  }
  std::vector<Sample> samples;
  for (std::size_t index = 0; index + 1 < arguments.size(); index += 2)
    std::ranges::move(readTranscription(arguments[index], arguments[index + 1]),
                      std::back_inserter(samples));
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

std::string littleEndian(std::size_t value, int bytes) {
  std::string text;
  for (int index = 0; index < bytes; ++index) text += static_cast<char>(value >> (8 * index));
  return text;
}

/// A .raw file holds the samples alone.
std::string readWav(const std::filesystem::path& path) {
  std::ifstream file(path, std::ios::binary);
  const std::string content{std::istreambuf_iterator<char>(file), {}};
  if (path.extension() != ".raw") return content;
  return "RIFF" + littleEndian(content.size() + 36, 4) + "WAVEfmt " + littleEndian(16, 4) +
         littleEndian(1, 2) + littleEndian(1, 2) + littleEndian(sampleRate, 4) +
         littleEndian(sampleRate * 2, 4) + littleEndian(2, 2) + littleEndian(16, 2) + "data" +
         littleEndian(content.size(), 4) + content;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc % 2 == 0) {
    std::cerr << "usage: vemo-word-error-rate [TRANSCRIPTION FOLDER]...\n";
    return 2;
  }
  const auto samples = samplesOf({argv + 1, argv + argc});
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
    const auto recording = Recording::fromWav(readWav(sample.file));
    if (!recording) {
      std::cerr << sample.file.string() << ": " << recording.error() << '\n';
      return 1;
    }
    const auto heard = engine.transcribe(*recording, {.language = "en"}, {});
    if (!heard) {
      std::cerr << sample.file.string() << ": " << heard.error().message << '\n';
      return 1;
    }
    const auto wrong = editDistance(sample.words, splitWords(*heard));
    std::cout << sample.file.stem().string() << ": " << wrong << " of " << sample.words.size()
              << ": " << *heard << '\n';
    words += sample.words.size();
    errors += wrong;
    audioSeconds += static_cast<double>(recording->sampleCount()) / sampleRate;
  }
  const std::chrono::duration<double> taken = std::chrono::steady_clock::now() - start;
  std::cout << std::fixed << std::setprecision(1) << "word error rate "
            << 100.0 * static_cast<double>(errors) / static_cast<double>(words) << " % (" << errors
            << " of " << words << " words); " << audioSeconds << " s of speech in " << taken.count()
            << " s\n";
}
