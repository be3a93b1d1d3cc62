#include "audio/PcmBuffer.h"

#include <algorithm>
#include <cassert>
#include <cstring>
#include <new>

namespace vemo {

void PcmBuffer::clear() {
  m_size = 0;
  if (m_segments.size() > 1) m_segments.resize(1);
  reserve(segmentSize);
}

bool PcmBuffer::append(std::span<const std::byte> bytes) {
  if (!reserve(m_size + bytes.size())) return false;
  while (!bytes.empty()) {
    const std::size_t position = m_size % segmentSize;
    const std::size_t count = std::min(bytes.size(), segmentSize - position);
    std::memcpy(m_segments[m_size / segmentSize].get() + position, bytes.data(), count);
    m_size += count;
    bytes = bytes.subspan(count);
  }
  return true;
}

void PcmBuffer::copyTo(std::span<std::byte> target, std::size_t offset) const {
  assert(offset + target.size() <= m_size);
  while (!target.empty()) {
    const std::size_t position = offset % segmentSize;
    const std::size_t count = std::min(target.size(), segmentSize - position);
    std::memcpy(target.data(), m_segments[offset / segmentSize].get() + position, count);
    offset += count;
    target = target.subspan(count);
  }
}

bool PcmBuffer::reserve(std::size_t size) {
  while (m_segments.size() * segmentSize < size) {
    Segment segment(new (std::nothrow) std::byte[segmentSize]);
    if (!segment) return false;
    m_segments.push_back(std::move(segment));
  }
  return true;
}

}  // namespace vemo
