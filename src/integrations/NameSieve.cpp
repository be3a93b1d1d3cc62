#include "integrations/NameSieve.h"

#include <algorithm>
#include <array>

namespace vemo {

namespace {

constexpr std::size_t rowCount = 8192;

/// The two rows of a run of up to three bytes.
std::array<std::size_t, 2> rowsOf(std::uint32_t run) {
  // A multiplicative hash (Knuth, The Art of Computer Programming 6.4): its upper bits depend on
  // all bits of the run.
  const std::uint64_t hash = run * 0x9E3779B97F4A7C15ULL;
  return {hash >> 51, (hash >> 38) % rowCount};
}

/// Calls `visit` with a number for each run of `length` bytes; runs of different lengths have
/// different numbers.
template <typename Visit>
void visitRuns(std::string_view text, std::size_t length, Visit&& visit) {
  for (std::size_t start = 0; start + length <= text.size(); ++start) {
    std::uint32_t run = static_cast<std::uint32_t>(length) << 24;
    for (std::size_t i = 0; i < length; ++i)
      run |= static_cast<std::uint32_t>(static_cast<unsigned char>(text[start + i])) << (8 * i);
    visit(run);
  }
}

constexpr std::size_t longestRun = 3;

}  // namespace

NameSieve::NameSieve(std::size_t nameCount)
    : m_blockCount((nameCount + blockSize - 1) / blockSize),
      m_wordsPerRow((m_blockCount + wordSize - 1) / wordSize),
      m_rows(rowCount * m_wordsPerRow) {}

void NameSieve::add(std::size_t place, std::string_view name) {
  const std::size_t block = place / blockSize;
  const std::size_t word = block / wordSize;
  const Word bit = Word{1} << (block % wordSize);
  for (std::size_t length = 1; length <= longestRun; ++length) {
    visitRuns(name, length, [&](std::uint32_t run) {
      for (const std::size_t row : rowsOf(run)) m_rows[row * m_wordsPerRow + word] |= bit;
    });
  }
}

std::vector<NameSieve::Word> NameSieve::candidateBlocks(std::string_view text) const {
  std::vector<Word> candidates(m_wordsPerRow, ~Word{0});
  if (const std::size_t rest = m_blockCount % wordSize; rest != 0)
    candidates.back() = (Word{1} << rest) - 1;
  if (text.empty()) return candidates;
  visitRuns(text, std::min(text.size(), longestRun), [&](std::uint32_t run) {
    for (const std::size_t row : rowsOf(run)) {
      const Word* bits = &m_rows[row * m_wordsPerRow];
      for (std::size_t word = 0; word < m_wordsPerRow; ++word) candidates[word] &= bits[word];
    }
  });
  return candidates;
}

}  // namespace vemo
