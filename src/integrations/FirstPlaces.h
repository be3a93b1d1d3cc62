// A hash table from keys to the lowest place where each stands. It holds no keys, only 4 bytes a
// slot: whoever asks brings the key's hash, and tells whether a place has the key.
//
// Made by one thread; any may read it afterwards.
#pragma once

#include <bit>
#include <cstdint>
#include <optional>
#include <vector>

namespace vemo {

class FirstPlaces {
 public:
  using Place = std::uint32_t;

  FirstPlaces() = default;
  /// For at most `keyCount` different keys.
  explicit FirstPlaces(std::size_t keyCount)
      : m_slots(std::bit_ceil(keyCount + keyCount / 2 + 1), free) {}

  /// Keeps `place` for the key unless it has one.
  template <typename HasKey>
  void add(std::size_t hash, Place place, HasKey&& hasKey) {
    Place& slot = m_slots[slotFor(hash, hasKey)];
    if (slot == free) slot = place;
  }

  template <typename HasKey>
  std::optional<Place> find(std::size_t hash, HasKey&& hasKey) const {
    if (m_slots.empty()) return std::nullopt;
    const Place place = m_slots[slotFor(hash, hasKey)];
    return place == free ? std::nullopt : std::optional(place);
  }

  std::size_t memoryUsed() const { return m_slots.size() * sizeof(Place); }

 private:
  static constexpr Place free = UINT32_MAX;

  /// The key's slot, or the free one where it would stand.
  template <typename HasKey>
  std::size_t slotFor(std::size_t hash, HasKey&& hasKey) const {
    const std::size_t mask = m_slots.size() - 1;
    std::size_t slot = hash & mask;
    while (m_slots[slot] != free && !hasKey(m_slots[slot])) slot = (slot + 1) & mask;
    return slot;
  }

  std::vector<Place> m_slots;
};

}  // namespace vemo
