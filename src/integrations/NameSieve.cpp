#include "integrations/NameSieve.h"

#include <algorithm>
#include <functional>

namespace vemo {

namespace {

constexpr std::size_t longestRun = 4;
constexpr std::size_t runWithKind = 3;

/// The last `length` bytes of the last four.
std::uint32_t lastOf(std::uint32_t bytes, std::size_t length) {
  return bytes & (0xFFFFFFFFU >> (8 * (longestRun - length)));
}

}  // namespace

/// A bit that is no letter's, from 13 bits of a hash.
NameSieve::Bit NameSieve::bitFrom(std::uint64_t hash) {
  return static_cast<Bit>(letterBits +
                          hash % bitsPerBlock * (bitsPerBlock - letterBits) / bitsPerBlock);
}

/// A multiplicative hash (Knuth, The Art of Computer Programming 6.4): its upper bits depend on all
/// bits of the key.
std::uint64_t NameSieve::hashOf(std::uint32_t run, std::size_t length, std::uint32_t kindMark) {
  const std::uint64_t key = std::uint64_t{kindMark} << 35 | std::uint64_t{length} << 32 | run;
  return key * 0x9E3779B97F4A7C15ULL;
}

NameSieve::Bit NameSieve::bitOfRun(std::uint32_t run, std::size_t length) {
  return length == 1 ? static_cast<Bit>(run) : bitFrom(hashOf(run, length, 0) >> 51);
}

NameSieve::Bit NameSieve::bitOfKind(Kind kind, std::uint32_t run) {
  return bitFrom(hashOf(run, runWithKind, kind + 1) >> 51);
}

template <typename Visit>
void NameSieve::visitWhole(std::string_view name, Visit&& visit) {
  const std::uint64_t hash = std::hash<std::string_view>()(name);
  for (const int shift : {0, 16, 32}) visit(bitFrom(hash >> shift));
}

void NameSieve::add(std::string_view name, Kind kind) {
  const std::size_t block = m_nameCount++ / blockSize;
  if (block / blocksPerGroup == m_groups.size()) m_groups.push_back(std::make_unique<Group>());
  Group& group = *m_groups.back();
  const Word mark = Word{1} << (block % blocksPerGroup);
  const auto set = [&group, mark](Bit bit) { group[bit] |= mark; };

  visitWhole(name, set);
  set(bitOfKind(kind, 0));
  std::uint32_t bytes = 0;
  for (std::size_t i = 0; i < name.size(); ++i) {
    bytes = bytes << 8 | static_cast<unsigned char>(name[i]);
    set(bitOfRun(lastOf(bytes, 1), 1));
    if (i >= 1) set(bitOfRun(lastOf(bytes, 2), 2));
    if (i >= 2) set(bitOfRun(lastOf(bytes, 3), 3));
    if (i >= 2) set(bitOfKind(kind, lastOf(bytes, runWithKind)));
    if (i >= 3) set(bitOfRun(bytes, 4));
  }
}

std::vector<NameSieve::Bit> NameSieve::bitsOf(const Wanted& wanted) {
  std::vector<Bit> bits;
  const auto take = [&bits](Bit bit) { bits.push_back(bit); };
  const auto& [text, extent, kind] = wanted;
  if (kind) take(bitOfKind(*kind, 0));
  if (extent == Extent::Whole) visitWhole(text, take);
  // The longest runs first: they say most.
  for (std::size_t length = longestRun; length > 0; --length) {
    std::uint32_t bytes = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
      bytes = bytes << 8 | static_cast<unsigned char>(text[i]);
      if (i + 1 < length) continue;
      if (kind && length == runWithKind) take(bitOfKind(*kind, lastOf(bytes, length)));
      take(bitOfRun(lastOf(bytes, length), length));
    }
  }
  return bits;
}

NameSieve::Word NameSieve::blocksWith(const std::vector<Bit>& bits, std::size_t group) const {
  const std::size_t blockCount = (m_nameCount + blockSize - 1) / blockSize - group * blocksPerGroup;
  Word blocks = blockCount >= blocksPerGroup ? ~Word{0} : (Word{1} << blockCount) - 1;
  for (const Bit bit : bits) {
    blocks &= (*m_groups[group])[bit];
    if (blocks == 0) break;
  }
  return blocks;
}

}  // namespace vemo
