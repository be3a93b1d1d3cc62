// Takes in what an audio input delivers and lets the test wait for it.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <set>
#include <vector>

#include "ports/AudioInput.h"

namespace vemo {

class BlockCollector {
 public:
  AudioInput::BlockHandler handler() {
    return [this](const AudioBlock& block) { take(block); };
  }

  /// Waits until so many frames more than now have come; false when they don't.
  bool waitForFrames(std::size_t count) {
    std::unique_lock lock(m_mutex);
    const std::size_t goal = m_frameCount + count;
    return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_frameCount >= goal; });
  }

  /// Waits until a sample other than zero has come.
  bool waitForSound() {
    std::unique_lock lock(m_mutex);
    return m_changed.wait_for(lock, std::chrono::seconds(20), [&] { return m_hasSound; });
  }

  std::size_t frameCount() const {
    const std::lock_guard lock(m_mutex);
    return m_frameCount;
  }
  std::vector<AudioFormat> formats() const {
    const std::lock_guard lock(m_mutex);
    return m_formats;
  }
  std::size_t greatestBlock() const {
    const std::lock_guard lock(m_mutex);
    return m_greatestBlock;
  }
  bool hasSound() const {
    const std::lock_guard lock(m_mutex);
    return m_hasSound;
  }
  bool hadBrokenFrames() const {
    const std::lock_guard lock(m_mutex);
    return m_hadBrokenFrames;
  }

 private:
  void take(const AudioBlock& block) {
    {
      const std::lock_guard lock(m_mutex);
      const std::size_t frameSize = bytesPerFrame(block.format);
      const std::size_t frames = block.frames.size() / frameSize;
      m_hadBrokenFrames |= frames * frameSize != block.frames.size();
      m_frameCount += frames;
      m_greatestBlock = std::max(m_greatestBlock, frames);
      if (m_formats.empty() || m_formats.back() != block.format) m_formats.push_back(block.format);
      for (const std::byte byte : block.frames) m_hasSound |= byte != std::byte{0};
    }
    m_changed.notify_all();
  }

  mutable std::mutex m_mutex;
  std::condition_variable m_changed;
  std::size_t m_frameCount = 0;
  std::size_t m_greatestBlock = 0;
  bool m_hasSound = false;
  bool m_hadBrokenFrames = false;
  std::vector<AudioFormat> m_formats;  ///< each time that it changed
};

}  // namespace vemo
