// Tells which of many names can't hold a text, so that few have to be looked at.
//
// Names stand in blocks of 64, and each block has 8,192 bits. A name's runs of one, two and three
// bytes are hashed to two bits each, which are set for its block. A block that lacks a bit of one
// of the text's own runs doesn't hold it. The price is 16 bytes a name.
//
// Made by one thread; any may read it afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

namespace vemo {

class NameSieve {
 public:
  static constexpr std::size_t blockSize = 64;

  /// Places come one after the other, from 0.
  void add(std::string_view name);

  /// Calls `visit` with the number of each block that may hold a name with `text` in it, in order,
  /// until it returns true.
  template <typename Visit>
  void visitBlocks(std::string_view text, Visit&& visit) const {
    const auto bits = bitsOf(text);
    for (std::size_t block = 0; block < blockCount(); ++block) {
      if (hasAll(block, bits) && visit(block)) return;
    }
  }

  std::size_t memoryUsed() const { return m_words.size() * sizeof(Word); }

 private:
  using Word = std::uint64_t;
  static constexpr std::size_t bitsPerBlock = 8192;
  static constexpr std::size_t bitsPerWord = 64;
  static constexpr std::size_t wordsPerBlock = bitsPerBlock / bitsPerWord;

  static std::vector<std::uint32_t> bitsOf(std::string_view text);
  std::size_t blockCount() const { return m_words.size() / wordsPerBlock; }

  bool hasAll(std::size_t block, const std::vector<std::uint32_t>& bits) const {
    const Word* words = &m_words[block * wordsPerBlock];
    for (const auto bit : bits) {
      if ((words[bit / bitsPerWord] >> (bit % bitsPerWord) & 1) == 0) return false;
    }
    return true;
  }

  std::size_t m_nameCount = 0;
  std::string m_previous;  ///< the last name
  std::vector<Word> m_words;
};

}  // namespace vemo
