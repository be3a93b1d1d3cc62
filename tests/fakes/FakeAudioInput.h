// A microphone whose blocks come from the test, on the thread that delivers them.
//
// By default it is a 16 kHz mono microphone. deliver() may be called from a thread of the test's
// own while the main thread starts and stops.
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <mutex>
#include <optional>
#include <utility>

#include "ports/AudioInput.h"

namespace vemo {

class FakeAudioInput : public AudioInput {
 public:
  static constexpr AudioFormat speech{16000, 1, SampleType::Int16};

  std::expected<Formats, AudioInputError> prepare() override {
    endCapture();
    ++prepareCount;
    if (prepareError) return std::unexpected(AudioInputError{*prepareError});
    m_isPrepared = true;
    return formats;
  }

  std::expected<void, AudioInputError> start(BlockHandler handler) override {
    if (!std::exchange(m_isPrepared, false)) ADD_FAILURE() << "started without a prepare";
    ++startCount;
    if (startError) return std::unexpected(AudioInputError{*startError});
    const std::lock_guard lock(m_handling);
    m_handler = std::move(handler);
    return {};
  }

  void stop() override {
    ++stopCount;
    if (beforeStop) beforeStop();
    endCapture();
  }

  /// Hands over one block, if capture is under way; says whether it was.
  bool deliver(const AudioBlock& block) {
    const std::lock_guard lock(m_handling);
    if (!m_handler) return false;
    m_handler(block);
    return true;
  }
  bool deliver(std::span<const std::int16_t> samples, const AudioFormat& format = speech) {
    return deliver({format, std::as_bytes(samples)});
  }

  bool isCapturing() const {
    const std::lock_guard lock(m_handling);
    return static_cast<bool>(m_handler);
  }

  Formats formats{speech, speech};
  std::optional<QString> prepareError;
  std::optional<QString> startError;
  std::function<void()> beforeStop;  ///< runs in stop(), while blocks may still come

  int prepareCount = 0;
  int startCount = 0;
  int stopCount = 0;

 private:
  void endCapture() {
    const std::lock_guard lock(m_handling);
    m_handler = nullptr;
  }

  mutable std::mutex m_handling;
  BlockHandler m_handler;
  bool m_isPrepared = false;
};

}  // namespace vemo
