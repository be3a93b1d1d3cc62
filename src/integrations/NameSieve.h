// Tells which of many names can't hold a text, so that few have to be looked at.
//
// Names stand in blocks of 64. A row of bits, one a block, belongs to each of 8,192 numbers; a
// name's runs of one, two and three bytes are hashed to two numbers each, and their rows are set
// for its block. A block whose bit is missing in a row of the text's own runs doesn't hold it. The
// price is 16 bytes a name.
//
// Made by one thread; any may read it afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>
#include <vector>

namespace vemo {

class NameSieve {
 public:
  static constexpr std::size_t blockSize = 64;

  NameSieve() = default;
  /// For the places 0 up to `nameCount`.
  explicit NameSieve(std::size_t nameCount);

  void add(std::size_t place, std::string_view name);

  std::size_t memoryUsed() const { return m_rows.capacity() * sizeof(Word); }

  /// Calls `visit` with the number of each block that may hold a name with `text` in it, in order,
  /// until it returns true.
  template <typename Visit>
  void visitBlocks(std::string_view text, Visit&& visit) const {
    const auto candidates = candidateBlocks(text);
    for (std::size_t word = 0; word < candidates.size(); ++word) {
      for (Word bits = candidates[word]; bits != 0; bits &= bits - 1) {
        const auto bit = static_cast<std::size_t>(__builtin_ctzll(bits));
        if (visit(word * wordSize + bit)) return;
      }
    }
  }

 private:
  using Word = std::uint64_t;
  static constexpr std::size_t wordSize = 64;

  /// One bit a block; bits beyond the last block are unset.
  std::vector<Word> candidateBlocks(std::string_view text) const;

  std::size_t m_blockCount = 0;
  std::size_t m_wordsPerRow = 0;
  std::vector<Word> m_rows;
};

}  // namespace vemo
