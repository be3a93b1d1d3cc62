// All PCM of one recording, in segments that never move.
//
// A buffer that grows by reallocation holds its bytes twice while it copies them. Segments cost a
// long recording at most one partly filled segment more than its own bytes, and appending never
// copies what is already there. The first segment is kept over clear(), so an ordinary dictation
// allocates nothing while it is recorded.
//
// Not synchronised: the owner guards it.
#pragma once

#include <cstddef>
#include <memory>
#include <span>
#include <vector>

namespace vemo {

class PcmBuffer {
 public:
  /// 60 s of speech.
  static constexpr std::size_t segmentSize = 1'920'000;

  /// Forgets the bytes and makes sure that the first segment stands ready. Frees all others.
  void clear();

  /// Appends all bytes, or none when there is no memory for them; returns which.
  [[nodiscard]] bool append(std::span<const std::byte> bytes);

  std::size_t size() const { return m_size; }

  /// Copies the `target.size()` bytes from `offset` on. The stretch must lie inside the buffer.
  void copyTo(std::span<std::byte> target, std::size_t offset) const;

 private:
  using Segment = std::unique_ptr<std::byte[]>;

  bool reserve(std::size_t size);

  std::vector<Segment> m_segments;
  std::size_t m_size = 0;
};

}  // namespace vemo
