#include "integrations/NameSieve.h"

#include <algorithm>

namespace vemo {

namespace {

constexpr std::size_t longestRun = 3;

/// Calls `visit` with a hash for each run of `length` bytes that ends at `from` or later; it
/// differs between lengths.
template <typename Visit>
void visitRuns(std::string_view text, std::size_t length, std::size_t from, Visit&& visit) {
  std::uint32_t run = 0;
  const std::uint32_t mask = (1U << (8 * length)) - 1;
  const std::size_t begin = from - std::min(from, length - 1);
  for (std::size_t i = begin; i < text.size(); ++i) {
    run = (run << 8 | static_cast<unsigned char>(text[i])) & mask;
    // A multiplicative hash (Knuth, The Art of Computer Programming 6.4): its upper bits depend on
    // all bits of the run.
    if (i >= from && i + 1 >= length)
      visit((run | static_cast<std::uint32_t>(length) << 24) * 0x9E3779B97F4A7C15ULL);
  }
}

}  // namespace

void NameSieve::add(std::string_view name) {
  const std::size_t block = m_nameCount++ / blockSize;
  // Names that follow each other often begin alike, and the runs of what is alike are set already.
  std::size_t alike = 0;
  if (block >= blockCount())
    m_words.resize((block + 1) * wordsPerBlock);
  else
    alike = static_cast<std::size_t>(std::ranges::mismatch(name, m_previous).in1 - name.begin());
  m_previous = name;

  Word* words = &m_words[block * wordsPerBlock];
  const auto set = [words](std::uint64_t bit) {
    words[bit / bitsPerWord] |= Word{1} << (bit % bitsPerWord);
  };
  for (std::size_t length = 1; length <= longestRun; ++length) {
    visitRuns(name, length, alike, [&set](std::uint64_t hash) {
      set(hash >> 51);
      set(hash >> 38 & (bitsPerBlock - 1));
    });
  }
}

/// The bits of the text's longest runs: they say more than the shorter ones within them.
std::vector<std::uint32_t> NameSieve::bitsOf(std::string_view text) {
  std::vector<std::uint32_t> bits;
  if (text.empty()) return bits;
  visitRuns(text, std::min(text.size(), longestRun), 0, [&bits](std::uint64_t hash) {
    bits.push_back(static_cast<std::uint32_t>(hash >> 51));
    bits.push_back(static_cast<std::uint32_t>(hash >> 38 & (bitsPerBlock - 1)));
  });
  return bits;
}

}  // namespace vemo
