// Tells which of many names can't be meant by a text, so that few have to be looked at.
//
// Names stand in blocks of 64, and each block has 8,192 bits. Each byte of a name has a bit, which
// is set for its block, and each run of two, three and four bytes is hashed to one. Another has
// each run of three together with the name's kind; so have the kind alone and, three of them, the
// whole name. A block that lacks a bit of what is wanted doesn't hold it. The price is 16 bytes a
// name.
//
// A word holds one bit of 64 blocks, so that a look at a few words tells them apart.
//
// Made by one thread; any may read it afterwards.
#pragma once

#include <array>
#include <bit>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <string_view>
#include <vector>

namespace vemo {

class NameSieve {
 public:
  using Kind = std::uint32_t;
  static constexpr std::size_t blockSize = 64;

  enum class Extent { Part, Whole };
  /// Names that have `text` in them, or are it, of one kind or of any.
  struct Wanted {
    std::string_view text;
    Extent extent;
    std::optional<Kind> kind;
  };

  /// Places come one after the other, from 0.
  void add(std::string_view name, Kind kind);

  /// Calls `visit` with the number of each block that may hold such a name, in order, until it
  /// returns true.
  template <typename Visit>
  void visitBlocks(const Wanted& wanted, Visit&& visit) const {
    const auto bits = bitsOf(wanted);
    for (std::size_t group = 0; group < m_groups.size(); ++group) {
      for (Word left = blocksWith(bits, group); left != 0; left &= left - 1) {
        if (visit(group * blocksPerGroup + static_cast<std::size_t>(std::countr_zero(left))))
          return;
      }
    }
  }

  std::size_t memoryUsed() const { return m_groups.size() * sizeof(Group); }

 private:
  using Word = std::uint64_t;
  using Bit = std::uint16_t;
  static constexpr std::size_t bitsPerBlock = 8192;
  static constexpr std::size_t letterBits = 256;
  static constexpr std::size_t blocksPerGroup = 64;
  /// For each bit of a block, which blocks have it.
  using Group = std::array<Word, bitsPerBlock>;

  static Bit bitFrom(std::uint64_t hash);
  static std::uint64_t hashOf(std::uint32_t run, std::size_t length, std::uint32_t kindMark);
  static Bit bitOfRun(std::uint32_t run, std::size_t length);
  static Bit bitOfKind(Kind kind, std::uint32_t run);
  template <typename Visit>
  static void visitWhole(std::string_view name, Visit&& visit);
  static std::vector<Bit> bitsOf(const Wanted& wanted);
  Word blocksWith(const std::vector<Bit>& bits, std::size_t group) const;

  std::size_t m_nameCount = 0;
  std::vector<std::unique_ptr<Group>> m_groups;
};

}  // namespace vemo
